#include "common/messages/text_coding.h"

#include <cstddef>
#include <cstring>

namespace orvane {
namespace {

constexpr char32_t replacement = 0xFFFD;

// What a half of a surrogate pair becomes that stands alone.
enum class LoneHalves { replaced, kept };

bool isHighHalf(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowHalf(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

template <typename Bytes>
void appendUtf8(char32_t c, Bytes& out) {
    using Byte = typename Bytes::value_type;
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<Byte>(byte)); };
    if (c < 0x80) {
        put(c);
        return;
    }
    if (c < 0x800) {
        put(0xC0 | (c >> 6));
    } else {
        if (c < 0x10000) {
            put(0xE0 | (c >> 12));
        } else {
            put(0xF0 | (c >> 18));
            put(0x80 | ((c >> 12) & 0x3F));
        }
        put(0x80 | ((c >> 6) & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}

template <typename Bytes>
void encode(const juce::String& text, LoneHalves loneHalves, Bytes& out) {
    for (const auto* unit = text.getCharPointer().getAddress(); *unit != 0; ++unit) {
        char32_t c = static_cast<std::uint16_t>(*unit);
        // The zero at the end is no half, so looking one on is safe.
        const char32_t next = static_cast<std::uint16_t>(unit[1]);
        if (isHighHalf(c) && isLowHalf(next)) {
            c = 0x10000 + ((c & 0x3FF) << 10) + (next & 0x3FF);
            ++unit;
        } else if ((isHighHalf(c) || isLowHalf(c)) && loneHalves == LoneHalves::replaced) {
            c = replacement;
        }
        appendUtf8(c, out);
    }
}

struct Character {
    char32_t value;
    std::size_t length;  // bytes to go on by
};

Character decodeOne(std::span<const std::uint8_t> bytes, LoneHalves loneHalves) {
    const std::uint8_t first = bytes[0];
    if (first < 0x80) return {first, 1};
    if (first < 0xC0 || first > 0xF7) return {replacement, 1};
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;

    char32_t value = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        // A byte that does not belong here starts the next character.
        if (i == bytes.size() || (bytes[i] & 0xC0) != 0x80) return {replacement, i};
        value = (value << 6) | (bytes[i] & 0x3F);
    }
    constexpr char32_t smallest[] = {0x80, 0x800, 0x10000};
    const bool half = isHighHalf(value) || isLowHalf(value);
    if (value < smallest[length - 2] || value > 0x10FFFF ||
        (half && loneHalves == LoneHalves::replaced))
        return {replacement, length};
    return {value, length};
}

juce::String decode(std::span<const std::uint8_t> bytes, LoneHalves loneHalves) {
    std::u16string units;
    units.reserve(bytes.size());
    while (!bytes.empty() && bytes[0] != 0) {
        const auto [value, length] = decodeOne(bytes, loneHalves);
        if (value < 0x10000) {
            units += static_cast<char16_t>(value);
        } else {
            units += static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + (value & 0x3FF));
        }
        bytes = bytes.subspan(length);
    }
    return stringOfUnits(units);
}

}  // namespace

std::vector<std::uint8_t> encodePayload(const juce::String& text) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.getCharPointer().sizeInBytes() / 2);
    encode(text, LoneHalves::replaced, bytes);
    bytes.push_back(0);
    return bytes;
}

juce::String decodePayload(std::span<const std::uint8_t> payload) {
    return decode(payload, LoneHalves::replaced);
}

void appendLooseUtf8(const juce::String& text, std::string& out) {
    out.reserve(out.size() + text.getCharPointer().sizeInBytes() / 2);
    encode(text, LoneHalves::kept, out);
}

juce::String fromLooseUtf8(std::string_view bytes) {
    return decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()},
                  LoneHalves::kept);
}

juce::String stringOfUnits(std::u16string_view units) {
    juce::String text;
    if (units.empty()) return text;
    // JUCE's own constructors read pairs, and would join halves that do not belong together.
    using Unit = juce::String::CharPointerType::CharType;
    static_assert(sizeof(Unit) == sizeof(char16_t));
    text.preallocateBytes(units.size() * sizeof(Unit));
    auto* const out = text.getCharPointer().getAddress();
    std::memcpy(out, units.data(), units.size() * sizeof(Unit));
    out[units.size()] = 0;
    return text;
}

}  // namespace orvane
