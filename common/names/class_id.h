#pragma once

#include <windows.h>

#include <cstddef>
#include <string_view>

#include "common/names/names.h"

namespace orvane::names {

// IIDFromString at compile time. Hexadecimal digits above 9 are capital letters.
consteval GUID guidOf(std::string_view text) {
    const auto number = [text](std::size_t at, int digits) {
        unsigned long value = 0;
        for (int i = 0; i < digits; ++i) {
            const char c = text.at(at + static_cast<std::size_t>(i));
            value = value * 16 + static_cast<unsigned long>(c <= '9' ? c - '0' : c - 'A' + 10);
        }
        return value;
    };
    GUID guid{number(1, 8),
              static_cast<unsigned short>(number(10, 4)),
              static_cast<unsigned short>(number(15, 4)),
              {}};
    constexpr std::size_t kBytesAt[] = {20, 22, 25, 27, 29, 31, 33, 35};
    for (std::size_t i = 0; i < 8; ++i)
        guid.Data4[i] = static_cast<unsigned char>(number(kBytesAt[i], 2));
    return guid;
}
// The plug-in's class.
inline constexpr GUID kClass = guidOf(kClassId.narrow());

}  // namespace orvane::names
