#pragma once

// Checks the content of the music files, without the player and the plug-in.

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "check/run.h"

namespace orvane::check {

// Tags as pairs of the name in the file and the text, "-" for a missing tag.
using Tags = std::vector<std::pair<std::u16string, std::string>>;

// Compares the files in a folder with their expected content.
class FileChecks {
public:
    explicit FileChecks(std::filesystem::path folder) : m_folder(std::move(folder)) {}
    [[nodiscard]] bool tagsAre(const std::filesystem::path& track, const Tags& tags);
    [[nodiscard]] bool pictureIs(const std::filesystem::path& track,
                                 const std::filesystem::path& image);

    std::string problems;  // one line for each difference
    // The expected content, for checks with other programs. Each line has FILE, tab, the tag's name
    // or "picture", tab, the text or the image's file name.
    std::string expected;

private:
    bool compared(const std::filesystem::path& track, const std::string& what,
                  const std::string& wanted, const std::string& is);

    std::filesystem::path m_folder;
};

// The application's report of the cleaning: for each track, the cells by heading.
using CleaningReport = std::vector<std::map<std::string, std::string>>;
[[nodiscard]] CleaningReport readReport(const std::filesystem::path& file);

// Compares the report with the files in `music`, the original files, and the playlists that the
// player printed. Returns six results.
[[nodiscard]] std::vector<Tick> checkLibrary(const CleaningReport& report,
                                             const std::filesystem::path& music,
                                             const std::filesystem::path& originals,
                                             const std::string& playerOutput, FileChecks& files);

// Prints the library before and after, as read from the files.
void showLibrary(const CleaningReport& report, const std::filesystem::path& music,
                 const std::filesystem::path& originals, const Show& show);

}  // namespace orvane::check
