#include "platform/message_window.h"

#include <array>
#include <utility>

#include "platform/host_call.h"
#include "platform/module.h"
#include "platform/srw_lock.h"
#include "platform/waiting.h"

namespace orvane {
namespace {

constexpr const wchar_t* kClassName = L"OrVaneWmpPlugin messages";
constexpr UINT kTaskWaits = WM_APP;

// A class belongs to the module that registers it and has to go before the module does. The lock
// keeps one thread from unregistering it between another's two steps.
constinit SRWLOCK classLock = SRWLOCK_INIT;

// All that are open, for a thread that waits to find its own.
constinit SRWLOCK openLock = SRWLOCK_INIT;
constinit MessageWindow* firstOpen = nullptr;

// Signals the end of a task, be it run or dropped: then its copy in the queue is destroyed.
class Done {
public:
    explicit Done(HANDLE event) noexcept : m_event(event) {}
    ~Done() { SetEvent(m_event); }
    Done(const Done&) = delete;
    Done& operator=(const Done&) = delete;

private:
    const HANDLE m_event;
};

}  // namespace

MessageWindow::MessageWindow(Key)
    : m_thread(GetCurrentThreadId()),
      m_threadHandle(OpenThread(SYNCHRONIZE, FALSE, GetCurrentThreadId())),
      m_taskEvent(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}

std::shared_ptr<MessageWindow> MessageWindow::create() {
    auto window = std::make_shared<MessageWindow>(Key{});
    if (!window->m_threadHandle || !window->m_taskEvent) return nullptr;
    const ExclusiveLock lock(classLock);
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = &onMessage;
    windowClass.hInstance = thisModule();
    windowClass.lpszClassName = kClassName;
    RegisterClassW(&windowClass);  // fails while another object's window is there
    window->m_hwnd = CreateWindowExW(0, kClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                     windowClass.hInstance, nullptr);
    if (window->m_hwnd == nullptr) return nullptr;
    SetWindowLongPtrW(window->m_hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(window.get()));
    const ExclusiveLock listed(openLock);
    window->m_next = std::exchange(firstOpen, window.get());
    return window;
}

bool MessageWindow::post(Task task) noexcept {
    try {
        const ExclusiveLock lock(m_lock);
        if (m_hwnd == nullptr) return false;
        m_tasks.push_back(std::move(task));
        if (PostMessageW(m_hwnd, kTaskWaits, 0, 0)) {
            if (m_waits > 0) SetEvent(m_taskEvent.get());
            return true;
        }
        m_tasks.pop_back();
    } catch (...) {
        // No memory for it.
    }
    return false;
}

bool MessageWindow::run(const std::function<void()>& task) noexcept {
    bool ran = false;
    const auto runTask = [&] {
        try {
            task();
            ran = true;
        } catch (...) {
            // Out of memory: the same as if it had not run.
        }
    };
    if (isOwnThread()) {
        runTask();
        return ran;
    }
    try {
        UniqueHandle done;
        {
            const ExclusiveLock lock(m_lock);
            done = std::move(m_spareDone);
        }
        if (!done) done.reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        if (!done) return false;
        // The task refers to this call's own variables, so this waits until it is destroyed. A
        // thread that has ended runs nothing any more.
        post([&runTask, signal = std::make_shared<Done>(done.get())] { runTask(); });
        const std::array<HANDLE, 2> handles{done.get(), m_threadHandle.get()};
        DWORD ended = WAIT_FAILED;
        while (ended == WAIT_FAILED) ended = waitDispatchingMessages(handles, INFINITE);
        if (ended != WAIT_OBJECT_0) {
            static_cast<void>(done.release());  // the task is still in the queue, with its signal
            return false;
        }
        const ExclusiveLock lock(m_lock);
        m_spareDone = std::move(done);
        return ran;
    } catch (...) {
        return false;
    }
}

void MessageWindow::close() noexcept {
    std::deque<Task> dropped;  // destroyed outside the lock
    HWND hwnd = nullptr;
    {
        const ExclusiveLock lock(m_lock);
        hwnd = std::exchange(m_hwnd, nullptr);
        dropped.swap(m_tasks);
    }
    if (hwnd == nullptr) return;
    {
        const ExclusiveLock lock(openLock);
        MessageWindow** link = &firstOpen;
        while (*link != this) link = &(*link)->m_next;
        *link = m_next;
    }
    SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
    DestroyWindow(hwnd);
    const ExclusiveLock lock(classLock);
    UnregisterClassW(kClassName, thisModule());  // refused while another window is there
}

void MessageWindow::runNext() {
    Task task;
    {
        const ExclusiveLock lock(m_lock);
        if (m_tasks.empty()) return;
        task = std::move(m_tasks.front());
        m_tasks.pop_front();
        if (m_waits > 0 && !m_tasks.empty()) SetEvent(m_taskEvent.get());
    }
    task();
}

MessageWindow::Waiting::Waiting() {
    const ExclusiveLock listed(openLock);
    for (MessageWindow* window = firstOpen; window != nullptr; window = window->m_next) {
        if (!window->isOwnThread()) continue;
        m_windows.push_back(window->shared_from_this());
        const ExclusiveLock lock(window->m_lock);
        ++window->m_waits;
        if (!window->m_tasks.empty()) SetEvent(window->taskEvent());
    }
}

MessageWindow::Waiting::~Waiting() {
    for (const auto& window : m_windows) {
        const ExclusiveLock lock(window->m_lock);
        --window->m_waits;
    }
}

LRESULT CALLBACK MessageWindow::onMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kTaskWaits) return DefWindowProcW(hwnd, message, wParam, lParam);
    const HostCall call;
    auto* const window = reinterpret_cast<MessageWindow*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (window == nullptr) return 0;
    const auto alive = window->shared_from_this();  // a task may drop the last share
    alive->runNext();
    return 0;
}

}  // namespace orvane
