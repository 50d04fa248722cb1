#pragma once

// Small operations on UTF-8 text that the application's other files share.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::standin::app {

bool sameIgnoringCase(std::string_view a, std::string_view b);  // ASCII letters
bool startsWithIgnoringCase(std::string_view text, std::string_view beginning);
std::string_view trimmed(std::string_view text);
std::vector<std::string> split(std::string_view text, char separator);
std::string join(const std::vector<std::string>& parts, std::string_view separator);

// Decimal digits only; none when there is anything else or it does not fit.
std::optional<unsigned> parseNumber(std::string_view text);

// '*' in the pattern stands for any run of characters; everything else for itself.
bool matches(std::string_view pattern, std::string_view text);

// The edit distance, for "did you mean".
std::size_t distance(std::string_view a, std::string_view b);

// One line, at most `limit` characters: control characters become visible, the rest is counted.
std::string onOneLine(std::string_view text, std::size_t limit = 240);
// As onOneLine, in quotes when it is empty or holds a space.
std::string asWord(std::string_view text, std::size_t limit = 240);

std::string hexBytes(std::string_view bytes, std::size_t limit = 16);  // "DE AD BE EF ..."

// The offset of the first byte that is not well-formed UTF-8, or npos.
std::size_t firstInvalidUtf8(std::string_view bytes);

std::size_t characterCount(std::string_view utf8);
// Cut to, or filled with spaces up to, so many characters.
std::string fitted(std::string_view utf8, std::size_t width);

}  // namespace orvane::standin::app
