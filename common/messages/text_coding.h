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

// A payload is a text in UTF-8 and one zero byte. Within this program a text may also be "loose
// UTF-8": an unpaired surrogate is encoded as three bytes, so any 16-bit text can be converted to
// loose UTF-8 and back without a loss, and two surrogates that become neighbours form a pair.
//
// The decoder in util/text/utf8.h cannot be used here: it refuses U+FFFE and U+FFFF, which a
// payload may contain; it does not keep unpaired surrogates; and it needs a terminator, which a
// payload may lack.

// The payload's text up to its first zero byte or its end, as valid UTF-8: each malformed sequence
// becomes U+FFFD.
[[nodiscard]] std::string validUtf8(std::span<const std::uint8_t> payload);

// Appends valid UTF-8: an unpaired surrogate becomes U+FFFD.
void appendUtf8(const juce::String& text, std::vector<std::uint8_t>& out);

void appendLooseUtf8(const juce::String& text, std::string& out);
[[nodiscard]] juce::String fromLooseUtf8(std::string_view bytes);

// A string of exactly these 16-bit units, which hold no zero.
[[nodiscard]] juce::String stringOfUnits(std::u16string_view units);

}  // namespace orvane
