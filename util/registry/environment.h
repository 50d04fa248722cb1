#pragma once

#include "util/text/owned.h"

namespace orvane {

// The text with each %VARIABLE% replaced by its value (ExpandEnvironmentStringsW), or none; a
// non-zero `log` reports why.
[[nodiscard]] OwnedWide expand_environment_strings_w(const wchar_t* text, int log) noexcept;

}  // namespace orvane
