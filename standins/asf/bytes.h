#pragma once

// Little-endian numbers and UTF-16 text out of and into bytes.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "standins/asf/error.h"

namespace orvane::asf {

using Bytes = std::vector<std::uint8_t>;
using Guid = std::array<std::uint8_t, 16>;  // as its bytes stand in a file

// Takes values from the front of bytes that somebody else wrote; throws an Error when too few are
// left.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : m_rest(bytes) {}

    [[nodiscard]] std::span<const std::uint8_t> rest() const { return m_rest; }

    std::span<const std::uint8_t> take(std::uint64_t count) {
        if (count > m_rest.size()) throw Error("The header or a value in it is cut short.");
        const auto taken = m_rest.first(static_cast<std::size_t>(count));
        m_rest = m_rest.subspan(taken.size());
        return taken;
    }
    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::uint64_t u64() { return number(8); }
    Guid guid() {
        Guid result{};
        std::ranges::copy(take(result.size()), result.begin());
        return result;
    }

private:
    std::uint64_t number(std::size_t size) {
        std::uint64_t value = 0;
        unsigned shift = 0;
        for (const std::uint8_t byte : take(size)) {
            value |= std::uint64_t{byte} << shift;
            shift += 8;
        }
        return value;
    }

    std::span<const std::uint8_t> m_rest;
};

inline void overwriteNumber(Bytes& out, std::size_t at, std::uint64_t value, unsigned size) {
    for (unsigned i = 0; i < size; ++i) out[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

inline void putNumber(Bytes& out, std::uint64_t value, unsigned size) {
    out.resize(out.size() + size);
    overwriteNumber(out, out.size() - size, value, size);
}

inline void putBytes(Bytes& out, std::span<const std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

inline void putText(Bytes& out, std::u16string_view text) {
    for (const char16_t unit : text) putNumber(out, unit, 2);
}

inline void putTerminatedText(Bytes& out, std::u16string_view text) {
    putText(out, text);
    putNumber(out, 0, 2);
}

// An odd last byte is no text. Terminators at the end are not part of it either.
inline std::span<const std::uint8_t> withoutTerminator(std::span<const std::uint8_t> text) {
    text = text.first(text.size() / 2 * 2);
    while (!text.empty() && text[text.size() - 2] == 0 && text[text.size() - 1] == 0)
        text = text.first(text.size() - 2);
    return text;
}

inline std::u16string textFrom(std::span<const std::uint8_t> bytes) {
    std::u16string text;
    for (ByteReader reader(bytes); reader.rest().size() >= 2;) text += reader.u16();
    return text;
}

}  // namespace orvane::asf
