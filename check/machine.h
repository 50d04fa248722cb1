#pragma once

#include <windows.h>

#include <filesystem>
#include <string>

namespace orvane::check {

// What the check finds on this machine. Any thread.
[[nodiscard]] std::string windowsVersion();  // in words
[[nodiscard]] bool isWine();
[[nodiscard]] bool hasAdministratorsRights();
// OrVane is running: its pipes and mutex exist once per user.
[[nodiscard]] bool orvaneRuns();
// The player's main window, null when no player is running.
[[nodiscard]] HWND playerWindow();

// Names the folder of all users' data: a key of the local machine, and a value of it.
constexpr const wchar_t* kShellFolders =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr const wchar_t* kCommonAppData = L"Common AppData";
// OrVane's log in that folder, whether it is there or not; empty when the system names no folder.
[[nodiscard]] std::filesystem::path sharedLog();

// The 32-bit ones; empty when there is none. Wine's, which only look like them, do not count.
[[nodiscard]] std::filesystem::path realPlayer();
[[nodiscard]] std::filesystem::path realFormatRuntime();
// "12.0.19041.1", or "unknown".
[[nodiscard]] std::string fileVersion(const std::filesystem::path& file);

}  // namespace orvane::check
