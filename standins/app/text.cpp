#include "standins/app/text.h"

#include <string>
#include <utility>

namespace orvane::standin::app {

std::optional<StringArray> splitWords(const String& line) {
    const std::string text = line.toStdString();
    StringArray words;
    std::string word;
    bool inWord = false;
    bool inQuotes = false;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        const char c = i < text.size() ? text[i] : ' ';
        if (c == '"' && inQuotes && text.substr(i + 1, 1) == "\"") {
            word += text[++i];
        } else if (c == '"') {
            inQuotes = !inQuotes;
            inWord = true;
        } else if (i == text.size() ||
                   (!inQuotes && std::string_view(" \t\r\n").find(c) != std::string_view::npos)) {
            if (inWord) words.add(String::fromUTF8(std::exchange(word, {}).c_str()));
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inQuotes) return std::nullopt;
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
        if (c == '\n')
            line << "\\n";
        else if (c == '\r')
            line << "\\r";
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

String fitted(const String& text, int width) {
    return text.length() <= width ? text.paddedRight(' ', width)
                                  : text.substring(0, width - 2) + "..";
}

}  // namespace orvane::standin::app
