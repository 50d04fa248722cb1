#include "tests/util/temp_folder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "platform/handles.h"

namespace orvane::test {
namespace {

void removeTree(const std::wstring& name) {
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((name + L"\\*").c_str(), &entry);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring child = entry.cFileName;
            if (child == L"." || child == L"..") continue;
            const std::wstring childName = name + L"\\" + child;
            if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
                removeTree(childName);
            } else {
                SetFileAttributesW(childName.c_str(), FILE_ATTRIBUTE_NORMAL);
                DeleteFileW(childName.c_str());
            }
        } while (FindNextFileW(search, &entry) != 0);
        FindClose(search);
    }
    RemoveDirectoryW(name.c_str());
}

}  // namespace

std::wstring wide(const std::string& text) {
    const int size =
        MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring result(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result.data(),
                        size);
    return result;
}

std::wstring plainLongName(const std::string& absolutePath) {
    return L"\\\\?\\" + wide(absolutePath);
}

TempFolder::TempFolder() {
    static int count = 0;
    char base[MAX_PATH];
    GetTempPathA(MAX_PATH, base);
    m_path = std::string(base) + "orvane-" + std::to_string(GetCurrentProcessId()) + "-" +
             std::to_string(GetTickCount()) + "-" + std::to_string(++count);
    EXPECT_NE(CreateDirectoryW(plainLongName(m_path).c_str(), nullptr), 0);
}

TempFolder::~TempFolder() { removeTree(plainLongName(m_path)); }

void writeFile(const std::string& absolutePath, const std::string& content) {
    const UniqueFile file(CreateFileW(plainLongName(absolutePath).c_str(), GENERIC_WRITE, 0,
                                      nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(file) << absolutePath;
    DWORD written = 0;
    ASSERT_NE(WriteFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &written,
                        nullptr),
              0);
}

std::string readFile(const std::string& absolutePath) {
    const UniqueFile file(CreateFileW(plainLongName(absolutePath).c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) return "(none)";
    std::string content(GetFileSize(file.get(), nullptr), '\0');
    DWORD read = 0;
    EXPECT_NE(
        ReadFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &read, nullptr),
        0);
    content.resize(read);
    return content;
}

bool isFolder(const std::string& absolutePath) {
    const DWORD attributes = GetFileAttributesW(plainLongName(absolutePath).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool isFile(const std::string& absolutePath) {
    const DWORD attributes = GetFileAttributesW(plainLongName(absolutePath).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

}  // namespace orvane::test
