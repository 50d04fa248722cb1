#pragma once

#include <gmock/gmock.h>

#include "common/messages/plugin_methods.h"

namespace orvane::test {

// NOLINTBEGIN: the macros' own style
class MockPluginMethods : public IOrvanePluginMethods {
public:
    virtual ~MockPluginMethods() = default;

    using Text = const juce::String&;
    using List = const juce::StringArray&;
    using Map = juce::StringPairArray&;
    using ConstMap = const juce::StringPairArray&;

    MOCK_METHOD(bool, createSpecialPlaylistFolders, (), (override));
    MOCK_METHOD(bool, addToCleanedFolder, (Text, List), (override));
    MOCK_METHOD(bool, addToNotFoundFolder, (Text, List), (override));
    MOCK_METHOD(bool, addToDirtyFolder, (Text, List), (override));
    MOCK_METHOD(bool, nestedPlaylistsSupported, (), (override));
    MOCK_METHOD(int, getPlaylistCount, (Text), (override));
    MOCK_METHOD(bool, getPlaylistName, (Text, int, juce::String&), (override));
    MOCK_METHOD(bool, removePlaylist, (Text, Text), (override));
    MOCK_METHOD(int, getPlaylistTrackCount, (Text, Text), (override));
    MOCK_METHOD(bool, getPlaylistTrackPath, (Text, Text, int, juce::String&), (override));
    MOCK_METHOD(bool, removeTrackFromPlaylist, (Text, Text, Text), (override));
    MOCK_METHOD(bool, pause, (), (override));
    MOCK_METHOD(bool, stop, (), (override));
    MOCK_METHOD(bool, startCurrent, (), (override));
    MOCK_METHOD(bool, start, (Text), (override));
    MOCK_METHOD(bool, isPlaying, (), (override));
    MOCK_METHOD(bool, isPaused, (), (override));
    MOCK_METHOD(bool, isShufflePlay, (), (override));
    MOCK_METHOD(bool, isRepeatTrack, (), (override));
    MOCK_METHOD(bool, isRepeatAll, (), (override));
    MOCK_METHOD(bool, isInSpecialMode, (), (override));
    MOCK_METHOD(bool, supportsRandomTrackAccess, (), (override));
    MOCK_METHOD(bool, getCurrentMediaInfo, (Map), (override));
    MOCK_METHOD(bool, getMediaInfoFromPath, (Text, Map, Text), (override));
    MOCK_METHOD(bool, getMediaInfoFromIndex, (int, Map, Text), (override));
    MOCK_METHOD(bool, setMediaInfoToPath, (Text, ConstMap, Text, bool), (override));
    MOCK_METHOD(bool, setMediaInfoToIndex, (int, ConstMap, Text, bool), (override));
    MOCK_METHOD(int, getTrackCount, (), (override));
    MOCK_METHOD(void, close, (), (override));
    MOCK_METHOD(bool, sendSelectedTracks, (), (override));
    MOCK_METHOD(bool, disconnectFromApp, (), (override));
};
// NOLINTEND

}  // namespace orvane::test
