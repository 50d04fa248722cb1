#include "media/file_name.h"

#include <windows.h>

#include "platform/handles.h"

namespace orvane {
namespace {

constexpr wchar_t kExtended[] = L"\\\\?\\";

UniqueFile openForQuery(const juce::String& path) {
    return UniqueFile(CreateFileW(fileNameOf(path).c_str(), FILE_READ_ATTRIBUTES,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

}  // namespace

std::wstring fileNameOf(const juce::String& path) {
    std::wstring name = path.toWideCharPointer();
    if (name.size() < MAX_PATH || name.starts_with(kExtended)) return name;

    // The extended-length form is taken literally: have Windows resolve what it will not any more
    // (relative parts, "/", doubled separators). This call has no limit of its own.
    const DWORD size = GetFullPathNameW(name.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    const DWORD length = GetFullPathNameW(name.c_str(), size, full.data(), nullptr);
    if (length == 0 || length >= size) return name;
    full.resize(length);
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : kExtended + full;
}

bool fileExists(const juce::String& path) {
    return GetFileAttributesW(fileNameOf(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool namesSameFile(const juce::String& path, const juce::String& other) {
    if (path.equalsIgnoreCase(other)) return true;
    const UniqueFile file = openForQuery(path);
    const UniqueFile otherFile = openForQuery(other);
    BY_HANDLE_FILE_INFORMATION information{};
    BY_HANDLE_FILE_INFORMATION otherInformation{};
    return file && otherFile && GetFileInformationByHandle(file.get(), &information) &&
           GetFileInformationByHandle(otherFile.get(), &otherInformation) &&
           information.dwVolumeSerialNumber == otherInformation.dwVolumeSerialNumber &&
           information.nFileIndexHigh == otherInformation.nFileIndexHigh &&
           information.nFileIndexLow == otherInformation.nFileIndexLow;
}

}  // namespace orvane
