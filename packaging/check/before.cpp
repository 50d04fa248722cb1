#include "packaging/check/before.h"

#include <cstring>
#include <fstream>
#include <optional>

#include "packaging/check/child.h"
#include "platform/handles.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

constexpr const wchar_t* kKeyItself = L"\x01";
constexpr const wchar_t* kShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const wchar_t* kAppData = L"Common AppData";

// A key with all below it, one that is only there or not, or one value of a key that is not ours.
enum class Extent { all, onlyItself, oneValue };
struct Place {
    HKEY root;
    const wchar_t* path;
    Extent extent;
    const wchar_t* value = nullptr;
};
const Place kPlaces[] = {
    {HKEY_LOCAL_MACHINE, L"Software\\OrVaneMedia", Extent::all},
    {HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\MediaPlayer", Extent::onlyItself},
    {HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\MediaPlayer\\UIPlugins", Extent::all},
    // The plug-in's class, as plugin/wmp_plugin.cpp names it.
    {HKEY_LOCAL_MACHINE, L"Software\\Classes\\CLSID\\{9893A0E1-EE98-448F-81EE-D2D15666215E}",
     Extent::all},
    // What one of the tests makes beside it.
    {HKEY_LOCAL_MACHINE, L"Software\\Classes\\CLSID\\{neighbour}", Extent::all},
    {HKEY_LOCAL_MACHINE, kShellFolders, Extent::oneValue, kAppData},
    {HKEY_LOCAL_MACHINE, kShellFolders, Extent::oneValue, L"Common AppData before OrVane's tests"},
    {HKEY_CURRENT_USER, L"Software\\Microsoft\\MediaPlayer", Extent::onlyItself},
    {HKEY_CURRENT_USER, L"Software\\Microsoft\\MediaPlayer\\UIPlugins", Extent::all},
    {HKEY_CURRENT_USER, L"Software\\OrVaneMediaUtilTests \u00E9\u65E5\u672C", Extent::all},
};

// "0" or "1" ahead of the path, for the root.
std::wstring nameOf(HKEY root, const std::wstring& path) {
    return (root == HKEY_LOCAL_MACHINE ? L"0" : L"1") + path;
}
HKEY rootOf(const std::wstring& name) {
    return name.front() == L'0' ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

std::optional<std::pair<DWORD, std::string>> readValue(HKEY key, const wchar_t* name) {
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return {};
    std::string data(size, '\0');
    if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size) !=
        ERROR_SUCCESS)
        return {};
    data.resize(size);
    return std::pair{type, data};
}

std::wstring logFile() {
    wchar_t folder[MAX_PATH] = {};
    DWORD size = sizeof(folder);
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kShellFolders, kAppData, RRF_RT_REG_SZ, nullptr, folder,
                     &size) != ERROR_SUCCESS)
        return {};
    return std::wstring(folder) + L"\\OrVaneMedia\\OrVane.log";
}

std::int64_t sizeOf(const std::wstring& file) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data)) return -1;
    return static_cast<std::int64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
}

std::wstring folderOf(const std::wstring& file) { return file.substr(0, file.rfind(L'\\')); }

// The file's parts, each behind its length.
void put(std::string& out, const void* data, std::size_t size) {
    const auto length = static_cast<std::uint32_t>(size);
    out.append(reinterpret_cast<const char*>(&length), sizeof(length));
    out.append(static_cast<const char*>(data), size);
}
void put(std::string& out, const std::wstring& text) {
    put(out, text.data(), text.size() * sizeof(wchar_t));
}
std::string get(const std::string& in, std::size_t& at) {
    std::uint32_t length = 0;
    if (in.size() - at < sizeof(length)) return at = in.size(), std::string();
    std::memcpy(&length, in.data() + at, sizeof(length));
    at += sizeof(length);
    std::string part = in.substr(at, length);
    at += part.size();
    return part;
}
std::wstring getText(const std::string& in, std::size_t& at) {
    const std::string part = get(in, at);
    std::wstring text(part.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), part.data(), text.size() * sizeof(wchar_t));
    return text;
}
template <typename Number>
Number getNumber(const std::string& in, std::size_t& at) {
    const std::string part = get(in, at);
    Number number{};
    if (part.size() == sizeof(number)) std::memcpy(&number, part.data(), sizeof(number));
    return number;
}

}  // namespace

void Before::lookAt(HKEY root, const std::wstring& path, bool below, Values& values) {
    UniqueRegKey key;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return;
    values[{nameOf(root, path), kKeyItself}] = {};
    if (!below) return;
    std::wstring name(16384, L'\0');
    for (DWORD index = 0;; ++index) {
        DWORD length = static_cast<DWORD>(name.size());
        if (RegEnumValueW(key.get(), index, name.data(), &length, nullptr, nullptr, nullptr,
                          nullptr) != ERROR_SUCCESS)
            break;
        const std::wstring value = name.substr(0, length);
        if (const auto read = readValue(key.get(), value.c_str()))
            values[{nameOf(root, path), value}] = {read->first, read->second};
    }
    for (DWORD index = 0;; ++index) {
        DWORD length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(key.get(), index, name.data(), &length, nullptr, nullptr, nullptr,
                          nullptr) != ERROR_SUCCESS)
            break;
        lookAt(root, path + L"\\" + name.substr(0, length), true, values);
    }
}

Before::Values Before::look() {
    Values values;
    for (const Place& place : kPlaces) {
        if (place.extent != Extent::oneValue) {
            lookAt(place.root, place.path, place.extent == Extent::all, values);
            continue;
        }
        UniqueRegKey key;
        RegOpenKeyExW(place.root, place.path, 0, KEY_READ, key.put());
        if (const auto read = key ? readValue(key.get(), place.value) : std::nullopt)
            values[{nameOf(place.root, place.path), place.value}] = {read->first, read->second};
    }
    return values;
}

bool Before::remember(const std::filesystem::path& file) {
    m_file = file;
    m_values = look();
    m_log = logFile();
    m_logSize = m_log.empty() ? -1 : sizeOf(m_log);
    m_logFolderExisted =
        m_log.empty() || GetFileAttributesW(folderOf(m_log).c_str()) != INVALID_FILE_ATTRIBUTES;
    std::string out;
    put(out, m_log);
    put(out, &m_logSize, sizeof(m_logSize));
    put(out, &m_logFolderExisted, sizeof(m_logFolderExisted));
    for (const auto& [where, value] : m_values) {
        put(out, where.first);
        put(out, where.second);
        put(out, &value.type, sizeof(value.type));
        put(out, value.data.data(), value.data.size());
    }
    std::ofstream stream(file, std::ios::binary);
    stream.write(out.data(), static_cast<std::streamsize>(out.size()));
    stream.close();
    return stream.good();
}

bool Before::recall(const std::filesystem::path& file) {
    if (!std::filesystem::exists(file)) return false;
    m_file = file;
    const std::string in = contentOf(file);
    std::size_t at = 0;
    m_log = getText(in, at);
    m_logSize = getNumber<std::int64_t>(in, at);
    m_logFolderExisted = getNumber<std::uint32_t>(in, at);
    while (at < in.size()) {
        const std::wstring key = getText(in, at);
        const std::wstring name = getText(in, at);
        const auto type = getNumber<std::uint32_t>(in, at);
        m_values[{key, name}] = {type, get(in, at)};
    }
    return true;
}

void Before::putBackRegistry(std::string& problems) {
    const Values now = look();
    const auto note = [&](LSTATUS result, const std::wstring& key) {
        if (result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND) return;
        problems += "the registry key " + standin::toUtf8(key.substr(1)) + ": error " +
                    std::to_string(result) + "\n";
    };
    // What is too much goes, keys with all that is in them, before what is missing comes.
    for (const auto& [where, value] : now) {
        const auto& [key, name] = where;
        if (m_values.contains(where)) continue;
        if (name == kKeyItself) {
            note(RegDeleteTreeW(rootOf(key), key.c_str() + 1), key);
        } else {
            note(RegDeleteKeyValueW(rootOf(key), key.c_str() + 1, name.c_str()), key);
        }
    }
    for (const auto& [where, value] : m_values) {
        const auto& [key, name] = where;
        const auto found = now.find(where);
        if (found != now.end() && found->second == value) continue;
        UniqueRegKey opened;
        LSTATUS result = RegCreateKeyExW(rootOf(key), key.c_str() + 1, 0, nullptr, 0, KEY_SET_VALUE,
                                         nullptr, opened.put(), nullptr);
        if (result == ERROR_SUCCESS && name != kKeyItself)
            result = RegSetValueExW(opened.get(), name.c_str(), 0, value.type,
                                    reinterpret_cast<const BYTE*>(value.data.data()),
                                    static_cast<DWORD>(value.data.size()));
        note(result, key);
    }
}

// What was added since goes; whoever has it open meanwhile keeps it whole.
void Before::putBackLog(std::string& problems) const {
    if (m_log.empty() || sizeOf(m_log) <= m_logSize) return;
    bool good = false;
    if (m_logSize < 0) {
        good = DeleteFileW(m_log.c_str()) != 0;
        if (!m_logFolderExisted) RemoveDirectoryW(folderOf(m_log).c_str());
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

std::string Before::putBack() {
    std::string problems;
    if (m_file.empty()) return problems;
    putBackRegistry(problems);
    putBackLog(problems);
    if (problems.empty() && look() != m_values) problems = "the registry is not as it was\n";
    std::error_code ignored;
    if (problems.empty()) std::filesystem::remove(m_file, ignored);
    return problems;
}

}  // namespace orvane::check
