#include "check/machine_backup.h"

#include <cstring>
#include <optional>
#include <vector>

#include "check/machine.h"
#include "common/names/names.h"
#include "harness/files.h"
#include "platform/handles.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

constexpr const wchar_t* kKeyItself = L"\x01";

// A key with all below it, one that is only there or not, or one value of a key that is not ours.
enum class Extent { all, onlyItself, oneValue };
struct Place {
    HKEY root;
    std::wstring path;
    Extent extent;
    const wchar_t* value = nullptr;
};
std::vector<Place> places() {
    const std::wstring classes = L"Software\\Classes\\CLSID\\";
    const std::wstring player = L"Software\\Microsoft\\MediaPlayer";
    const std::wstring plugins = player + L"\\UIPlugins";
    return {
        {HKEY_LOCAL_MACHINE, L"Software\\OrVaneMedia", Extent::all},
        {HKEY_LOCAL_MACHINE, player, Extent::onlyItself},
        {HKEY_LOCAL_MACHINE, plugins, Extent::all},
        {HKEY_LOCAL_MACHINE, classes + names::kClassId.wide(), Extent::all},
        // One of the tests makes it.
        {HKEY_LOCAL_MACHINE, classes + L"{neighbour}", Extent::all},
        {HKEY_LOCAL_MACHINE, kShellFolders, Extent::oneValue, kCommonAppData},
        {HKEY_LOCAL_MACHINE, kShellFolders, Extent::oneValue,
         L"Common AppData before OrVane's tests"},
        {HKEY_CURRENT_USER, player, Extent::onlyItself},
        {HKEY_CURRENT_USER, plugins, Extent::all},
        {HKEY_CURRENT_USER, L"Software\\OrVaneMediaUtilTests \u00E9\u65E5\u672C", Extent::all},
    };
}

// "0" or "1" ahead of the path, for the root.
std::wstring nameOf(HKEY root, const std::wstring& path) {
    return (root == HKEY_LOCAL_MACHINE ? L"0" : L"1") + path;
}
HKEY rootOf(const std::wstring& name) {
    return name.front() == L'0' ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

std::optional<std::pair<std::uint32_t, std::wstring>> readValue(HKEY key, const wchar_t* name) {
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return {};
    std::vector<BYTE> data(size);
    if (RegQueryValueExW(key, name, nullptr, &type, data.data(), &size) != ERROR_SUCCESS) return {};
    data.resize(size);
    return std::pair{static_cast<std::uint32_t>(type), std::wstring(data.begin(), data.end())};
}

std::int64_t sizeOf(const std::filesystem::path& file) {
    std::error_code none;
    const auto size = std::filesystem::file_size(file, none);
    return none ? -1 : static_cast<std::int64_t>(size);
}

// The file is a list of texts, each behind its length in units.
void put(std::string& out, const std::wstring& text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    out.append(reinterpret_cast<const char*>(&length), sizeof(length));
    out.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}
// The texts up to the first that is not whole.
std::vector<std::wstring> allTexts(const std::string& in) {
    std::vector<std::wstring> texts;
    std::uint32_t length = 0;
    for (std::size_t at = 0; in.size() - at >= sizeof(length); at += length * sizeof(wchar_t)) {
        std::memcpy(&length, in.data() + at, sizeof(length));
        at += sizeof(length);
        if ((in.size() - at) / sizeof(wchar_t) < length) break;
        texts.emplace_back(length, L'\0');
        std::memcpy(texts.back().data(), in.data() + at, length * sizeof(wchar_t));
    }
    return texts;
}

}  // namespace

void MachineBackup::readKey(HKEY root, const std::wstring& path, bool content, Values& values) {
    UniqueRegKey key;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return;
    values[{nameOf(root, path), kKeyItself}] = {};
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
        if (const auto read = readValue(key.get(), value->c_str()))
            values[{nameOf(root, path), *value}] = *read;
    for (DWORD index = 0; const auto child = nextName(RegEnumKeyExW, index); ++index)
        readKey(root, path + L"\\" + *child, true, values);
}

MachineBackup::Values MachineBackup::readRegistry() {
    Values values;
    for (const auto& [root, path, extent, value] : places()) {
        if (extent != Extent::oneValue) {
            readKey(root, path, extent == Extent::all, values);
            continue;
        }
        UniqueRegKey key;
        RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put());
        if (const auto read = key ? readValue(key.get(), value) : std::nullopt)
            values[{nameOf(root, path), value}] = *read;
    }
    return values;
}

bool MachineBackup::save(const std::filesystem::path& file) {
    m_values = readRegistry();
    m_log = sharedLog();
    m_logSize = sizeOf(m_log);
    m_logFolderExisted = test::isFolder(m_log.parent_path());
    std::string out;
    for (const auto& text : {m_log.native(), std::to_wstring(m_logSize),
                             std::to_wstring(m_logFolderExisted), std::to_wstring(m_values.size())})
        put(out, text);
    for (const auto& [where, value] : m_values)
        for (const auto& text :
             {where.first, where.second, std::to_wstring(value.first), value.second})
            put(out, text);
    try {
        test::writeFile(file, out);
    } catch (const std::system_error&) {
        return false;
    }
    m_file = file;
    return true;
}

bool MachineBackup::load(const std::filesystem::path& file) {
    constexpr std::size_t kHead = 4, kEntry = 4;
    const auto texts = allTexts(test::readText(file));
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
    const Values now = readRegistry();
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
        note(name == kKeyItself ? RegDeleteTreeW(rootOf(key), key.c_str() + 1)
                                : RegDeleteKeyValueW(rootOf(key), key.c_str() + 1, name.c_str()),
             key);
    }
    for (const auto& [where, value] : m_values) {
        const auto& [key, name] = where;
        const auto found = now.find(where);
        if (found != now.end() && found->second == value) continue;
        UniqueRegKey opened;
        LSTATUS result = RegCreateKeyExW(rootOf(key), key.c_str() + 1, 0, nullptr, 0, KEY_SET_VALUE,
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
