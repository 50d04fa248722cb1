#include "check/machine.h"

#include <vector>

#include "common/names/names.h"
#include "platform/handles.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

using standin::toUtf8;

constexpr DWORD kWindows11 = 22000;  // the build; its name in the registry is still the old one

template <typename Function>
Function systemFunction(const char* name) {
    return reinterpret_cast<Function>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

std::string systemValue(const wchar_t* name) {
    wchar_t text[256] = {};
    DWORD size = sizeof(text);
    RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", name,
                 RRF_RT_REG_SZ, nullptr, text, &size);
    return toUtf8(text);
}

}  // namespace

std::string windowsVersion() {
    RTL_OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    // The other calls tell an old program what it wants to hear.
    if (const auto ask = systemFunction<LONG(WINAPI*)(RTL_OSVERSIONINFOW*)>("RtlGetVersion"))
        ask(&version);
    BOOL on64 = FALSE;
    IsWow64Process(GetCurrentProcess(), &on64);
    wchar_t language[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(language, LOCALE_NAME_MAX_LENGTH);
    const auto wine = systemFunction<const char*(CDECL*)()>("wine_get_version");
    return systemValue(L"ProductName") + " " + systemValue(L"DisplayVersion") + ", " +
           std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) +
           "." + std::to_string(version.dwBuildNumber) +
           (version.dwBuildNumber >= kWindows11 ? " (Windows 11)" : "") +
           (on64 ? ", 64-bit" : ", 32-bit") + ", " + toUtf8(language) +
           (wine != nullptr ? std::string(", really Wine ") + wine() : "");
}

bool isWine() { return systemFunction<void*>("wine_get_version") != nullptr; }

bool hasAdministratorsRights() {
    BYTE group[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(group);
    BOOL member = FALSE;
    return CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, group, &size) &&
           CheckTokenMembership(nullptr, group, &member) && member;
}

bool orvaneRuns() {
    return static_cast<bool>(
        UniqueHandle(OpenMutexW(SYNCHRONIZE, FALSE, names::kRunningMutex.wide())));
}

HWND playerWindow() { return FindWindowW(L"WMPlayerApp", nullptr); }

std::filesystem::path sharedLog() {
    wchar_t folder[MAX_PATH] = {};
    DWORD size = sizeof(folder);
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kShellFolders, kCommonAppData, RRF_RT_REG_SZ, nullptr,
                     folder, &size) != ERROR_SUCCESS)
        return {};
    return std::filesystem::path(folder) / "OrVaneMedia" / "OrVane.log";
}

std::filesystem::path realPlayer() {
    wchar_t folder[MAX_PATH] = {};
    // In a 32-bit program: the folder of such programs.
    if (isWine() || GetEnvironmentVariableW(L"ProgramFiles", folder, MAX_PATH) == 0) return {};
    const auto player = std::filesystem::path(folder) / L"Windows Media Player" / L"wmplayer.exe";
    std::error_code ignored;
    return std::filesystem::exists(player, ignored) ? player : std::filesystem::path();
}

std::filesystem::path realFormatRuntime() {
    wchar_t folder[MAX_PATH] = {};
    if (isWine()) return {};
    if (GetSystemWow64DirectoryW(folder, MAX_PATH) == 0) GetSystemDirectoryW(folder, MAX_PATH);
    const auto runtime = std::filesystem::path(folder) / L"wmvcore.dll";
    std::error_code ignored;
    return std::filesystem::exists(runtime, ignored) ? runtime : std::filesystem::path();
}

std::string fileVersion(const std::filesystem::path& file) {
    const DWORD size = GetFileVersionInfoSizeW(file.c_str(), nullptr);
    std::vector<BYTE> data(size);
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    if (size == 0 || !GetFileVersionInfoW(file.c_str(), 0, size, data.data()) ||
        !VerQueryValueW(data.data(), L"\\", reinterpret_cast<void**>(&info), &length))
        return "unknown";
    std::string text;
    for (const DWORD part : {info->dwFileVersionMS, info->dwFileVersionLS})
        text += (text.empty() ? "" : ".") + std::to_string(HIWORD(part)) + "." +
                std::to_string(LOWORD(part));
    return text;
}

}  // namespace orvane::check
