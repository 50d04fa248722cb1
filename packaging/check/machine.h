#pragma once

#include <filesystem>
#include <string>

namespace orvane::check {

// What the check finds on this machine. Any thread.
[[nodiscard]] std::string windowsVersion();  // in words
[[nodiscard]] bool isWine();
[[nodiscard]] bool hasAdministratorsRights();
// OrVane or the player is running: their pipes, window and mutex exist once per user.
[[nodiscard]] bool orvaneRuns();
[[nodiscard]] bool playerRuns();

// The 32-bit ones; empty when there is none. Wine's, which only look like them, do not count.
[[nodiscard]] std::filesystem::path realPlayer();
[[nodiscard]] std::filesystem::path realFormatRuntime();
// "12.0.19041.1", or "unknown".
[[nodiscard]] std::string fileVersion(const std::filesystem::path& file);

}  // namespace orvane::check
