#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace orvane::check {

// Queries about this machine. Any thread.
[[nodiscard]] std::string windowsVersion();  // in words
[[nodiscard]] bool isWine();
[[nodiscard]] bool hasAdministratorsRights();
// Whether OrVane is running. A check cannot run beside it, because its pipes and mutex have fixed
// names.
[[nodiscard]] bool orvaneRuns();
// The player's main window, null when no player is running.
[[nodiscard]] HWND playerWindow();

// The key below HKEY_LOCAL_MACHINE and its value that name the folder of all users' data.
constexpr const wchar_t* kShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const wchar_t* kCommonAppData = L"Common AppData";
// The path of OrVane's log, which may not exist; empty when the registry names no folder.
[[nodiscard]] std::filesystem::path sharedLog();

// The paths of the 32-bit player and Format runtime; empty when there is none. Wine's substitutes
// do not count.
[[nodiscard]] std::filesystem::path realPlayer();
[[nodiscard]] std::filesystem::path realFormatRuntime();
// "12.0.19041.1", or "unknown".
[[nodiscard]] std::string fileVersion(const std::filesystem::path& file);

}  // namespace orvane::check
