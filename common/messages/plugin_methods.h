#pragma once

#include <juce_core/juce_core.h>

namespace orvane {

// The commands that the application can send; each method has the name of its command. The command
// pipe's thread calls them, one at a time. On failure they return false or 0. The keys of the maps
// are metadata field names and ignore case.
class IOrvanePluginMethods {
public:
    virtual bool createSpecialPlaylistFolders() = 0;
    virtual bool addToCleanedFolder(const juce::String& playlistName,
                                    const juce::StringArray& trackPaths) = 0;
    virtual bool addToNotFoundFolder(const juce::String& playlistName,
                                     const juce::StringArray& trackPaths) = 0;
    virtual bool addToDirtyFolder(const juce::String& playlistName,
                                  const juce::StringArray& trackPaths) = 0;
    virtual bool nestedPlaylistsSupported() = 0;
    virtual int getPlaylistCount(const juce::String& specialFolderName) = 0;
    virtual bool getPlaylistName(const juce::String& specialFolderName, int playlistIndex,
                                 juce::String& name) = 0;
    virtual bool removePlaylist(const juce::String& specialFolderName,
                                const juce::String& playlistName) = 0;
    virtual int getPlaylistTrackCount(const juce::String& specialFolderName,
                                      const juce::String& playlistName) = 0;
    virtual bool getPlaylistTrackPath(const juce::String& specialFolderName,
                                      const juce::String& playlistName, int trackIndex,
                                      juce::String& path) = 0;
    virtual bool removeTrackFromPlaylist(const juce::String& specialFolderName,
                                         const juce::String& playlistName,
                                         const juce::String& trackPath) = 0;
    virtual bool pause() = 0;
    virtual bool stop() = 0;
    virtual bool startCurrent() = 0;
    virtual bool start(const juce::String& trackPath) = 0;
    virtual bool isPlaying() = 0;
    virtual bool isPaused() = 0;
    virtual bool isShufflePlay() = 0;
    virtual bool isRepeatTrack() = 0;
    virtual bool isRepeatAll() = 0;
    virtual bool isInSpecialMode() = 0;
    virtual bool supportsRandomTrackAccess() = 0;
    virtual bool getCurrentMediaInfo(juce::StringPairArray& metadataOut) = 0;
    virtual bool getMediaInfoFromPath(const juce::String& trackPath,
                                      juce::StringPairArray& metadataOut,
                                      const juce::String& albumArtPath) = 0;
    virtual bool getMediaInfoFromIndex(int trackIndex, juce::StringPairArray& metadataOut,
                                       const juce::String& albumArtPath) = 0;
    virtual bool setMediaInfoToPath(const juce::String& trackPath,
                                    const juce::StringPairArray& metadata,
                                    const juce::String& albumArtPath, bool emptyOk) = 0;
    virtual bool setMediaInfoToIndex(int trackIndex, const juce::StringPairArray& metadata,
                                     const juce::String& albumArtPath, bool emptyOk) = 0;
    virtual int getTrackCount() = 0;
    virtual void close() = 0;
    virtual bool sendSelectedTracks() = 0;
    virtual bool disconnectFromApp() = 0;

protected:
    ~IOrvanePluginMethods() = default;
};

}  // namespace orvane
