#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// One unit of a juce::String as it is stored, and a string's units up to its zero.
using StringUnit = juce::String::CharPointerType::CharType;

[[nodiscard]] inline const StringUnit* unitsOf(const juce::String& text) {
    return text.getCharPointer().getAddress();
}

[[nodiscard]] inline std::size_t lengthOf(const StringUnit* units) {
    std::size_t count = 0;
    while (units[count] != 0) ++count;
    return count;
}

// A payload of the link is a text in UTF-8 and one zero byte. Inside of this program a text may
// also be loose UTF-8: halves of a surrogate pair stand alone as three bytes, so any 16-bit text
// survives the way there and back, and two halves that meet are a pair again.

// The payload's text up to its first zero byte or its end, valid UTF-8: each malformed sequence
// becomes U+FFFD.
[[nodiscard]] std::string validUtf8(std::span<const std::uint8_t> payload);

// Appends to bytes: a unit that is half of no pair becomes U+FFFD.
void appendUtf8(const juce::String& text, std::vector<std::uint8_t>& out);

void appendLooseUtf8(const juce::String& text, std::string& out);
[[nodiscard]] juce::String fromLooseUtf8(std::string_view bytes);

// A string of exactly these 16-bit units, which hold no zero.
[[nodiscard]] juce::String stringOfUnits(std::u16string_view units);

}  // namespace orvane
