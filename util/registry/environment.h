#pragma once

#include "util/text/owned.h"

namespace orvane {

// Returns the text with each %VARIABLE% replaced by its value, or null; a non-zero `log` logs the
// reason. ExpandEnvironmentStringsW.
[[nodiscard]] OwnedWide expand_environment_strings_w(const wchar_t* text, int log) noexcept;

}  // namespace orvane
