#pragma once

// Checks UTF-8 with the byte ranges of its definition, independently of our own decoders.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace orvane::fuzz {

// The length in bytes of the well-formed character at the start of the text; 0 when there is none.
inline std::size_t strictLength(std::string_view text) {
    const auto at = [text](std::size_t i) {
        return i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
    };
    const std::uint8_t first = at(0);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    const std::uint8_t lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const std::uint8_t highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (at(1) < lowest || at(1) > highest) return 0;
    for (std::size_t i = 2; i < length; ++i)
        if (at(i) < 0x80 || at(i) > 0xBF) return 0;
    return length;
}

inline bool isStrictUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = strictLength(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace orvane::fuzz
