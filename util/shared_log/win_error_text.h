#pragma once

#include <windows.h>

#include <memory>

namespace orvane {

// The system's English text of a Windows error code or, where it has no English, the one in its own
// language: its first line in UTF-8, safe to stand in a printf format. False when the system has
// neither. FormatMessageW. A non-zero `log` reports a failure through syslog, else
// the log's own diagnostics do. win_err_str_cleanup releases the text, as does its owner's end.
void win_err_str_cleanup(char*& text, int log) noexcept;

struct WinErrorTextDeleter {
    void operator()(char* text) const noexcept { win_err_str_cleanup(text, 0); }
};
using WinErrorText = std::unique_ptr<char, WinErrorTextDeleter>;

[[nodiscard]] bool win_err_str_intl(DWORD code, WinErrorText& text, int log) noexcept;

}  // namespace orvane
