#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::test {

using Bytes = std::vector<std::uint8_t>;

inline std::wstring wide(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).wstring();
}
inline std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

// The extended-length name, made without the code under test.
inline std::filesystem::path openable(const std::filesystem::path& path) {
    std::wstring name = path.native();
    std::replace(name.begin(), name.end(), L'/', L'\\');
    return L"\\\\?\\" + name;
}

inline Bytes contentOf(const std::filesystem::path& path) {
    std::ifstream stream(openable(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}
inline std::string readText(const std::filesystem::path& path) {
    const Bytes bytes = contentOf(path);
    return {bytes.begin(), bytes.end()};
}
inline void writeFile(const std::filesystem::path& path, std::string_view content) {
    std::ofstream stream(openable(path), std::ios::binary);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    stream.close();
    EXPECT_TRUE(stream.good()) << path;
}
inline void writeFile(const std::filesystem::path& path, const Bytes& content) {
    writeFile(path, {reinterpret_cast<const char*>(content.data()), content.size()});
}

inline bool isFolder(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(openable(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

inline void makeFolder(const std::filesystem::path& path) {
    if (isFolder(path)) return;
    if (path.has_relative_path()) makeFolder(path.parent_path());
    EXPECT_NE(CreateDirectoryW(openable(path).c_str(), nullptr), 0) << path;
}

// std::filesystem::remove_all leaves what has long names.
inline void removeTree(const std::wstring& name) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((name + L"\\*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found)) {
        const std::wstring child = name + L"\\" + found.cFileName;
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            SetFileAttributesW(child.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(child.c_str());
        } else if (std::wstring_view(found.cFileName) != L"." &&
                   std::wstring_view(found.cFileName) != L"..") {
            removeTree(child);
        }
    }
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
    RemoveDirectoryW(name.c_str());
}

// An empty folder of a test's own, deleted with all its content.
class TempFolder {
public:
    TempFolder() {
        static int number = 0;
        wchar_t temporary[MAX_PATH];
        GetTempPathW(MAX_PATH, temporary);
        m_path = temporary + (L"Mus\u00e9 \u65e5\u672c " + std::to_wstring(GetCurrentProcessId()) +
                              L"-" + std::to_wstring(++number));
        removeTree(openable(m_path).native());
        makeFolder(m_path);
    }
    ~TempFolder() { removeTree(openable(m_path).native()); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] std::filesystem::path path(const std::wstring& name = {}) const {
        return name.empty() ? m_path : m_path / name;
    }
    // The same in UTF-8.
    [[nodiscard]] std::string operator/(const std::string& name) const {
        return utf8(m_path) + "\\" + name;
    }

private:
    std::filesystem::path m_path;
};

}  // namespace orvane::test
