#pragma once

// Classifies UTF-8 paths by their text alone, without file access. "\" and "/" are both separators.
// A non-zero `log` logs errors at LOG_ERR.

#include <string_view>

#include "util/text/owned.h"

namespace orvane {

constexpr std::string_view kLongPathPrefix = R"(\\?\)";

[[nodiscard]] constexpr bool is_slash(char character) noexcept {
    return character == '\\' || character == '/';
}

// A path without its extended-length prefix: a part of the original text, or `copy`.
struct PathView {
    const char* text = nullptr;
    OwnedText copy;
};

// Turns "\\?\UNC\rest" into "\\rest" and "\\?\rest" into "rest"; other paths stay as they are.
// False when there is no memory for the copy.
[[nodiscard]] bool strip_long_path_prefix(const char* path, PathView& view) noexcept;

// Whether the path is "\\host\" followed by more text. An incomplete UNC name is logged.
[[nodiscard]] bool utl_is_unc_intl(const char* path, int log) noexcept;

// Sets `absolute` to whether the path is a drive and a separator, or a UNC name, with or without
// the extended-length prefix. False when memory is short.
[[nodiscard]] bool utl_is_absolute_intl(const char* path, bool& absolute, int log) noexcept;

// Normalizes in place the text after the extended-length prefix, because Windows does not: one "\"
// for each run of separators, "." and ".." resolved as by GetFullPathName. ".." never removes the
// first `rootComponents` components (1 for a drive, 2 for host and share).
void normalizeLongName(Wide* name, unsigned rootComponents) noexcept;

}  // namespace orvane
