#pragma once

#include <cstddef>
#include <cstdint>

#include "util/text/owned.h"

namespace orvane {

// The registry types with a text form of their own, by the registry's numbers. Portable code.
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

// Returns the text with each %VARIABLE% replaced, or null; a non-zero `log` logs the reason.
using ExpandVariables = OwnedWide (*)(const Wide* text, int log) noexcept;

// Converts a value's data into UTF-8 text. Data that does not fit its type is read as far as it
// goes: a short number from the bytes that are there, a string without a NUL up to its end. Strings
// of an odd length are refused, except REG_EXPAND_SZ: a zero byte completes its last unit.
class RegistryValue {
public:
    // `key` and `name` are for the log; `size` is in bytes. Not owned: all must outlive the object.
    RegistryValue(const char* key, const char* name, const unsigned char* data, std::size_t size,
                  ExpandVariables expand, int log) noexcept
        : m_key(key), m_name(name), m_data(data), m_size(size), m_expand(expand), m_log(log) {}

    // New text, or null. `type` may be any number.
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
