#pragma once

// What the music files themselves hold, read without the player and without the plug-in.

#include <filesystem>
#include <string>
#include <vector>

#include "check/run.h"

namespace orvane::check {

// The text of a tag by the name that it has in a file; "-" when there is none.
[[nodiscard]] std::string tagOf(const std::filesystem::path& track, std::u16string_view name);

// What a tag must be, "-" for none.
struct Tag {
    std::u16string_view name;  // in the file
    std::string text;
};

// Compares files with what they must hold.
class FileChecks {
public:
    // `expected` names files from `folder` on.
    explicit FileChecks(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    [[nodiscard]] bool tagsAre(const std::filesystem::path& track, const std::vector<Tag>& tags);
    [[nodiscard]] bool pictureIs(const std::filesystem::path& track,
                                 const std::filesystem::path& image);

    std::string problems;  // a line for each thing that is not so
    // All that was compared, for other programs that read such files: lines of FILE, tab, the tag's
    // name or "picture", tab, its text or the name of the image's file.
    std::string expected;

private:
    void note(const std::filesystem::path& track, const std::string& what,
              const std::string& wanted);

    std::filesystem::path m_folder;
};

// A line of the application's report of the cleaning (tab-separated; "-" for nothing).
struct ReportRow {
    std::string path, verdict, playlist;
    std::vector<Tag> tags;  // as the application read them back
    std::string artBefore, art, artBytes, artFrom;
    [[nodiscard]] std::filesystem::path name() const;  // of the track's file
};
[[nodiscard]] std::vector<ReportRow> readReport(const std::filesystem::path& report);

// Compares the report with the files in `music`, their originals, and the playlists that the player
// printed. Answers six ticks.
[[nodiscard]] std::vector<Tick> checkLibrary(const std::vector<ReportRow>& report,
                                             const std::filesystem::path& music,
                                             const std::filesystem::path& originals,
                                             const std::string& playerOutput, FileChecks& files);

// The library before and after, as the files have it: five lines for each track.
void showTable(const std::vector<ReportRow>& report, const std::filesystem::path& music,
               const std::filesystem::path& originals, const Show& show);

}  // namespace orvane::check
