#pragma once

// Small operations on text that the application's other files share.

#include <juce_core/juce_core.h>

#include <optional>

namespace orvane::standin::app {

using juce::String;
using juce::StringArray;
using juce::StringPairArray;

// Words parted by spaces; "..." keeps spaces, "" inside quotes is a quote. A backslash is only a
// backslash: most values are paths. None when a quote is not closed.
std::optional<StringArray> splitWords(const String& line);

// Decimal digits only, nine at most.
std::optional<int> parseNumber(const String& text);

// One line, at most `limit` characters: control characters become visible, the rest is counted.
String onOneLine(const String& text, int limit = 240);
// As onOneLine, in quotes when it is empty or holds a space.
String asWord(const String& text, int limit = 240);

}  // namespace orvane::standin::app
