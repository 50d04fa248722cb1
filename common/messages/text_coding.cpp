#include "common/messages/text_coding.h"

#include <cstring>

namespace orvane {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// What a half of a surrogate pair becomes that stands alone.
enum class LoneHalves { replaced, kept };

bool isHighHalf(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowHalf(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

template <typename Bytes>
void encodeOne(char32_t c, Bytes& out) {
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
            c = kReplacement;
        }
        encodeOne(c, out);
    }
}

struct Character {
    char32_t value;
    std::size_t length;  // bytes to go on by
};

Character decodeOne(std::span<const std::uint8_t> bytes, LoneHalves loneHalves) {
    const std::uint8_t first = bytes[0];
    if (first < 0x80) return {first, 1};
    if (first < 0xC0 || first > 0xF7) return {kReplacement, 1};
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;

    char32_t value = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        // A byte that does not belong here starts the next character.
        if (i == bytes.size() || (bytes[i] & 0xC0) != 0x80) return {kReplacement, i};
        value = (value << 6) | (bytes[i] & 0x3F);
    }
    constexpr char32_t smallest[] = {0x80, 0x800, 0x10000};
    const bool half = isHighHalf(value) || isLowHalf(value);
    if (value < smallest[length - 2] || value > 0x10FFFF ||
        (half && loneHalves == LoneHalves::replaced))
        return {kReplacement, length};
    return {value, length};
}

// The first byte that is not ASCII or that is zero; eight bytes at a time.
std::size_t asciiPrefix(std::string_view bytes) {
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + i, sizeof(word));
        constexpr std::uint64_t high = 0x8080808080808080;
        constexpr std::uint64_t ones = 0x0101010101010101;
        // A byte of zero borrows from its neighbour; with no high bits about, nothing else does.
        if ((word & high) != 0 || ((word - ones) & high) != 0) break;
    }
    while (i < bytes.size() && bytes[i] > 0) ++i;
    return i;
}

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// A string with room for `units` units behind those that the caller fills in.
StringUnit* roomFor(juce::String& text, std::size_t units) {
    text.preallocateBytes(units * sizeof(StringUnit));
    return text.getCharPointer().getAddress();
}

}  // namespace

std::string validUtf8(std::span<const std::uint8_t> payload) {
    std::string_view rest(reinterpret_cast<const char*>(payload.data()), payload.size());
    std::string text;
    text.reserve(rest.size());
    for (;;) {
        const std::size_t plain = asciiPrefix(rest);
        text.append(rest.substr(0, plain));
        rest.remove_prefix(plain);
        if (rest.empty() || rest[0] == 0) return text;
        const auto [value, length] = decodeOne(asBytes(rest), LoneHalves::replaced);
        encodeOne(value, text);
        rest.remove_prefix(length);
    }
}

void appendUtf8(const juce::String& text, std::vector<std::uint8_t>& out) {
    encode(text, LoneHalves::replaced, out);
}

void appendLooseUtf8(const juce::String& text, std::string& out) {
    out.reserve(out.size() + text.getCharPointer().sizeInBytes() / 2);
    encode(text, LoneHalves::kept, out);
}

juce::String fromLooseUtf8(std::string_view bytes) {
    juce::String text;
    const std::size_t plain = asciiPrefix(bytes);
    if (plain == bytes.size() || bytes[plain] == 0) {
        if (plain == 0) return text;
        StringUnit* const out = roomFor(text, plain);
        for (std::size_t i = 0; i < plain; ++i) out[i] = static_cast<StringUnit>(bytes[i]);
        out[plain] = 0;
        return text;
    }
    std::u16string units;
    units.reserve(bytes.size());
    units.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(plain));
    bytes.remove_prefix(plain);
    while (!bytes.empty() && bytes[0] != 0) {
        const auto [value, length] = decodeOne(asBytes(bytes), LoneHalves::kept);
        if (value < 0x10000) {
            units += static_cast<char16_t>(value);
        } else {
            units += static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
            units += static_cast<char16_t>(0xDC00 + (value & 0x3FF));
        }
        bytes.remove_prefix(length);
    }
    return stringOfUnits(units);
}

juce::String stringOfUnits(std::u16string_view units) {
    juce::String text;
    if (units.empty()) return text;
    // JUCE's own constructors read pairs, and would join halves that do not belong together.
    static_assert(sizeof(StringUnit) == sizeof(char16_t));
    StringUnit* const out = roomFor(text, units.size());
    std::memcpy(out, units.data(), units.size() * sizeof(StringUnit));
    out[units.size()] = 0;
    return text;
}

}  // namespace orvane
