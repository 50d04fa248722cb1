#pragma once

// The player's main window, as plug-ins look for it: top-level, class "WMPlayerApp", caption
// "Windows Media Player".

#include <windows.h>

#include <functional>

namespace orvane::standin {

class MainWindow {
public:
    MainWindow() = default;
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    // Makes the window, hidden, at an ordinary size; false when the system refuses.
    bool create();
    [[nodiscard]] HWND hwnd() const { return m_hwnd; }

    // WM_CLOSE ends here; without it the window closes at once.
    std::function<void()> onClose;

private:
    static LRESULT CALLBACK windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

    HWND m_hwnd = nullptr;
};

}  // namespace orvane::standin
