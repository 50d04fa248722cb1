#pragma once

#include "common/messages/application_events.h"
#include "hooks/window_hook.h"

namespace orvane {

// Subclasses the player's main window and reports to the application its position and whether it is
// maximised, minimised, hidden, active or in special mode (restored, at most 366 by 90 pixels).
// Every message still reaches the player; the event is sent before the player handles it.
class WmpWindowHook final : public WindowHook {
public:
    // `events` is not owned and outlives the hook; called on the window's thread.
    explicit WmpWindowHook(IOrvaneApplicationEvents* events);

    // Hooks the top-level window of class "WMPlayerApp" with the caption "Windows Media Player".
    // Without one, any caption will do: the player translates its caption, but not the class.
    [[nodiscard]] bool InstallHook();

    // Whether the window is in special mode now; false while there is no window. Any thread.
    // GetWindowPlacement.
    [[nodiscard]] bool isInSpecialMode() const;

    bool OnMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void onSize(HWND hwnd, WPARAM kind);

    IOrvaneApplicationEvents* m_events;  // not owned
    bool m_inSpecialMode{false};         // as last reported
};

}  // namespace orvane
