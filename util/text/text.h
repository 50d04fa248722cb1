#pragma once

// Converts texts between UTF-8 and Windows' UTF-16. From UTF-8, malformed input becomes U+FFFD.
// From UTF-16, one malformed unit fails the whole text. A non-zero `log` logs each error at
// LOG_ERR. Any thread.

#include <cstddef>

#include "util/text/owned.h"

namespace orvane {

// Counts the characters (`characters` may be null) and UTF-8 bytes of a buffer, up to `units` or
// its first NUL. False at the first malformed character.
[[nodiscard]] bool utl_wide_buf_utf8_len(const Wide* text, std::size_t units,
                                         std::size_t* characters, std::size_t& bytes,
                                         int log) noexcept;

// Converts into the caller's buffer of `size` bytes, which is NUL-terminated when `size` is at
// least 2. False when the text does not fit.
[[nodiscard]] bool utl_utf8_to_wide_buf(const char* text, Wide* buffer, std::size_t size,
                                        int log) noexcept;
[[nodiscard]] OwnedWide utl_utf8_to_wide_intl(const char* text, int log) noexcept;

// The first reads at most `units` units; all stop at the first NUL.
[[nodiscard]] OwnedText utl_wide_buf_to_utf8(const Wide* text, std::size_t units, int log) noexcept;
[[nodiscard]] OwnedText utl_wide_to_utf8_intl(const Wide* text, int log) noexcept;
[[nodiscard]] OwnedText utl_wide_to_utf8(const Wide* text) noexcept;
[[nodiscard]] OwnedText utl_wide_to_utf8_nolog(const Wide* text) noexcept;

// A UTF-16 text converted to UTF-8 for a log message; there is always something to print.
class UtlUTF8Str {
public:
    UtlUTF8Str(const Wide* text, int log) noexcept;  // `text` may be null
    virtual ~UtlUTF8Str();
    UtlUTF8Str(const UtlUTF8Str&) = delete;
    UtlUTF8Str& operator=(const UtlUTF8Str&) = delete;

    // The text, or "(null)"; lives as long as the object.
    [[nodiscard]] const char* str() const noexcept;

private:
    OwnedText m_text;
};

}  // namespace orvane
