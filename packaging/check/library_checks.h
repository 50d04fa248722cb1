#pragma once

// What the music files themselves say, read without the player and without the plug-in.

#include <filesystem>
#include <string>
#include <vector>

#include "packaging/check/demo.h"

namespace orvane::check {

// The text of a tag by the name that it has in a file; "-" when there is none.
[[nodiscard]] std::string tagOf(const std::filesystem::path& track, std::u16string_view name);

// Holds the application's report of the cleaning (tab-separated) against the files in `music`,
// their originals, and the playlists that the player printed. Adds six ticks, and to `problems` a
// line for each thing that is not so.
void checkLibrary(const std::filesystem::path& report, const std::filesystem::path& music,
                  const std::filesystem::path& originals, const std::string& playerOutput,
                  std::vector<Tick>& ticks, std::string& problems);

}  // namespace orvane::check
