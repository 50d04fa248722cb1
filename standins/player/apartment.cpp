#include "standins/player/apartment.h"

#include <algorithm>
#include <utility>

namespace orvane::standin {

namespace {

constexpr const wchar_t* kClassName = L"OrvaneStandinPlayerApartment";
constexpr UINT kRunCall = WM_APP + 1;
constexpr UINT kServeQueue = WM_APP + 2;
constexpr UINT kArmTimer = WM_APP + 3;
constexpr UINT_PTR kTimerId = 1;

// Lives on the caller's stack; the sender waits until the window procedure is through with it.
struct PendingCall {
    const std::function<HRESULT()>& call;
    HRESULT result;
    bool done;
};

}  // namespace

Apartment::Apartment() {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = kClassName;
    RegisterClassExW(&windowClass);  // fails harmlessly for the second player of a process
    m_window = CreateWindowExW(0, kClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                               windowClass.hInstance, nullptr);
    if (m_window != nullptr)
        SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

Apartment::~Apartment() { close(); }

HWND Apartment::window() const {
    const std::lock_guard lock(m_mutex);
    return m_window;
}

HRESULT Apartment::run(const std::function<HRESULT()>& call) {
    if (isOwnThread()) return window() == nullptr ? RPC_E_DISCONNECTED : call();
    PendingCall pending{call, RPC_E_DISCONNECTED, false};
    const HWND target = window();
    if (target != nullptr) SendMessageW(target, kRunCall, 0, reinterpret_cast<LPARAM>(&pending));
    return pending.done ? pending.result : RPC_E_DISCONNECTED;
}

void Apartment::post(std::function<void()> work) {
    const std::lock_guard lock(m_mutex);
    if (m_window == nullptr) return;
    m_queue.push_back(std::move(work));
    PostMessageW(m_window, kServeQueue, 0, 0);
}

void Apartment::postLater(unsigned milliseconds, std::function<void()> work) {
    const std::lock_guard lock(m_mutex);
    if (m_window == nullptr) return;
    m_timers.emplace(GetTickCount64() + milliseconds, std::move(work));
    // Only the thread that owns a window may set its timers.
    PostMessageW(m_window, kArmTimer, 0, 0);
}

void Apartment::close() {
    HWND window = nullptr;
    std::deque<std::function<void()>> queue;
    std::multimap<ULONGLONG, std::function<void()>> timers;
    {
        const std::lock_guard lock(m_mutex);
        window = std::exchange(m_window, nullptr);
        queue.swap(m_queue);
        timers.swap(m_timers);
    }
    if (window != nullptr) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        DestroyWindow(window);
    }
}

void Apartment::serveQueue() {
    std::function<void()> work;
    {
        const std::lock_guard lock(m_mutex);
        if (m_queue.empty()) return;
        work = std::move(m_queue.front());
        m_queue.pop_front();
    }
    work();
}

void Apartment::serveTimers() {
    std::deque<std::function<void()>> due;
    {
        const std::lock_guard lock(m_mutex);
        const auto end = m_timers.upper_bound(GetTickCount64());
        for (auto it = m_timers.begin(); it != end; ++it) due.push_back(std::move(it->second));
        m_timers.erase(m_timers.begin(), end);
    }
    for (const auto& work : due) work();
    armTimer();
}

void Apartment::armTimer() {
    const std::lock_guard lock(m_mutex);
    if (m_window == nullptr) return;
    if (m_timers.empty()) {
        KillTimer(m_window, kTimerId);
        return;
    }
    const ULONGLONG now = GetTickCount64();
    const ULONGLONG due = m_timers.begin()->first;
    const ULONGLONG wait = due > now ? std::min<ULONGLONG>(due - now, USER_TIMER_MAXIMUM) : 0;
    SetTimer(m_window, kTimerId, static_cast<UINT>(wait), nullptr);
}

LRESULT CALLBACK Apartment::windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* self = reinterpret_cast<Apartment*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (self != nullptr) {
        switch (message) {
            case kRunCall: {
                auto* pending = reinterpret_cast<PendingCall*>(lParam);
                pending->result = pending->call();
                pending->done = true;
                return 0;
            }
            case kServeQueue:
                self->serveQueue();
                return 0;
            case kArmTimer:
                self->armTimer();
                return 0;
            case WM_TIMER:
                self->serveTimers();
                return 0;
            default:
                break;
        }
    }
    return DefWindowProcW(hwnd, message, wParam, lParam);
}

}  // namespace orvane::standin
