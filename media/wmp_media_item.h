#pragma once

#include <juce_core/juce_core.h>

#include <span>

#include "media/track_source.h"

struct IWMPMedia;

namespace orvane {

// One track's metadata: an ordered record of named texts (keys ignore case), filled from a player
// media item and written back into one; and the cover art of the item's file. Holds no reference
// to a media item. An operation that is given one, or none (null), runs on the player's thread; one
// that is given a TrackSource opens files, and runs on any other on which COM is initialised.
// Failures are results; a failed player call never stops the rest of an operation.
class WmpMediaItem {
public:
    WmpMediaItem();

    // A copy; an empty album artist becomes the track's artist.
    explicit WmpMediaItem(const juce::StringPairArray& metadata);

    void getMetadata(juce::StringPairArray& out) const;

    // The player attribute that stands for a field, ignoring case; empty when there is none.
    [[nodiscard]] static juce::String attributeNameFor(const juce::String& field);

    // Fills the record anew, but for the number of pictures, which is in the file. False, the
    // record as it was, only without a media item; a field that cannot be read becomes empty.
    [[nodiscard]] bool Load(IWMPMedia* media);

    // Adds that number (countCoverArt).
    void addCoverArtCount(const TrackSource& source);

    // Like Load with nothing but the path and these fields: one call of the player for each, and no
    // file is opened.
    [[nodiscard]] bool LoadFields(IWMPMedia* media, std::span<const char* const> wanted);

    // Writes the fields that have a value (all of them with emptyOk), each with one call of the
    // player; one that the player refuses is logged and skipped. False only without a media item.
    // A field left out or empty never clears anything unless emptyOk is set.
    [[nodiscard]] bool Save(IWMPMedia* media, bool emptyOk) const;

    // One field from the item (getItemInfo); on failure it becomes the default and this is false.
    bool readField(IWMPMedia* media, const juce::String& field, const juce::String& defaultValue);

    // One field into the item (setItemInfo). Nothing is written, and the answer is true, for a
    // field without an attribute and for the first of several values that the item has already: the
    // others would be lost (getAttributeCountByType).
    [[nodiscard]] bool writeField(IWMPMedia* media, const juce::String& field) const;

    [[nodiscard]] juce::String getTrackTitle() const;
    [[nodiscard]] juce::String getTrackArtist() const;
    [[nodiscard]] juce::String getAlbumArtist() const;
    [[nodiscard]] juce::String getAlbumTitle() const;
    [[nodiscard]] juce::String getGenre() const;
    [[nodiscard]] juce::String getFilename() const;
    [[nodiscard]] juce::String getYear() const;
    [[nodiscard]] juce::String getTrackNumber() const;

    // How many sources of cover art there are: 1 for an embedded picture, otherwise the number of
    // picture files beside the track (0, 1 or 2).
    [[nodiscard]] static int countCoverArt(const TrackSource& source);

    // The first picture file beside the track, by its path.
    [[nodiscard]] static bool findCoverArtFile(const TrackSource& source, juce::String& path);

    // What became of an embedded picture that was to be written to a file. The files beside the
    // track stand in for it only when there is none.
    enum class Retrieved { written, noneThere, failed };

    // Writes the embedded picture, as it is, to the file `path` (made or replaced). A music file
    // that is busy is tried again for 1000 ms, while the calling thread's messages are dispatched;
    // busy for good is a failure. Each step that fails is one line in the log.
    [[nodiscard]] static Retrieved retrieveTrackCoverArt(const TrackSource& track,
                                                         const juce::String& path);

    // Makes the image file at `path` the file's only embedded picture. False leaves the track as it
    // was, also for an empty image: it would put nothing in the place of the pictures there are.
    // Waits for a busy file and logs as above; media/file_rewrite.h tells that it is at work.
    [[nodiscard]] static bool setAlbumCoverArt(const TrackSource& track, const juce::String& path);

private:
    juce::StringPairArray m_record;
};

}  // namespace orvane
