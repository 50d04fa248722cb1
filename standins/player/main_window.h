#pragma once

// The player's main window, as plug-ins look for it: top-level, class "WMPlayerApp" everywhere, its
// caption in the language of the system.

#include <windows.h>

#include <functional>
#include <map>
#include <string>

namespace orvane::standin {

// By language: en, fr, es; legacy is what Windows 11 calls the program.
const std::map<std::wstring, const wchar_t*>& captions();

class MainWindow {
public:
    MainWindow() = default;
    ~MainWindow();
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;

    // Makes the window, hidden, at an ordinary size; false for a language that has no caption, and
    // when the system refuses.
    bool create(const std::wstring& language);
    [[nodiscard]] HWND hwnd() const { return m_hwnd; }

    // WM_CLOSE ends here; without it the window closes at once.
    std::function<void()> onClose;

private:
    static LRESULT CALLBACK windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

    HWND m_hwnd = nullptr;
};

}  // namespace orvane::standin
