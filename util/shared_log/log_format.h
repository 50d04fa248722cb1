#pragma once

// The log's own directives, "%m" and "%M", put into a printf format. Needs no Windows.

#include <cstddef>
#include <string_view>

#include "util/text/owned.h"

namespace orvane {

struct ErrorDirectives {
    std::size_t errnoTexts = 0;    // "%m"
    std::size_t windowsTexts = 0;  // "%M"
};

// "%%" is one literal percent, so that "%%m" holds no directive.
[[nodiscard]] ErrorDirectives countErrorDirectives(const char* format) noexcept;

// A text made safe inside a format: each lone "%" doubled, a "%%" kept. None without memory.
[[nodiscard]] OwnedText escapePercents(std::string_view text) noexcept;
[[nodiscard]] bool hasLonePercent(std::string_view text) noexcept;

// A new format with each directive replaced by its text, which is safe already. None without
// memory.
[[nodiscard]] OwnedText replaceErrorDirectives(const char* format, ErrorDirectives count,
                                               std::string_view errnoText,
                                               std::string_view windowsText) noexcept;

}  // namespace orvane
