#include "harness/files.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

namespace orvane::test {
namespace {

[[noreturn]] void throwLastError(const std::filesystem::path& path) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), utf8(path));
}

}  // namespace

std::wstring wide(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).wstring();
}

std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::filesystem::path openable(const std::filesystem::path& path) {
    std::wstring name = path.native();
    std::replace(name.begin(), name.end(), L'/', L'\\');
    return L"\\\\?\\" + name;
}

Bytes contentOf(const std::filesystem::path& path) {
    std::ifstream stream(openable(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string readText(const std::filesystem::path& path) {
    const Bytes bytes = contentOf(path);
    return {bytes.begin(), bytes.end()};
}

void writeFile(const std::filesystem::path& path, std::string_view content) {
    std::ofstream stream(openable(path), std::ios::binary);
    stream.write(content.data(), static_cast<std::streamsize>(content.size()));
    stream.close();
    if (!stream.good()) throwLastError(path);
}

void writeFile(const std::filesystem::path& path, const Bytes& content) {
    writeFile(path, {reinterpret_cast<const char*>(content.data()), content.size()});
}

bool isFolder(const std::filesystem::path& path) {
    const DWORD attributes = GetFileAttributesW(openable(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void makeFolder(const std::filesystem::path& path) {
    if (isFolder(path)) return;
    if (path.has_relative_path()) makeFolder(path.parent_path());
    if (!CreateDirectoryW(openable(path).c_str(), nullptr)) throwLastError(path);
}

void removeFolder(const std::filesystem::path& path) {
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((openable(path) / L"*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found)) {
        const std::filesystem::path child = path / found.cFileName;
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            SetFileAttributesW(openable(child).c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(openable(child).c_str());
        } else if (child.filename() != L"." && child.filename() != L"..") {
            removeFolder(child);
        }
    }
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
    RemoveDirectoryW(openable(path).c_str());
}

TempFolder::TempFolder() {
    static int number = 0;
    wchar_t temporary[MAX_PATH];
    GetTempPathW(MAX_PATH, temporary);
    m_path = temporary + (L"Mus\u00e9 \u65e5\u672c " + std::to_wstring(GetCurrentProcessId()) +
                          L"-" + std::to_wstring(++number));
    removeFolder(m_path);
    makeFolder(m_path);
}

}  // namespace orvane::test
