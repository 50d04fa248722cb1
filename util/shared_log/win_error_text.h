#pragma once

#include <windows.h>

#include <memory>

namespace orvane {

// The text of a Windows error code: in English, or in the system's language where there is no
// English text. It is the first line, in UTF-8, with "%" escaped for a printf format. False when
// there is no text. A failure goes to syslog when `log` is not 0, otherwise to diagnose().
// WinErrorText owns the text and releases it with win_err_str_cleanup(). FormatMessageW.
void win_err_str_cleanup(char*& text, int log) noexcept;

struct WinErrorTextDeleter {
    void operator()(char* text) const noexcept { win_err_str_cleanup(text, 0); }
};
using WinErrorText = std::unique_ptr<char, WinErrorTextDeleter>;

[[nodiscard]] bool win_err_str_intl(DWORD code, WinErrorText& text, int log) noexcept;

}  // namespace orvane
