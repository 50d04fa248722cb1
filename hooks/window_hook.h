#pragma once

#include <windows.h>

#include <atomic>

namespace orvane {

// Subclasses one window of this process: sees its messages before and after the window's own
// procedure. The window property "window_hook_this_ptr" holds the hook, so a window has at most one
// hook. A second window property remembers the original procedure after the hook is removed: code
// that subclassed the window after this hook may restore our procedure later, and late messages
// still have to reach the window. Such a window may be hooked again.
//
// Install, remove and destroy a hook on the window's thread, which also calls OnMessage and
// OnAfterMessage. A hook may be removed or destroyed inside them. getHwnd and postMessage may be
// called on any thread.
class WindowHook {
public:
    WindowHook() = default;
    virtual ~WindowHook();
    WindowHook(const WindowHook&) = delete;
    WindowHook& operator=(const WindowHook&) = delete;

    // Return true to pass the message on to the window's own procedure, false to drop it: the
    // sender gets 0. An exception is dropped, and the message is passed on.
    virtual bool OnMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) = 0;

    // Called with the result of the window's own procedure, unless that removed this hook.
    virtual void OnAfterMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam,
                                LRESULT result);

    // Removes the present hook, then hooks the child window of `parent` (null: the top-level
    // window) with exactly this caption and class. Without such a window in this process, hooks its
    // first window of the class. FindWindowExW.
    [[nodiscard]] bool InstallHook(const wchar_t* caption, const wchar_t* className, HWND parent);

    // Only while nothing is hooked. Fails when the window does not exist, belongs to another
    // process or is already hooked. SetWindowLongW, SetPropW.
    [[nodiscard]] bool InstallHook(HWND hwnd);

    // Restores the window's procedure. Pins this module when our procedure is still in use or
    // another subclass holds a pointer to it. Does nothing when no window is hooked.
    void RemoveHook();

    // PostMessageW to the hooked window; false when there is none.
    bool postMessage(UINT message, WPARAM wParam, LPARAM lParam);

    // Null when no window is hooked.
    [[nodiscard]] HWND getHwnd() const { return m_hwnd; }

private:
    struct Message {
        UINT id;
        WPARAM wParam;
        LPARAM lParam;
        bool operator==(const Message&) const = default;
    };

    static LRESULT CALLBACK HookProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    static LRESULT handle(WindowHook& hook, HWND hwnd, const Message& message);
    [[nodiscard]] bool comesFromBelow(const Message& message) const;

    std::atomic<HWND> m_hwnd{nullptr};  // commands ask for it on their own thread
    WNDPROC m_oldWndProc{nullptr};
    // Set when an earlier hook may have left our procedure below m_oldWndProc in the chain: the
    // procedure below that one.
    WNDPROC m_beneathEarlier{nullptr};
    const Message* m_passedOn{nullptr};  // to m_oldWndProc, at present
};

}  // namespace orvane
