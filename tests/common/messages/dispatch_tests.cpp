#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>
#include <vector>

#include "common/messages/orvane_message.h"
#include "harness/recording_methods.h"
#include "tests/support/captured_log.h"

namespace orvane {
namespace {

using Parameters = std::vector<std::pair<juce::String, juce::String>>;
using test::RecordingMethods;

// The response's parameters, each as "key=value;".
std::string responseTo(RecordingMethods& methods, const char* name,
                       const Parameters& parameters = {}) {
    OrvaneCommand command(name);
    for (const auto& [key, value] : parameters) command.setValue(key, value);
    methods.lastCall = "none";
    const OrvaneResponse response = command.executeCommand(&methods);
    EXPECT_EQ(response.getTagName(), "response");
    EXPECT_EQ(response.getName(), name);
    std::string lines;
    for (const auto& [key, value] : response.getParameters())
        lines += (key + "=" + value + ";").toStdString();
    return lines;
}

TEST(Dispatch, EachCommandCallsItsOperationAndIsAnswered) {
    struct Row {
        const char* command;
        Parameters parameters;
        const char* call;
        const char* whenTrue = "return_value=true;";
        const char* whenFalse = "return_value=false;";
    };
    const char* const none = "none";
    const char* const no = "return_value=false;";
    const char* const closed = "return_value=true;";
    const char* const counted = "trackCount=3;return_value=true;";
    const char* const withMap = "return_value=true;metadataOut.TrackTitle=t;metadataOut.Year=;";
    const Parameters list{
        {"playlistName", "p"}, {"trackPaths0", "a"}, {"TRACKPATHS1", "b"}, {"trackPaths3", "d"}};
    const auto index = [](const char* text) { return Parameters{{"trackIndex", text}}; };
    const auto emptyOk = [](const char* text) {
        return Parameters{{"trackIndex", "2"}, {"albumArtPath", "art"}, {"emptyOk", text}};
    };
    const auto write = [](const char* text) {
        return Parameters{{"trackIndex", text}, {"metadata.Year", "1999"}};
    };
    const std::vector<Row> rows{
        {"createSpecialPlaylistFolders", {}, "createSpecialPlaylistFolders()"},
        {"pause", {}, "pause()"},
        {"stop", {}, "stop()"},
        {"startCurrent", {}, "startCurrent()"},
        {"start", {{"trackPath", "C:\\a.wma"}}, "start(C:\\a.wma)"},
        {"isPlaying", {}, "isPlaying()"},
        {"isPaused", {}, "isPaused()"},
        {"isShufflePlay", {}, "isShufflePlay()"},
        {"isRepeatTrack", {}, "isRepeatTrack()"},
        {"isRepeatAll", {}, "isRepeatAll()"},
        {"isInSpecialMode", {}, "isInSpecialMode()"},
        {"supportsRandomTrackAccess", {}, "supportsRandomTrackAccess()"},
        {"sendSelectedTracks", {}, "sendSelectedTracks()"},
        {"close", {}, "close()", closed, closed},
        {"getTrackCount", {}, "getTrackCount()", counted, "trackCount=-1;return_value=true;"},
        // A list ends at its first gap.
        {"addToDirtyFolder", list, "addToDirtyFolder(p, a|b)"},
        {"addToCleanedFolder", list, "addToCleanedFolder(p, a|b)"},
        {"addToNotFoundFolder", {}, "addToNotFoundFolder(, )"},
        {"getCurrentMediaInfo", {}, "getCurrentMediaInfo()", withMap},
        {"getMediaInfoFromPath",
         {{"trackPath", "p"}, {"albumArtPath", "art"}},
         "getMediaInfoFromPath(p, art)",
         withMap},
        // Numbers as the C library reads them.
        {"getMediaInfoFromIndex", index("7"), "getMediaInfoFromIndex(7, )", withMap},
        {"getMediaInfoFromIndex", index("abc"), "getMediaInfoFromIndex(0, )", withMap},
        {"getMediaInfoFromIndex", index(" 12x"), "getMediaInfoFromIndex(12, )", withMap},
        {"getMediaInfoFromIndex", index("\t-3"), "getMediaInfoFromIndex(-3, )", withMap},
        {"getMediaInfoFromIndex", index("+4"), "getMediaInfoFromIndex(4, )", withMap},
        {"getMediaInfoFromIndex", index("0x10"), "getMediaInfoFromIndex(0, )", withMap},
        {"getMediaInfoFromIndex", {}, "getMediaInfoFromIndex(0, )", withMap},
        // Setting needs something to set; "emptyOk" is "yes" and nothing else.
        {"setMediaInfoToPath", {{"trackPath", "p"}, {"albumArtPath", ""}}, none, "", ""},
        {"setMediaInfoToIndex", {{"metadata.", "x"}, {"emptyOk", "yes"}}, none, "", ""},
        {"setMediaInfoToPath",
         {{"trackPath", "p"}, {"emptyOk", "YES"}, {"metadata.TrackTitle", "t"}},
         "setMediaInfoToPath(p, TrackTitle=t, , yes)"},
        {"setMediaInfoToIndex", emptyOk("1"), "setMediaInfoToIndex(2, , art, no)"},
        {"setMediaInfoToIndex", emptyOk("true"), "setMediaInfoToIndex(2, , art, no)"},
        {"setMediaInfoToIndex", emptyOk("yes "), "setMediaInfoToIndex(2, , art, no)"},
        {"setMediaInfoToIndex", emptyOk("yes"), "setMediaInfoToIndex(2, , art, yes)"},
        // Writing takes a whole number only: 0 would be a track.
        {"setMediaInfoToIndex", write("\t-3"), "setMediaInfoToIndex(-3, Year=1999, , no)"},
        {"setMediaInfoToIndex", write("0"), "setMediaInfoToIndex(0, Year=1999, , no)"},
        {"setMediaInfoToIndex", {{"metadata.Year", "1999"}}, none, no},
        {"setMediaInfoToIndex", write(""), none, no},
        {"setMediaInfoToIndex", write("abc"), none, no},
        {"setMediaInfoToIndex", write("-"), none, no},
        {"setMediaInfoToIndex", write("12x"), none, no},
        {"setMediaInfoToIndex", write("0x10"), none, no},
        // What it does not know, or does not route, calls nothing.
        {"", {}, none, no},
        {"Pause", {}, none, no},
        {"pause ", {}, none, no},
        {"zzz", {}, none, no},
        {"nestedPlaylistsSupported", {}, none, no},
        {"getPlaylistCount", {}, none, no},
        {"getPlaylistName", {}, none, no},
        {"removePlaylist", {}, none, no},
        {"getPlaylistTrackCount", {}, none, no},
        {"getPlaylistTrackPath", {}, none, no},
        {"removeTrackFromPlaylist", {}, none, no},
        {"disconnectFromApp", {}, none, no},
    };
    test::CapturedLog log;
    RecordingMethods methods;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.command);
        for (const bool answer : {true, false}) {
            methods.answer = answer;
            EXPECT_EQ(responseTo(methods, row.command, row.parameters),
                      answer ? row.whenTrue : row.whenFalse);
            EXPECT_EQ(methods.lastCall, row.call);
        }
    }
    EXPECT_TRUE(
        log.holds("<7> OrvaneCommand::executeCommand: received request for selected tracks"));
    responseTo(methods, "getMediaInfoFromIndex", index("99999999999999999999"));  // any number
    EXPECT_FALSE(OrvaneCommand("pause").executeCommand(nullptr).getReturnValue());
}

TEST(Dispatch, AnOperationThatThrowsIsAnsweredWithFalse) {
    RecordingMethods methods;
    methods.onCall = [](const std::string&) { throw std::bad_alloc(); };
    EXPECT_EQ(responseTo(methods, "getTrackCount"), "return_value=false;");
    methods.onCall = [](const std::string&) { throw 1; };
    EXPECT_EQ(responseTo(methods, "pause"), "return_value=false;");
}

}  // namespace
}  // namespace orvane
