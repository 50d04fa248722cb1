#pragma once

// What the music files themselves hold, read without the player and without the plug-in.

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "check/run.h"

namespace orvane::check {

// A tag by the name that it has in a file, and its text, "-" for none.
using Tags = std::vector<std::pair<std::u16string, std::string>>;

// Compares files below one folder with what they must hold.
class FileChecks {
public:
    explicit FileChecks(std::filesystem::path folder) : m_folder(std::move(folder)) {}
    [[nodiscard]] bool tagsAre(const std::filesystem::path& track, const Tags& tags);
    [[nodiscard]] bool pictureIs(const std::filesystem::path& track,
                                 const std::filesystem::path& image);

    std::string problems;  // a line for each thing that is not so
    // All that was compared, for other programs that read such files: lines of FILE, tab, the tag's
    // name or "picture", tab, its text or the name of the image's file.
    std::string expected;

private:
    bool compared(const std::filesystem::path& track, const std::string& what,
                  const std::string& wanted, const std::string& is);

    std::filesystem::path m_folder;
};

// The application's report of the cleaning: for each track the cells by their headings.
using CleaningReport = std::vector<std::map<std::string, std::string>>;
[[nodiscard]] CleaningReport readReport(const std::filesystem::path& file);

// Compares the report with the files in `music`, their originals, and the playlists that the player
// printed. Answers six ticks.
[[nodiscard]] std::vector<Tick> checkLibrary(const CleaningReport& report,
                                             const std::filesystem::path& music,
                                             const std::filesystem::path& originals,
                                             const std::string& playerOutput, FileChecks& files);

// The library before and after, as the files have it.
void showLibrary(const CleaningReport& report, const std::filesystem::path& music,
                 const std::filesystem::path& originals, const Show& show);

}  // namespace orvane::check
