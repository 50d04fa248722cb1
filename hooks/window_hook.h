#pragma once

#include <windows.h>

#include <atomic>

namespace orvane {

// Looks at the messages of one window of this process before (and, if wanted, after) the window's
// own procedure gets them. The window finds its hook through the property
// "window_hook_this_ptr", so there is at most one hook on a window. A second property outlives the
// hook: it names the window's own procedure, for the messages that still come to ours when somebody
// who subclassed the window after us puts it back. Such a window may be hooked again.
//
// Installed, removed and destroyed on the thread that owns the window, where the operations below
// are called as well; a hook may be removed or destroyed from inside one of its own operations.
// getHwnd and postMessage may be called from any thread.
class WindowHook {
public:
    WindowHook() = default;
    virtual ~WindowHook();
    WindowHook(const WindowHook&) = delete;
    WindowHook& operator=(const WindowHook&) = delete;

    // True lets the window's own procedure have the message, false swallows it: the sender gets 0.
    // What it throws is dropped, and the message goes on.
    virtual bool OnMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) = 0;

    // Called with the result of the window's own procedure, unless that removed this hook.
    virtual void OnAfterMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam,
                                LRESULT result);

    // Hooks the window with exactly this caption and class among `parent`'s children (null: among
    // the top-level windows), after releasing the window hooked before. Without such a window in
    // this process, its first window of the class is hooked, whatever the caption. FindWindowExW.
    [[nodiscard]] bool InstallHook(const wchar_t* caption, const wchar_t* className, HWND parent);

    // Only for an idle hook. Fails, and leaves the window alone, when the window is gone, belongs
    // to another process or is hooked already. SetWindowLongW, SetPropW.
    [[nodiscard]] bool InstallHook(HWND hwnd);

    // Gives the window its procedure back, and keeps this module loaded when our procedure is in
    // use or in somebody's hands. Harmless on an idle hook and after the window's end.
    void RemoveHook();

    // PostMessageW to the hooked window; false while there is none.
    bool postMessage(UINT message, WPARAM wParam, LPARAM lParam);

    // Null while idle.
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
    // Set when our procedure may lie below m_oldWndProc as well, from an earlier hook: the one
    // beneath that.
    WNDPROC m_beneathEarlier{nullptr};
    const Message* m_passedOn{nullptr};  // to m_oldWndProc, at present
};

}  // namespace orvane
