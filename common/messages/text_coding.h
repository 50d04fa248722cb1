#pragma once

#include <juce_core/juce_core.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// A payload of the link is a text in UTF-8 and one zero byte.

// A unit that is half of no pair becomes U+FFFD.
[[nodiscard]] std::vector<std::uint8_t> encodePayload(const juce::String& text);

// Reads up to the first zero byte or the end. Each malformed sequence becomes U+FFFD.
[[nodiscard]] juce::String decodePayload(std::span<const std::uint8_t> payload);

// UTF-8 in which halves of a pair may stand alone as three bytes: any 16-bit text survives the way
// there and back, and two halves that meet are a pair again.
void appendLooseUtf8(const juce::String& text, std::string& out);
[[nodiscard]] juce::String fromLooseUtf8(std::string_view bytes);

// A string of exactly these 16-bit units, which hold no zero.
[[nodiscard]] juce::String stringOfUnits(std::u16string_view units);

}  // namespace orvane
