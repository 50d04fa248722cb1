#pragma once

// The application's main job: every track of the player's library is read, decided about,
// written, read back and filed under one of the three special playlists.

#include <functional>
#include <vector>

#include "standins/app/arrivals.h"
#include "standins/app/cleaning_rules.h"

namespace orvane::standin::app {

struct CleanOptions {
    juce::File cover;     // an image, or a folder of them; none: leave cover art alone
    juce::File report;    // none: no report is written
    String playlistName;  // what follows "OrVane:Cleaned" in the playlist's name
};

// A track's tags and cover art, before or after the cleaning.
struct TrackState {
    StringPairArray tags;
    String artType;  // "" when there is none
    std::size_t artBytes = 0;
};

struct TrackReport {
    int index = 0;
    String path;
    Verdict verdict = Verdict::notFound;
    String playlist;
    TrackState before, after;  // as read, and as read back
    String artFrom;            // the image that was put in
    StringArray problems;      // what did not come out as wanted
};

struct CleanResult {
    std::vector<TrackReport> tracks;
    String error;                        // why the job could not run or finish; "" when it did
    [[nodiscard]] int troubled() const;  // tracks with problems
};

// Sends one command and waits for its response; null when there is none.
using Ask = std::function<MessagePtr(const OrvaneCommand& command)>;
using Tell = std::function<void(const String& line)>;

// The report is a heading and a line for each track, tabs between, "-" for nothing.
CleanResult cleanLibrary(const CleanOptions& options, const Ask& ask, const Tell& tell);

}  // namespace orvane::standin::app
