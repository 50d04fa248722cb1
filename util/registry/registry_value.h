#pragma once

#include <cstddef>
#include <cstdint>

#include "util/text/owned.h"

namespace orvane {

// Turns a value's data into UTF-8 text. Data that is not quite what its type promises is read as
// far as it goes: a number shorter than its type by the bytes that are there, a string without its
// NUL up to its end. Only strings of an odd length are refused, except REG_EXPAND_SZ, whose cut
// last unit is completed with a zero byte.
class RegistryValue {
public:
    // `key` and `name` are for messages; `size` in bytes. All must outlive the object.
    RegistryValue(const char* key, const char* name, const unsigned char* data, std::size_t size,
                  int log) noexcept
        : m_key(key), m_name(name), m_data(data), m_size(size), m_log(log) {}

    // New text, or none. `type` is the registry's, such as REG_SZ.
    [[nodiscard]] OwnedText ValueToUTF8(std::uint32_t type) const noexcept;

private:
    [[nodiscard]] OwnedText SzToUTF8() const noexcept;
    [[nodiscard]] OwnedText ExpandSzToUTF8() const noexcept;
    [[nodiscard]] OwnedText MultiSzToUTF8() const noexcept;
    [[nodiscard]] OwnedText NumericToUTF8(std::uint32_t type) const noexcept;
    [[nodiscard]] OwnedText BinaryToUTF8() const noexcept;

    [[nodiscard]] bool isOdd(const char* self) const noexcept;
    [[nodiscard]] bool endsInNul() const noexcept;
    [[nodiscard]] OwnedWide terminatedCopy(std::size_t units) const noexcept;

    const char* m_key;
    const char* m_name;
    const unsigned char* m_data;
    std::size_t m_size;
    int m_log;
};

}  // namespace orvane
