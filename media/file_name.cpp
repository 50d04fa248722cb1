#include "media/file_name.h"

#include <windows.h>

#include "platform/handles.h"
#include "util/files/long_names.h"

namespace orvane {
namespace {

UniqueFile openForQuery(const juce::String& path) {
    return UniqueFile(CreateFileW(fileNameOf(path).c_str(), FILE_READ_ATTRIBUTES,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                  OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

}  // namespace

std::wstring fileNameOf(const juce::String& path) {
    std::wstring name = path.toWideCharPointer();
    if (name.size() < MAX_PATH) return name;

    const OwnedWide extended = utl_get_unicode_filename(path.toRawUTF8(), 0);
    return extended ? extended.get() : name;
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

juce::StringArray spellingsOf(const juce::String& path) {
    juce::StringArray spellings(path);
    const auto add = [&](const std::wstring& name, DWORD length) {
        if (length == 0 || length >= name.size()) return;
        juce::String text(name.c_str());
        if (text.startsWith(R"(\\?\UNC\)"))
            text = R"(\\)" + text.substring(8);
        else if (text.startsWith(R"(\\?\)"))
            text = text.substring(4);
        spellings.addIfNotAlreadyThere(text, true);
    };
    std::wstring name(32'768, L'\0');
    const auto size = static_cast<DWORD>(name.size());
    add(name, GetFullPathNameW(fileNameOf(path).c_str(), size, name.data(), nullptr));
    if (const UniqueFile file = openForQuery(path))
        add(name, GetFinalPathNameByHandleW(file.get(), name.data(), size, FILE_NAME_NORMALIZED));
    return spellings;
}

}  // namespace orvane
