#include "check/machine_backup.h"

#include <cstring>
#include <optional>
#include <sstream>
#include <system_error>
#include <vector>

#include "check/machine.h"
#include "common/names/names.h"
#include "harness/files.h"
#include "platform/handles.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

constexpr const wchar_t* kKeyItself = L"\x01";

// Keys have "M" (local machine) or "U" (current user) ahead of their path.
HKEY rootOf(const std::wstring& key) {
    return key.front() == L'M' ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}
const wchar_t* pathOf(const std::wstring& key) { return key.c_str() + 1; }

const std::wstring kClasses = L"MSoftware\\Classes\\CLSID\\";
const std::wstring kWholeKeys[] = {
    L"MSoftware\\OrVaneMedia",
    L"MSoftware\\Microsoft\\MediaPlayer\\UIPlugins",
    L"USoftware\\Microsoft\\MediaPlayer\\UIPlugins",
    kClasses + names::kClassId.wide(),
    // The tests make these.
    kClasses + L"{neighbour}",
    L"USoftware\\OrVaneMediaUtilTests \u00E9\u65E5\u672C",
};
// Only whether they are there.
const std::wstring kBareKeys[] = {L"MSoftware\\Microsoft\\MediaPlayer",
                                  L"USoftware\\Microsoft\\MediaPlayer"};
// Of the key kShellFolders.
const wchar_t* const kValues[] = {kCommonAppData, L"Common AppData before OrVane's tests"};

std::optional<RegistryValue> readValue(HKEY key, const wchar_t* name) {
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return {};
    std::vector<BYTE> data(size);
    if (RegQueryValueExW(key, name, nullptr, &type, data.data(), &size) != ERROR_SUCCESS) return {};
    data.resize(size);
    return RegistryValue{type, std::wstring(data.begin(), data.end())};
}

std::int64_t sizeOf(const std::filesystem::path& file) {
    std::error_code none;
    const auto size = std::filesystem::file_size(file, none);
    return none ? -1 : static_cast<std::int64_t>(size);
}

void readKey(const std::wstring& path, bool content, RegistryValues& values) {
    UniqueRegKey key;
    if (RegOpenKeyExW(rootOf(path), pathOf(path), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return;
    values[{path, kKeyItself}] = {};
    if (!content) return;
    std::wstring name(16384, L'\0');
    const auto nextName = [&](const auto& enumerate, DWORD index) -> std::optional<std::wstring> {
        auto length = static_cast<DWORD>(name.size());
        if (enumerate(key.get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return {};
        return name.substr(0, length);
    };
    for (DWORD index = 0; const auto value = nextName(RegEnumValueW, index); ++index)
        if (const auto read = readValue(key.get(), value->c_str())) values[{path, *value}] = *read;
    for (DWORD index = 0; const auto child = nextName(RegEnumKeyExW, index); ++index)
        readKey(path + L"\\" + *child, true, values);
}

RegistryValues readRegistry() {
    RegistryValues values;
    for (const auto& key : kWholeKeys) readKey(key, true, values);
    for (const auto& key : kBareKeys) readKey(key, false, values);
    UniqueRegKey folders;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, kShellFolders, 0, KEY_READ, folders.put());
    for (const wchar_t* const value : kValues)
        if (const auto read = folders ? readValue(folders.get(), value) : std::nullopt)
            values[{std::wstring(L"M") + kShellFolders, value}] = *read;
    return values;
}

// Ends each text of the file: no character, so that no name has it. U+FFFF would be the stream's
// own mark for the end of input.
constexpr wchar_t kEnd = L'\xFFFE';

}  // namespace

bool MachineBackup::save(const std::filesystem::path& file) {
    m_values = readRegistry();
    m_log = sharedLog();
    m_logSize = sizeOf(m_log);
    m_logFolderExisted = test::isFolder(m_log.parent_path());
    std::wstring out;
    for (const auto& text : {m_log.native(), std::to_wstring(m_logSize),
                             std::to_wstring(m_logFolderExisted), std::to_wstring(m_values.size())})
        out += text + kEnd;
    for (const auto& [where, value] : m_values)
        out += where.first + kEnd + where.second + kEnd + std::to_wstring(value.first) + kEnd +
               value.second + kEnd;
    try {
        test::writeFile(file, std::string_view(reinterpret_cast<const char*>(out.data()),
                                               out.size() * sizeof(wchar_t)));
    } catch (const std::system_error&) {
        return false;
    }
    m_file = file;
    return true;
}

bool MachineBackup::load(const std::filesystem::path& file) {
    constexpr std::size_t kHead = 4, kEntry = 4;
    const std::string in = test::readText(file);
    std::wstring content(in.size() / sizeof(wchar_t), L'\0');
    std::memcpy(content.data(), in.data(), content.size() * sizeof(wchar_t));
    std::wistringstream stream(content);
    std::vector<std::wstring> texts;
    for (std::wstring text; std::getline(stream, text, kEnd);) texts.push_back(text);
    if (texts.size() < kHead ||
        texts.size() != kHead + kEntry * std::wcstoul(texts[3].c_str(), nullptr, 10))
        return false;
    m_file = file;
    m_log = texts[0];
    m_logSize = std::wcstoll(texts[1].c_str(), nullptr, 10);
    m_logFolderExisted = texts[2] == L"1";
    for (std::size_t at = kHead; at < texts.size(); at += kEntry)
        m_values[{texts[at], texts[at + 1]}] = {std::wcstoul(texts[at + 2].c_str(), nullptr, 10),
                                                texts[at + 3]};
    return true;
}

void MachineBackup::restoreRegistry(std::string& problems) const {
    const RegistryValues now = readRegistry();
    const auto note = [&](LSTATUS result, const std::wstring& key) {
        if (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND) return;
        problems += "the registry key " + standin::toUtf8(key.substr(1)) + ": error " +
                    std::to_string(result) + "\n";
    };
    // First what was added is removed, keys with all that is in them; then what is missing is
    // added.
    for (const auto& [where, value] : now) {
        const auto& [key, name] = where;
        if (m_values.contains(where)) continue;
        note(name == kKeyItself ? RegDeleteTreeW(rootOf(key), pathOf(key))
                                : RegDeleteKeyValueW(rootOf(key), pathOf(key), name.c_str()),
             key);
    }
    for (const auto& [where, value] : m_values) {
        const auto& [key, name] = where;
        const auto found = now.find(where);
        if (found != now.end() && found->second == value) continue;
        UniqueRegKey opened;
        LSTATUS result = RegCreateKeyExW(rootOf(key), pathOf(key), 0, nullptr, 0, KEY_SET_VALUE,
                                         nullptr, opened.put(), nullptr);
        const std::vector<BYTE> data(value.second.begin(), value.second.end());
        if (result == ERROR_SUCCESS && name != kKeyItself)
            result = RegSetValueExW(opened.get(), name.c_str(), 0, value.first, data.data(),
                                    static_cast<DWORD>(data.size()));
        note(result, key);
    }
}

// Removes the lines that were added; a log that another process writes to stays whole.
void MachineBackup::restoreLog(std::string& problems) const {
    if (sizeOf(m_log) <= m_logSize) return;
    bool good = false;
    if (m_logSize < 0) {
        good = DeleteFileW(m_log.c_str()) != 0;
        if (!m_logFolderExisted) RemoveDirectoryW(m_log.parent_path().c_str());
    } else {
        const UniqueFile file(CreateFileW(m_log.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                          OPEN_EXISTING, 0, nullptr));
        LARGE_INTEGER end;
        end.QuadPart = m_logSize;
        good = file && SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN) &&
               SetEndOfFile(file.get());
    }
    if (!good)
        problems += "the lines added to the log: error " + std::to_string(GetLastError()) + "\n";
}

std::string MachineBackup::restore() {
    std::string problems;
    if (m_file.empty()) return problems;
    restoreRegistry(problems);
    restoreLog(problems);
    if (problems.empty() && readRegistry() != m_values)
        problems = "the registry is not as it was\n";
    std::error_code ignored;
    if (problems.empty()) std::filesystem::remove(m_file, ignored);
    return problems;
}

}  // namespace orvane::check
