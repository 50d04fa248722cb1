#include "platform/message_window.h"

#include <utility>

#include "platform/host_call.h"
#include "platform/module.h"
#include "platform/srw_lock.h"

namespace orvane {
namespace {

constexpr const wchar_t* kClassName = L"OrVaneWmpPlugin messages";
constexpr UINT kTaskWaits = WM_APP;

// A class belongs to the module that registers it and has to go before the module does. The lock
// keeps one thread from unregistering it between another's two steps.
constinit SRWLOCK classLock = SRWLOCK_INIT;

}  // namespace

std::shared_ptr<MessageWindow> MessageWindow::create() {
    auto window = std::make_shared<MessageWindow>(Key{});
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
    return window;
}

bool MessageWindow::post(Task task) noexcept {
    try {
        const ExclusiveLock lock(m_lock);
        if (m_hwnd == nullptr) return false;
        m_tasks.push_back(std::move(task));
        if (PostMessageW(m_hwnd, kTaskWaits, 0, 0)) return true;
        m_tasks.pop_back();
    } catch (...) {
        // No memory for it.
    }
    return false;
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
    }
    task();
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
