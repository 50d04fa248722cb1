#pragma once

#include <cstddef>
#include <cstdint>

#include "util/text/owned.h"

namespace orvane {

// The registry's types that read as text, by their numbers there. Needs no Windows.
enum class ValueType : std::uint32_t {
    none = 0,
    sz = 1,
    expandSz = 2,
    binary = 3,
    dword = 4,
    dwordBigEndian = 5,
    link = 6,
    multiSz = 7,
    qword = 11,
};

// Replaces each %VARIABLE% in a text: new text, or none; a non-zero `log` reports why.
using ExpandVariables = OwnedWide (*)(const Wide* text, int log) noexcept;

// Turns a value's data into UTF-8 text. Data that is not quite what its type promises is read as
// far as it goes: a number shorter than its type by the bytes that are there, a string without its
// NUL up to its end. Only strings of an odd length are refused, except REG_EXPAND_SZ, whose cut
// last unit is completed with a zero byte.
class RegistryValue {
public:
    // `key` and `name` are for messages; `size` in bytes. All must outlive the object.
    RegistryValue(const char* key, const char* name, const unsigned char* data, std::size_t size,
                  ExpandVariables expand, int log) noexcept
        : m_key(key), m_name(name), m_data(data), m_size(size), m_expand(expand), m_log(log) {}

    // New text, or none. `type` may be any number.
    [[nodiscard]] OwnedText ValueToUTF8(ValueType type) const noexcept;

private:
    [[nodiscard]] OwnedText SzToUTF8() const noexcept;
    [[nodiscard]] OwnedText ExpandSzToUTF8() const noexcept;
    [[nodiscard]] OwnedText MultiSzToUTF8() const noexcept;
    [[nodiscard]] OwnedText NumericToUTF8(ValueType type) const noexcept;
    [[nodiscard]] OwnedText BinaryToUTF8() const noexcept;

    [[nodiscard]] bool isOdd(const char* self) const noexcept;
    [[nodiscard]] bool endsInNul() const noexcept;
    [[nodiscard]] OwnedWide terminatedCopy(std::size_t units) const noexcept;

    const char* m_key;
    const char* m_name;
    const unsigned char* m_data;
    std::size_t m_size;
    ExpandVariables m_expand;
    int m_log;
};

}  // namespace orvane
