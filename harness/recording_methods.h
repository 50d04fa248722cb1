#pragma once

#include <functional>
#include <string>

#include "common/messages/plugin_methods.h"

namespace orvane::test {

// Records the last call as "name(argument, list|of|such, key=value|key=value)".
class RecordingMethods : public IOrvanePluginMethods {
public:
    virtual ~RecordingMethods() = default;

    std::string lastCall;
    bool answer = true;
    int count = 3;
    std::function<void(const std::string&)> onCall;

    using Text = const juce::String&;
    using List = const juce::StringArray&;
    using Map = juce::StringPairArray&;
    using ConstMap = const juce::StringPairArray&;

    bool createSpecialPlaylistFolders() override { return note("createSpecialPlaylistFolders"); }
    bool addToCleanedFolder(Text name, List paths) override {
        return note("addToCleanedFolder", {name, text(paths)});
    }
    bool addToNotFoundFolder(Text name, List paths) override {
        return note("addToNotFoundFolder", {name, text(paths)});
    }
    bool addToDirtyFolder(Text name, List paths) override {
        return note("addToDirtyFolder", {name, text(paths)});
    }
    bool nestedPlaylistsSupported() override { return note("nestedPlaylistsSupported"); }
    int getPlaylistCount(Text) override { return note("getPlaylistCount"); }
    bool getPlaylistName(Text, int, juce::String&) override { return note("getPlaylistName"); }
    bool removePlaylist(Text, Text) override { return note("removePlaylist"); }
    int getPlaylistTrackCount(Text, Text) override { return note("getPlaylistTrackCount"); }
    bool getPlaylistTrackPath(Text, Text, int, juce::String&) override {
        return note("getPlaylistTrackPath");
    }
    bool removeTrackFromPlaylist(Text, Text, Text) override {
        return note("removeTrackFromPlaylist");
    }
    bool pause() override { return note("pause"); }
    bool stop() override { return note("stop"); }
    bool startCurrent() override { return note("startCurrent"); }
    bool start(Text path) override { return note("start", {path}); }
    bool isPlaying() override { return note("isPlaying"); }
    bool isPaused() override { return note("isPaused"); }
    bool isShufflePlay() override { return note("isShufflePlay"); }
    bool isRepeatTrack() override { return note("isRepeatTrack"); }
    bool isRepeatAll() override { return note("isRepeatAll"); }
    bool isInSpecialMode() override { return note("isInSpecialMode"); }
    bool supportsRandomTrackAccess() override { return note("supportsRandomTrackAccess"); }
    bool getCurrentMediaInfo(Map out) override { return fill(out, "getCurrentMediaInfo", {}); }
    bool getMediaInfoFromPath(Text path, Map out, Text art) override {
        return fill(out, "getMediaInfoFromPath", {path, art});
    }
    bool getMediaInfoFromIndex(int index, Map out, Text art) override {
        return fill(out, "getMediaInfoFromIndex", {juce::String(index), art});
    }
    bool setMediaInfoToPath(Text path, ConstMap map, Text art, bool emptyOk) override {
        return note("setMediaInfoToPath", {path, text(map), art, emptyOk ? "yes" : "no"});
    }
    bool setMediaInfoToIndex(int index, ConstMap map, Text art, bool emptyOk) override {
        return note("setMediaInfoToIndex",
                    {juce::String(index), text(map), art, emptyOk ? "yes" : "no"});
    }
    int getTrackCount() override { return note("getTrackCount") ? count : -1; }
    void close() override { note("close"); }
    bool sendSelectedTracks() override { return note("sendSelectedTracks"); }
    bool disconnectFromApp() override { return note("disconnectFromApp"); }

private:
    static juce::String text(List list) { return list.joinIntoString("|"); }
    static juce::String text(ConstMap map) {
        juce::StringArray pairs;
        for (const juce::String& key : map.getAllKeys()) pairs.add(key + "=" + map[key]);
        return text(pairs);
    }
    bool note(const char* name, const juce::StringArray& arguments = {}) {
        lastCall = (name + ("(" + arguments.joinIntoString(", ")) + ")").toStdString();
        if (onCall) onCall(lastCall);
        return answer;
    }
    bool fill(Map map, const char* name, juce::StringArray arguments) {
        if (map.size() > 0) arguments.add("not empty");
        map.set("TrackTitle", "t");
        map.set("Year", "");
        return note(name, arguments);
    }
};

}  // namespace orvane::test
