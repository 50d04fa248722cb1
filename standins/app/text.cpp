#include "standins/app/text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <numeric>

namespace orvane::standin::app {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Where `count` characters end.
std::size_t offsetOfCharacter(std::string_view utf8, std::size_t count) {
    std::size_t at = 0;
    while (at < utf8.size()) {
        if (!isContinuation(utf8[at]) && count-- == 0) break;
        ++at;
    }
    return at;
}

}  // namespace

bool sameIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && startsWithIgnoringCase(a, b);
}

bool startsWithIgnoringCase(std::string_view text, std::string_view beginning) {
    return text.size() >= beginning.size() &&
           std::equal(beginning.begin(), beginning.end(), text.begin(),
                      [](char a, char b) { return lower(a) == lower(b); });
}

std::string_view trimmed(std::string_view text) {
    const auto from = text.find_first_not_of(" \t\r\n");
    if (from == std::string_view::npos) return {};
    return text.substr(from, text.find_last_not_of(" \t\r\n") - from + 1);
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    for (;;) {
        const auto at = text.find(separator);
        parts.emplace_back(text.substr(0, at));
        if (at == std::string_view::npos) return parts;
        text.remove_prefix(at + 1);
    }
}

std::string join(const std::vector<std::string>& parts, std::string_view separator) {
    std::string all;
    for (const std::string& part : parts) {
        if (!all.empty()) all += separator;
        all += part;
    }
    return all;
}

std::optional<unsigned> parseNumber(std::string_view text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return {};
    return number;
}

bool matches(std::string_view pattern, std::string_view text) {
    const auto star = pattern.find('*');
    if (star == std::string_view::npos) return pattern == text;
    if (text.substr(0, star) != pattern.substr(0, star)) return false;
    text.remove_prefix(star);
    pattern.remove_prefix(star + 1);
    // Every piece between two stars is taken at its first place; the last one must end the text.
    for (;;) {
        const auto next = pattern.find('*');
        const std::string_view piece = pattern.substr(0, next);
        if (next == std::string_view::npos)
            return text.size() >= piece.size() && text.substr(text.size() - piece.size()) == piece;
        const auto at = text.find(piece);
        if (at == std::string_view::npos) return false;
        text.remove_prefix(at + piece.size());
        pattern.remove_prefix(next + 1);
    }
}

std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t change = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({row[j] + 1, row[j + 1] + 1, change});
        }
    }
    return row[b.size()];
}

std::string onOneLine(std::string_view text, std::size_t limit) {
    const std::size_t end = offsetOfCharacter(text, limit);
    std::string line;
    for (const char c : text.substr(0, end)) {
        if (c == '\n') {
            line += "\\n";
        } else if (c == '\r') {
            line += "\\r";
        } else if (c == '\t') {
            line += "\\t";
        } else if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            char shown[8];
            std::snprintf(shown, sizeof shown, "\\x%02X", static_cast<unsigned>(c));
            line += shown;
        } else {
            line += c;
        }
    }
    if (end < text.size()) line += "... (" + std::to_string(characterCount(text)) + " characters)";
    return line;
}

std::string asWord(std::string_view text, std::size_t limit) {
    std::string line = onOneLine(text, limit);
    if (!line.empty() && line.find(' ') == std::string::npos) return line;
    return '"' + line + '"';
}

std::string hexBytes(std::string_view bytes, std::size_t limit) {
    std::string shown;
    for (const char c : bytes.substr(0, limit)) {
        char two[4];
        std::snprintf(two, sizeof two, "%02X", static_cast<unsigned>(static_cast<std::uint8_t>(c)));
        if (!shown.empty()) shown += ' ';
        shown += two;
    }
    if (bytes.size() > limit) shown += " ...";
    return shown;
}

std::size_t firstInvalidUtf8(std::string_view bytes) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
    std::size_t at = 0;
    while (at < bytes.size()) {
        const std::uint8_t lead = byte(at);
        std::size_t length = 1;
        std::uint8_t low = 0x80, high = 0xBF;  // what the second byte may be
        if (lead < 0x80) {
            ++at;
            continue;
        } else if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            if (lead == 0xE0) low = 0xA0;   // overlong
            if (lead == 0xED) high = 0x9F;  // surrogates
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            if (lead == 0xF0) low = 0x90;   // overlong
            if (lead == 0xF4) high = 0x8F;  // beyond U+10FFFF
        } else {
            return at;
        }
        if (at + length > bytes.size() || byte(at + 1) < low || byte(at + 1) > high) return at;
        for (std::size_t i = 2; i < length; ++i)
            if (!isContinuation(bytes[at + i])) return at;
        at += length;
    }
    return std::string_view::npos;
}

std::size_t characterCount(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::count_if(utf8.begin(), utf8.end(), [](char c) { return !isContinuation(c); }));
}

std::string fitted(std::string_view utf8, std::size_t width) {
    const std::size_t count = characterCount(utf8);
    if (count <= width) return std::string(utf8) + std::string(width - count, ' ');
    if (width < 3) return std::string(utf8.substr(0, offsetOfCharacter(utf8, width)));
    return std::string(utf8.substr(0, offsetOfCharacter(utf8, width - 2))) + "..";
}

}  // namespace orvane::standin::app
