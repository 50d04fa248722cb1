#include "check/machine.h"

#include <shlobj.h>

#include <vector>

#include "common/names/names.h"
#include "platform/handles.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

std::string systemValue(const wchar_t* name) {
    wchar_t text[256] = {};
    DWORD size = sizeof(text);
    RegGetValueW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", name,
                 RRF_RT_REG_SZ, nullptr, text, &size);
    return standin::toUtf8(text);
}

std::filesystem::path realFile(const std::filesystem::path& file) {
    std::error_code ignored;
    return !isWine() && std::filesystem::exists(file, ignored) ? file : std::filesystem::path();
}

}  // namespace

std::string windowsVersion() {
    BOOL on64 = FALSE;
    IsWow64Process(GetCurrentProcess(), &on64);
    wchar_t language[LOCALE_NAME_MAX_LENGTH] = {};
    GetUserDefaultLocaleName(language, LOCALE_NAME_MAX_LENGTH);
    // The product's name is that of Windows 10 still in Windows 11: build 22000 and above.
    return systemValue(L"ProductName") + " " + systemValue(L"DisplayVersion") + ", build " +
           systemValue(L"CurrentBuildNumber") + (on64 ? ", 64-bit, " : ", 32-bit, ") +
           standin::toUtf8(language) + (isWine() ? ", really Wine" : "");
}

bool isWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

bool hasAdministratorsRights() { return IsUserAnAdmin() != FALSE; }

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
    GetEnvironmentVariableW(L"ProgramFiles", folder, MAX_PATH);
    return realFile(std::filesystem::path(folder) / L"Windows Media Player" / L"wmplayer.exe");
}

std::filesystem::path realFormatRuntime() {
    wchar_t folder[MAX_PATH] = {};
    if (GetSystemWow64DirectoryW(folder, MAX_PATH) == 0) GetSystemDirectoryW(folder, MAX_PATH);
    return realFile(std::filesystem::path(folder) / L"wmvcore.dll");
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
