#pragma once

#include <juce_core/juce_core.h>

#include <span>

#include "media/track_source.h"

struct IWMPMedia;

namespace orvane {

// Reads and writes one track's metadata and cover art. The metadata is an ordered record of named
// texts (keys ignore case), read from a player's media item and written to one. Holds no reference
// to a media item. Operations that take an IWMPMedia (may be null) run on the player's thread.
// Operations that take a TrackSource open files and run on any other thread that has initialised
// COM. A failed call of the player does not stop the rest of an operation. Errors are return
// values.
class WmpMediaItem {
public:
    WmpMediaItem();

    // Copies the record. An empty album artist is replaced with the track's artist.
    explicit WmpMediaItem(const juce::StringPairArray& metadata);

    void getMetadata(juce::StringPairArray& out) const;

    // The player attribute for a field, ignoring case; empty when there is none.
    [[nodiscard]] static juce::String attributeNameFor(const juce::String& field);

    // Replaces the record with the item's fields, without the number of pictures, which only the
    // file holds. A field that cannot be read becomes empty. False, and the record is unchanged,
    // only when `media` is null.
    [[nodiscard]] bool Load(IWMPMedia* media);

    // Adds the number of pictures (countCoverArt) to the record.
    void addCoverArtCount(const TrackSource& source);

    // Like Load, but reads only the path and the wanted fields, with one call of the player each.
    // Opens no file.
    [[nodiscard]] bool LoadFields(IWMPMedia* media, std::span<const char* const> wanted);

    // Writes the fields that have a value, or all of them with `emptyOk`, each with one call of the
    // player. A field that the player refuses is logged and skipped. Without `emptyOk`, a field
    // that is empty or missing clears nothing. False only when `media` is null.
    [[nodiscard]] bool Save(IWMPMedia* media, bool emptyOk) const;

    // Reads one field (getItemInfo). On failure the field is set to the default; returns false.
    bool readField(IWMPMedia* media, const juce::String& field, const juce::String& defaultValue);

    // Writes one field (setItemInfo). Writes nothing and returns true in two cases: the field has
    // no attribute, or the value is already the first of several values of the attribute, because
    // the others would be lost (getAttributeCountByType).
    [[nodiscard]] bool writeField(IWMPMedia* media, const juce::String& field) const;

    [[nodiscard]] juce::String getTrackTitle() const;
    [[nodiscard]] juce::String getTrackArtist() const;
    [[nodiscard]] juce::String getAlbumArtist() const;
    [[nodiscard]] juce::String getAlbumTitle() const;
    [[nodiscard]] juce::String getGenre() const;
    [[nodiscard]] juce::String getFilename() const;
    [[nodiscard]] juce::String getYear() const;
    [[nodiscard]] juce::String getTrackNumber() const;

    // The number of cover art sources: 1 for an embedded picture, otherwise the number of picture
    // files beside the track (0 to 2).
    [[nodiscard]] static int countCoverArt(const TrackSource& source);

    // Sets `path` to the first picture file beside the track; false when there is none.
    [[nodiscard]] static bool findCoverArtFile(const TrackSource& source, juce::String& path);

    // The result of writing an embedded picture to a file. Only with `noneThere` may the caller use
    // a picture file beside the track.
    enum class Retrieved { written, noneThere, failed };

    // Writes the embedded picture unchanged to the file `path`, which is created or replaced. When
    // the music file is in use, tries again for 1000 ms and dispatches the calling thread's
    // messages meanwhile; then it fails. Each failed step logs one line.
    [[nodiscard]] static Retrieved retrieveTrackCoverArt(const TrackSource& track,
                                                         const juce::String& path);

    // Makes the image file at `path` the track's only embedded picture. On false the track is
    // unchanged; an empty image fails because it would only delete pictures. Waits for a file in
    // use and logs as above. Marks the rewrite with media/file_rewrite.h.
    [[nodiscard]] static bool setAlbumCoverArt(const TrackSource& track, const juce::String& path);

private:
    juce::StringPairArray m_record;
};

}  // namespace orvane
