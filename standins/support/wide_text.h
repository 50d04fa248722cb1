#pragma once

// UTF-8 to Windows' 16-bit text and back (MultiByteToWideChar); what is malformed becomes U+FFFD.

#include <windows.h>

#include <string>
#include <string_view>

namespace orvane::standin {

inline std::wstring toWide(std::string_view utf8) {
    if (utf8.empty()) return {};
    const int size = static_cast<int>(utf8.size());
    std::wstring wide(utf8.size(), L'\0');
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), size)));
    return wide;
}

inline std::string toUtf8(std::wstring_view wide) {
    if (wide.empty()) return {};
    const int size = static_cast<int>(wide.size());
    std::string utf8(wide.size() * 3, '\0');
    utf8.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(),
                            static_cast<int>(utf8.size()), nullptr, nullptr)));
    return utf8;
}

}  // namespace orvane::standin
