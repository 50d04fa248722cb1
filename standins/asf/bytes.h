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

#include "standins/asf/guids.h"

namespace orvane::asf {

// Takes values from the front of bytes that somebody else wrote. Once there is too little left,
// every value is zero or empty and failed() stays true: check it before a value is relied on.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : m_rest(bytes) {}

    [[nodiscard]] bool failed() const { return m_failed; }
    [[nodiscard]] std::size_t remaining() const { return m_rest.size(); }
    [[nodiscard]] std::span<const std::uint8_t> rest() const { return m_rest; }

    std::span<const std::uint8_t> take(std::uint64_t count) {
        if (m_failed || count > m_rest.size()) {
            m_failed = true;
            m_rest = {};
            return {};
        }
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
    bool m_failed = false;
};

using Bytes = std::vector<std::uint8_t>;

inline void putNumber(Bytes& out, std::uint64_t value, unsigned size) {
    std::array<std::uint8_t, 8> bytes{};
    for (unsigned i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
    out.insert(out.end(), bytes.begin(), bytes.begin() + size);
}

inline void overwriteNumber(Bytes& out, std::size_t at, std::uint64_t value, unsigned size) {
    for (unsigned i = 0; i < size; ++i) out[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

inline void putBytes(Bytes& out, std::span<const std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

inline void putText(Bytes& out, std::u16string_view text) {
    std::size_t at = out.size();
    out.resize(at + text.size() * 2);
    for (const char16_t unit : text) {
        out[at++] = static_cast<std::uint8_t>(unit);
        out[at++] = static_cast<std::uint8_t>(unit >> 8U);
    }
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
    std::u16string text(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < text.size(); ++i)
        text[i] = static_cast<char16_t>(bytes[2 * i] | (unsigned{bytes[2 * i + 1]} << 8U));
    return text;
}

}  // namespace orvane::asf
