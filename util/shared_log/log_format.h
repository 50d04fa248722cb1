#pragma once

// Replaces the log's own directives "%m" and "%M" in a printf format. Portable code.

#include <cstddef>
#include <string_view>

#include "util/text/owned.h"

namespace orvane {

struct ErrorDirectives {
    std::size_t errnoTexts = 0;    // "%m"
    std::size_t windowsTexts = 0;  // "%M"
};

// Counts the directives. "%%" is a literal percent sign, so "%%m" contains no directive.
[[nodiscard]] ErrorDirectives countErrorDirectives(const char* format) noexcept;

// Escapes a text for a printf format: doubles each single "%", keeps "%%". Null without memory.
[[nodiscard]] OwnedText escapePercents(std::string_view text) noexcept;
[[nodiscard]] bool hasLonePercent(std::string_view text) noexcept;

// A new format with each directive replaced by its text, which is escaped already. Null without
// memory.
[[nodiscard]] OwnedText replaceErrorDirectives(const char* format, ErrorDirectives count,
                                               std::string_view errnoText,
                                               std::string_view windowsText) noexcept;

}  // namespace orvane
