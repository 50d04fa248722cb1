#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>
#include <vector>

#include "common/messages/orvane_message.h"
#include "tests/common/messages/mock_plugin_methods.h"
#include "tests/support/captured_log.h"

namespace orvane {
namespace {

using ::testing::_;
using ::testing::Invoke;
using ::testing::Return;
using ::testing::StrictMock;
using ::testing::Throw;
using ::testing::Truly;

using Parameters = std::vector<std::pair<juce::String, juce::String>>;

class Dispatch : public ::testing::Test {
protected:
    // The response's parameters as "key=value" lines; StrictMock fails every call not asked for.
    std::string run(const char* name, const Parameters& parameters = {}) {
        OrvaneCommand command(name);
        for (const auto& [key, value] : parameters) command.setValue(key, value);
        const OrvaneResponse response = command.executeCommand(&m_methods);
        EXPECT_EQ(response.getTagName(), "response");
        EXPECT_EQ(response.getName(), name);
        std::string lines;
        for (const auto& [key, value] : response.getParameters())
            lines += (key + "=" + value + "\n").toStdString();
        return lines;
    }

    test::CapturedLog m_log;
    StrictMock<test::MockPluginMethods> m_methods;
};

TEST_F(Dispatch, QuestionsAreAnsweredWithTheirResult) {
    for (const bool answer : {true, false}) {
        const std::string expected = answer ? "return_value=true\n" : "return_value=false\n";
#define ORVANE_ASK(name)                                     \
    EXPECT_CALL(m_methods, name()).WillOnce(Return(answer)); \
    EXPECT_EQ(run(#name), expected) << #name
        ORVANE_ASK(createSpecialPlaylistFolders);
        ORVANE_ASK(pause);
        ORVANE_ASK(stop);
        ORVANE_ASK(startCurrent);
        ORVANE_ASK(isPlaying);
        ORVANE_ASK(isPaused);
        ORVANE_ASK(isShufflePlay);
        ORVANE_ASK(isRepeatTrack);
        ORVANE_ASK(isRepeatAll);
        ORVANE_ASK(isInSpecialMode);
        ORVANE_ASK(supportsRandomTrackAccess);
        ORVANE_ASK(sendSelectedTracks);
#undef ORVANE_ASK
    }
    EXPECT_TRUE(
        m_log.holds("<7> OrvaneCommand::executeCommand: received request for selected tracks"));

    EXPECT_CALL(m_methods, close());
    EXPECT_EQ(run("close"), "return_value=true\n");
    EXPECT_CALL(m_methods, getTrackCount()).WillOnce(Return(3));
    EXPECT_EQ(run("getTrackCount"), "trackCount=3\nreturn_value=true\n");
    EXPECT_CALL(m_methods, start(juce::String("C:\\a.wma"))).WillOnce(Return(true));
    EXPECT_EQ(run("start", {{"trackPath", "C:\\a.wma"}}), "return_value=true\n");
}

TEST_F(Dispatch, FoldersGetTheListUpToItsFirstGap) {
    const juce::StringArray two{"a", "b"};
    const Parameters parameters{
        {"playlistName", "p"}, {"trackPaths0", "a"}, {"TRACKPATHS1", "b"}, {"trackPaths3", "d"}};
    EXPECT_CALL(m_methods, addToDirtyFolder(juce::String("p"), two)).WillOnce(Return(true));
    EXPECT_EQ(run("addToDirtyFolder", parameters), "return_value=true\n");
    EXPECT_CALL(m_methods, addToCleanedFolder(juce::String("p"), two)).WillOnce(Return(false));
    EXPECT_EQ(run("addToCleanedFolder", parameters), "return_value=false\n");
    EXPECT_CALL(m_methods, addToNotFoundFolder(juce::String(), juce::StringArray()))
        .WillOnce(Return(true));
    EXPECT_EQ(run("addToNotFoundFolder"), "return_value=true\n");
}

TEST_F(Dispatch, MetadataComesBackOnlyOnSuccess) {
    const auto fill = [](juce::StringPairArray& map) {
        EXPECT_EQ(map.size(), 0);
        map.set("TrackTitle", "t");
        map.set("Year", "");
    };
    EXPECT_CALL(m_methods, getCurrentMediaInfo(_)).WillOnce(Invoke([&](auto& map) {
        fill(map);
        return true;
    }));
    EXPECT_EQ(run("getCurrentMediaInfo"),
              "return_value=true\nmetadataOut.TrackTitle=t\nmetadataOut.Year=\n");
    EXPECT_CALL(m_methods, getMediaInfoFromPath(juce::String("p"), _, juce::String("art")))
        .WillOnce(Invoke([&](const auto&, auto& map, const auto&) {
            fill(map);
            return false;
        }));
    EXPECT_EQ(run("getMediaInfoFromPath", {{"trackPath", "p"}, {"albumArtPath", "art"}}),
              "return_value=false\n");
    EXPECT_CALL(m_methods, getMediaInfoFromIndex(7, _, juce::String())).WillOnce(Return(true));
    EXPECT_EQ(run("getMediaInfoFromIndex", {{"trackIndex", "7"}}), "return_value=true\n");
}

TEST_F(Dispatch, NumbersAreReadAsTheCLibraryDoes) {
    for (const auto& [text, number] : std::vector<std::pair<const char*, int>>{
             {"abc", 0}, {" 12x", 12}, {"", 0}, {"\t-3", -3}, {"+4", 4}, {"0x10", 0}, {"1 2", 1}}) {
        EXPECT_CALL(m_methods, getMediaInfoFromIndex(number, _, _)).WillOnce(Return(false));
        run("getMediaInfoFromIndex", {{"trackIndex", text}});
    }
    EXPECT_CALL(m_methods, getMediaInfoFromIndex(_, _, _)).WillOnce(Return(false));
    run("getMediaInfoFromIndex", {{"trackIndex", "99999999999999999999"}});
}

TEST_F(Dispatch, SettingNeedsSomethingToSet) {
    EXPECT_EQ(run("setMediaInfoToPath", {{"trackPath", "p"}, {"albumArtPath", ""}}), "");
    EXPECT_EQ(run("setMediaInfoToIndex", {{"metadata.", "x"}, {"emptyOk", "yes"}}), "");

    const auto holdsTitle = Truly([](const juce::StringPairArray& map) {
        return map.size() == 1 && map["tracktitle"] == "t";
    });
    EXPECT_CALL(m_methods, setMediaInfoToPath(juce::String("p"), holdsTitle, juce::String(), true))
        .WillOnce(Return(true));
    EXPECT_EQ(run("setMediaInfoToPath",
                  {{"trackPath", "p"}, {"emptyOk", "YES"}, {"metadata.TrackTitle", "t"}}),
              "return_value=true\n");
    const auto isEmpty = Truly([](const juce::StringPairArray& map) { return map.size() == 0; });
    for (const char* no : {"1", "true", "", "yes "}) {
        EXPECT_CALL(m_methods, setMediaInfoToIndex(2, isEmpty, juce::String("art"), false))
            .WillOnce(Return(false));
        EXPECT_EQ(run("setMediaInfoToIndex",
                      {{"trackIndex", "2"}, {"albumArtPath", "art"}, {"emptyOk", no}}),
                  "return_value=false\n");
    }
}

TEST_F(Dispatch, WhatItDoesNotKnowCallsNothing) {
    for (const char* name :
         {"", "Pause", "pause ", "a", "zzz", "getPlaylistCount", "getPlaylistName",
          "removePlaylist", "getPlaylistTrackCount", "getPlaylistTrackPath",
          "removeTrackFromPlaylist", "nestedPlaylistsSupported", "disconnectFromApp"})
        EXPECT_EQ(run(name), "return_value=false\n") << name;
    EXPECT_FALSE(OrvaneCommand("pause").executeCommand(nullptr).getReturnValue());
}

TEST_F(Dispatch, AnOperationThatThrowsIsAnsweredWithFalse) {
    EXPECT_CALL(m_methods, getTrackCount()).WillOnce(Throw(std::bad_alloc()));
    EXPECT_EQ(run("getTrackCount"), "return_value=false\n");
    EXPECT_CALL(m_methods, pause()).WillOnce(Throw(1));
    EXPECT_EQ(run("pause"), "return_value=false\n");
}

}  // namespace
}  // namespace orvane
