#pragma once

// Absolute and extended-length names. The prefix "\\?\" allows paths longer than 260 UTF-16 units.
// Each function returns a new text, or null; a non-zero `log` logs the reason.

#include "util/text/owned.h"

namespace orvane {

// GetFullPathNameW. Errors are logged at `priority`.
[[nodiscard]] OwnedWide abspath_w(const wchar_t* path, int priority, int log) noexcept;
[[nodiscard]] OwnedText abspath_utf8(const char* path, int priority, int log) noexcept;

// The extended-length name of an absolute path. "/", repeated separators, "." and ".." are resolved
// first, because Windows does not do so after the prefix. A path with the prefix is unchanged.
[[nodiscard]] OwnedWide build_unicode_filename_intl(const char* absolutePath, int log) noexcept;

// The extended-length name of any path; a relative one starts at the current directory.
[[nodiscard]] OwnedWide utl_get_unicode_filename(const char* path, int log) noexcept;

}  // namespace orvane
