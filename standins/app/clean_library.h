#pragma once

// The application's main job: every track of the player's library is read, decided about,
// written, read back and filed under one of the three special playlists.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "standins/app/cleaning_rules.h"
#include "standins/app/message.h"

namespace orvane::standin::app {

struct CleanOptions {
    std::filesystem::path cover;   // an image, or a folder of them; empty: leave cover art alone
    std::filesystem::path report;  // empty: none is written
    std::string playlistName;      // what follows "OrVane:Cleaned" in the playlist's name
};

struct Art {
    std::string type;  // "" when there is none
    std::size_t bytes = 0;
};

struct TrackReport {
    unsigned index = 0;
    std::string path;
    Verdict verdict = Verdict::notFound;
    std::string playlist;
    Parameters before, after;  // the tags as read, and as read back
    Art artBefore, artAfter;
    std::string artFrom;                // the image that was put in
    std::vector<std::string> problems;  // what did not come out as wanted
};

struct CleanResult {
    std::vector<TrackReport> tracks;
    std::string error;  // why the job could not run or finish; "" when it did
    [[nodiscard]] std::size_t troubled() const;  // tracks with problems
};

// Sends one command and waits for its response; none when there is no response.
using Ask = std::function<std::optional<Message>(const std::string& command, const Parameters&)>;
using Tell = std::function<void(const std::string& line)>;

CleanResult cleanLibrary(const CleanOptions& options, const Ask& ask, const Tell& tell);

// The report's text: a heading and a line for each track, tabs between, "-" for nothing.
std::string reportTable(const CleanResult& result);

// UTF-8 to a path and back, whatever the system's own code page is.
std::filesystem::path pathFrom(const std::string& utf8);
std::string textOf(const std::filesystem::path& path);

// A file's bytes, or none when it cannot be opened.
std::optional<std::string> contentOf(const std::filesystem::path& path);

}  // namespace orvane::standin::app
