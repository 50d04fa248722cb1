#include "hooks/window_hook.h"

#include <juce_core/juce_core.h>

#include "platform/host_call.h"
#include "platform/module.h"
#include "platform/process_end.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr const wchar_t* kHookProperty = L"window_hook_this_ptr";
constexpr const wchar_t* kOldProcProperty = L"window_hook_old_proc";
constexpr const wchar_t* kSharedProperty = L"window_hook_shared";  // others know our procedure
constexpr int kMaxSameWindows = 64;

WindowHook* hookOf(HWND hwnd) { return static_cast<WindowHook*>(GetPropW(hwnd, kHookProperty)); }

WNDPROC setWindowProc(HWND hwnd, WNDPROC proc) {
    return reinterpret_cast<WNDPROC>(
        SetWindowLongW(hwnd, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(proc))));
}

WNDPROC windowProc(HWND hwnd) {
    return reinterpret_cast<WNDPROC>(GetWindowLongW(hwnd, GWL_WNDPROC));
}

// The procedure beneath ours as the last hook on this window found it; null when there was none.
WNDPROC rememberedProc(HWND hwnd) {
    return reinterpret_cast<WNDPROC>(
        reinterpret_cast<void (*)()>(GetPropW(hwnd, kOldProcProperty)));
}

void rememberProc(HWND hwnd, WNDPROC proc) {
    SetPropW(hwnd, kOldProcProperty, reinterpret_cast<HANDLE>(reinterpret_cast<void (*)()>(proc)));
}

void forgetWindow(HWND hwnd) {
    RemovePropW(hwnd, kOldProcProperty);
    RemovePropW(hwnd, kSharedProperty);
}

bool belongsToThisProcess(HWND hwnd) {
    DWORD process = 0;
    return GetWindowThreadProcessId(hwnd, &process) != 0 && process == GetCurrentProcessId();
}

// The first such window of this process, with any caption when `caption` is null. The order of
// windows may change meanwhile, hence the limit.
HWND findOwnWindow(const wchar_t* caption, const wchar_t* className, HWND parent) {
    HWND window = nullptr;
    for (int i = 0; i < kMaxSameWindows; ++i) {
        window = FindWindowExW(parent, window, className, caption);
        if (window == nullptr || belongsToThisProcess(window)) return window;
    }
    return nullptr;
}

// A second player's window looks the same and cannot be hooked from here; it is the answer only
// when this process has no window of the class at all.
HWND findWindow(const wchar_t* caption, const wchar_t* className, HWND parent) {
    if (HWND const window = findOwnWindow(caption, className, parent)) return window;
    if (HWND const window = findOwnWindow(nullptr, className, parent)) return window;
    return FindWindowExW(parent, nullptr, className, caption);
}

// The player's window procedure is no place for exceptions of ours.
template <typename Call>
bool shielded(Call call) {
    try {
        return call();
    } catch (...) {
        return true;
    }
}

}  // namespace

WindowHook::~WindowHook() { RemoveHook(); }

void WindowHook::OnAfterMessage(HWND, UINT, WPARAM, LPARAM, LRESULT) {}

bool WindowHook::InstallHook(const wchar_t* caption, const wchar_t* className, HWND parent) {
    if (caption == nullptr || className == nullptr) {
        syslog(LOG_ERR, "WindowHook::InstallHook - wrong parameters");
        return false;
    }
    RemoveHook();

    HWND const window = findWindow(caption, className, parent);
    if (window == nullptr) {
        syslog(LOG_ERR,
               "WindowHook::InstallHook - can't find window with class '%s' and caption '%s'",
               juce::String(className).toRawUTF8(), juce::String(caption).toRawUTF8());
        return false;
    }
    return InstallHook(window);
}

bool WindowHook::InstallHook(HWND hwnd) {
    if (m_hwnd != nullptr) return false;

    // A second hook on a window would call itself for ever, as the property leads back to it; and
    // another process would take our pointer for one of its own.
    const bool free = belongsToThisProcess(hwnd) && hookOf(hwnd) == nullptr;
    const WNDPROC earlier = free ? rememberedProc(hwnd) : nullptr;
    const WNDPROC found = free ? setWindowProc(hwnd, &HookProc) : nullptr;
    // Put back by somebody after the hook before this one, ours is the window's already.
    m_oldWndProc = found != &HookProc ? found : earlier != nullptr ? earlier : &DefWindowProcW;
    if (found == nullptr || !SetPropW(hwnd, kHookProperty, this)) {
        syslog(LOG_ERR, "WindowHook::InstallHook failed - can't save this pointer into the window");
        if (found != nullptr) setWindowProc(hwnd, found);
        m_oldWndProc = nullptr;
        return false;
    }
    const bool shared = GetPropW(hwnd, kSharedProperty) != nullptr;
    m_beneathEarlier = shared && m_oldWndProc != earlier ? earlier : nullptr;
    if (m_beneathEarlier == nullptr) rememberProc(hwnd, m_oldWndProc);
    m_hwnd = hwnd;
    return true;
}

void WindowHook::RemoveHook() {
    HWND const hwnd = m_hwnd;
    if (hwnd == nullptr || m_oldWndProc == nullptr) return;

    // Without either mark it is a later window that got the handle of ours.
    if (hookOf(hwnd) == this || windowProc(hwnd) == &HookProc) {
        // Whoever took the window over after us may put our procedure back long after the plug-in
        // is gone; the code has to be there then.
        if (setWindowProc(hwnd, m_oldWndProc) != &HookProc) {
            SetPropW(hwnd, kSharedProperty, this);
            pinThisModule();
        }
        RemovePropW(hwnd, kHookProperty);
    }
    HostCall::pinModuleIfAny();
    m_hwnd = nullptr;
    m_oldWndProc = nullptr;
    m_beneathEarlier = nullptr;
    m_passedOn = nullptr;
}

bool WindowHook::postMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    HWND const hwnd = m_hwnd;
    // With no window PostMessage would post to the calling thread, and succeed.
    return hwnd != nullptr && PostMessageW(hwnd, message, wParam, lParam) == 1;
}

LRESULT CALLBACK WindowHook::HookProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (hwnd == nullptr) return 0;
    // The threads that might hold a lock of the hook's operations are dead by then.
    if (processIsEnding) {
        const WNDPROC own = rememberedProc(hwnd);
        return own != nullptr ? CallWindowProcW(own, hwnd, message, wParam, lParam) : 0;
    }
    // The window's own procedure may run a dialog in which the user turns the plug-in off.
    const HostCall call;
    WindowHook* const hook = hookOf(hwnd);
    const Message current{message, wParam, lParam};
    if (hook != nullptr && !hook->comesFromBelow(current)) return handle(*hook, hwnd, current);

    const WNDPROC beneath = hook != nullptr ? hook->m_beneathEarlier : rememberedProc(hwnd);
    if (beneath == nullptr) return 0;  // never was a window of ours
    const LRESULT result = CallWindowProcW(beneath, hwnd, message, wParam, lParam);
    if (message == WM_NCDESTROY) forgetWindow(hwnd);
    return result;
}

// Whoever subclassed the window between an earlier hook and this one calls our procedure again, for
// what this hook has just passed on to it.
bool WindowHook::comesFromBelow(const Message& message) const {
    return m_beneathEarlier != nullptr && m_passedOn != nullptr && *m_passedOn == message;
}

LRESULT WindowHook::handle(WindowHook& hook, HWND hwnd, const Message& message) {
    const UINT id = message.id;
    const WPARAM wParam = message.wParam;
    const LPARAM lParam = message.lParam;
    // Each call below may remove or destroy the hook, so nothing else is read from it unless the
    // window still names it.
    const WNDPROC oldWndProc = hook.m_oldWndProc;
    LRESULT result = 0;
    if (shielded([&] { return hook.OnMessage(hwnd, id, wParam, lParam); })) {
        const Message* outer = nullptr;
        if (hookOf(hwnd) == &hook) outer = std::exchange(hook.m_passedOn, &message);
        result = CallWindowProcW(oldWndProc, hwnd, id, wParam, lParam);
        if (hookOf(hwnd) == &hook) {
            hook.m_passedOn = outer;
            shielded([&] {
                hook.OnAfterMessage(hwnd, id, wParam, lParam, result);
                return true;
            });
        }
    }

    // The window's last message: its handle is soon another window's.
    if (id == WM_NCDESTROY) {
        if (hookOf(hwnd) == &hook) hook.RemoveHook();
        forgetWindow(hwnd);
    }
    return result;
}

}  // namespace orvane
