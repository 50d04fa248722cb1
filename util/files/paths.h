#pragma once

// What kind of path a UTF-8 text is, by its text alone; "\" and "/" both separate. A non-zero `log`
// reports what is wrong with a path at LOG_ERR.

#include <string_view>

#include "util/text/owned.h"

namespace orvane {

constexpr std::string_view kLongPathPrefix = R"(\\?\)";

[[nodiscard]] constexpr bool is_slash(char character) noexcept {
    return character == '\\' || character == '/';
}

// A path without its extended-length prefix: part of the original text, or a copy of its own.
struct PathView {
    const char* text = nullptr;
    OwnedText copy;
};

// "\\?\UNC\rest" is seen as "\\rest", "\\?\rest" as "rest", any other path as itself. False when
// there is no memory for the copy.
[[nodiscard]] bool strip_long_path_prefix(const char* path, PathView& view) noexcept;

// Whether the path is "\\host\" and more text. A text that starts like one and is none is reported.
[[nodiscard]] bool utl_is_unc_intl(const char* path, int log) noexcept;

// A drive with a separator after it, or a UNC name, with or without the prefix. False when there is
// no memory to tell.
[[nodiscard]] bool utl_is_absolute_intl(const char* path, bool& absolute, int log) noexcept;

// Rewrites in place what follows the extended-length prefix, where the system takes a name as it
// is: one "\" for every run of separators, "." and ".." resolved as GetFullPathName does. The first
// `rootComponents` (drive; host and share) stay as they are.
void normalizeLongName(Wide* name, unsigned rootComponents) noexcept;

}  // namespace orvane
