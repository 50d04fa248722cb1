#pragma once

// Absolute and extended-length names: "\\?\" lifts the 260 units' limit of the classic path calls.
// Each function returns a new text, or none; a non-zero `log` reports why.

#include "util/text/owned.h"

namespace orvane {

// GetFullPathNameW; problems are reported at `priority`.
[[nodiscard]] OwnedWide abspath_w(const wchar_t* path, int priority, int log) noexcept;
[[nodiscard]] OwnedText abspath_utf8(const char* path, int priority, int log) noexcept;

// The extended-length name of an absolute path, its separators, "." and ".." put right: the
// prefixed form takes none of them. A path that carries the prefix already is taken as it is.
[[nodiscard]] OwnedWide build_unicode_filename_intl(const char* absolutePath, int log) noexcept;

// The extended-length name of any path; a relative one starts at the current directory.
[[nodiscard]] OwnedWide utl_get_unicode_filename(const char* path, int log) noexcept;

}  // namespace orvane
