#pragma once

// Where the application prints and reads lines: a console (ReadConsoleInputW, WriteConsoleW), or
// whatever the standard handles are. Printing works from any thread; it erases the line
// being typed and shows it again afterwards.

#include <windows.h>

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "standins/app/text.h"

namespace orvane::standin::app {

class Terminal {
public:
    Terminal();
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    // A person is there to type.
    [[nodiscard]] bool isInteractive() const { return m_console; }

    void print(const String& text);  // one or more lines, without the last line feed

    // The next line; none at the end of the input, or when there is no input. A person gets a
    // prompt, TAB completes, the arrow keys bring former lines back.
    std::optional<String> readLine();

private:
    std::optional<String> readTypedLine();
    void write(const String& text);
    void showPrompt();
    void hidePrompt();
    void complete();

    std::mutex m_mutex;  // guards everything that is printed, and the line being typed
    HANDLE m_in;         // weak: the process's own
    HANDLE m_out;        // weak
    bool m_console = false;
    bool m_outIsConsole = false;
    DWORD m_formerMode = 0;
    bool m_prompting = false;
    std::wstring m_typed;
    std::size_t m_shownLength = 0;
    std::vector<std::wstring> m_history;
    std::size_t m_recalled = 0;
};

}  // namespace orvane::standin::app
