#include "standins/app/text.h"

namespace orvane::standin::app {

std::optional<StringArray> splitWords(const String& line) {
    StringArray words = StringArray::fromTokens(line, " \t\r\n", "\"");
    words.removeEmptyStrings(false);
    for (String& word : words) {
        // Every second piece stands in quotes; an empty one between two of these is a quote.
        const StringArray pieces = StringArray::fromTokens(word, "\"", "");
        if (pieces.size() % 2 == 0) return std::nullopt;
        word.clear();
        for (int i = 0; i < pieces.size(); ++i) {
            const bool isQuote =
                i % 2 == 0 && i > 0 && i + 1 < pieces.size() && pieces[i].isEmpty();
            word << (isQuote ? String("\"") : pieces[i]);
        }
    }
    return words;
}

std::optional<int> parseNumber(const String& text) {
    if (text.isEmpty() || text.length() > 9 || !text.containsOnly("0123456789")) return {};
    return text.getIntValue();
}

String onOneLine(const String& text, int limit) {
    String line;
    auto at = text.getCharPointer();
    for (int i = 0; i < limit && !at.isEmpty(); ++i) {
        const juce::juce_wchar c = at.getAndAdvance();
        if (c == '\n' || c == '\r')
            line << (c == '\n' ? "\\n" : "\\r");
        else if (c < 0x20 || c == 0x7F)
            line << "\\x" << String::toHexString(static_cast<int>(c)).paddedLeft('0', 2);
        else
            line += c;
    }
    if (!at.isEmpty()) line << "... (" << text.length() << " characters)";
    return line;
}

String asWord(const String& text, int limit) {
    const String line = onOneLine(text, limit);
    return line.isEmpty() || line.containsChar(' ') ? line.quoted() : line;
}

}  // namespace orvane::standin::app
