// The player operations around metadata and cover art of the library's tracks.

#include "plugin/wmp_plugin.h"

#include <tuple>

#include "media/com_text.h"
#include "media/file_name.h"
#include "media/image_file.h"
#include "media/wmp_media_item.h"
#include "plugin/library.h"

namespace orvane {
namespace {

// The embedded picture, or else the picture file beside the track, as the file `path`.
bool produceCoverArt(const TrackSource& track, const juce::String& path) {
    const auto retrieved = WmpMediaItem::retrieveTrackCoverArt(track, path);
    if (retrieved != WmpMediaItem::Retrieved::noneThere)
        return retrieved == WmpMediaItem::Retrieved::written;
    juce::String found;
    if (!WmpMediaItem::findCoverArtFile(track, found)) return false;
    if (found.equalsIgnoreCase(path)) return true;
    // Copied over the track itself, the picture would be the end of the track.
    if (namesSameFile(path, track.path)) return false;
    return copyImageFile("COrVaneWmpPlugin::getMediaInfo", found, path);
}

}  // namespace

int COrVaneWmpPlugin::getTrackCount() {
    LONG count = 0;
    const bool counted = onPlayer([&](IWMPCore& core) {
        const CComPtr<IWMPPlaylist> all = library::allTracks(&core);
        return all && SUCCEEDED(all->get_count(&count));
    });
    return counted ? static_cast<int>(count) : 0;
}

// The files are worked on here, apart from the player's thread.
bool COrVaneWmpPlugin::readMediaInfo(const FindTrack& find, juce::StringPairArray& metadataOut,
                                     const juce::String& albumArtPath) {
    const juce::StringArray spellings =
        albumArtPath.isEmpty() ? juce::StringArray() : spellingsOf(albumArtPath);
    WmpMediaItem item;
    TrackSource track;
    bool mayWrite = false;
    const bool loaded = onPlayer([&](IWMPCore& core) {
        const CComPtr<IWMPMedia> media = find(core);
        if (!item.Load(media)) return false;
        track = TrackSource(media);
        // A picture written over any track of the library would destroy that track.
        mayWrite = !library::mayHoldTrack(&core, spellings);
        return true;
    });
    if (!loaded) return false;
    item.addCoverArtCount(track);
    item.getMetadata(metadataOut);
    return albumArtPath.isEmpty() || (mayWrite && produceCoverArt(track, albumArtPath));
}

// Empty values never clear a tag, whatever the command says of them: a partial record would
// otherwise clear every field that it does not name.
bool COrVaneWmpPlugin::writeMediaInfo(const FindTrack& find, const juce::StringPairArray& metadata,
                                      const juce::String& albumArtPath) {
    const WmpMediaItem item(metadata);
    TrackSource track;
    const bool saved = onPlayer([&](IWMPCore& core) {
        const CComPtr<IWMPMedia> media = find(core);
        if (!media || !item.Save(media, false)) return false;
        track = TrackSource(media);
        return true;
    });
    if (saved && albumArtPath.isNotEmpty())
        std::ignore = WmpMediaItem::setAlbumCoverArt(track, albumArtPath);
    return saved;
}

bool COrVaneWmpPlugin::getCurrentMediaInfo(juce::StringPairArray& metadataOut) {
    const auto current = [](IWMPCore& core) {
        CComPtr<IWMPMedia> media;
        if (FAILED(core.get_currentMedia(&media))) media.Release();
        return media;
    };
    return readMediaInfo(current, metadataOut, {});
}

bool COrVaneWmpPlugin::getMediaInfoFromPath(const juce::String& trackPath,
                                            juce::StringPairArray& metadataOut,
                                            const juce::String& albumArtPath) {
    return readMediaInfo([&](IWMPCore& core) { return library::getMediaByPath(&core, trackPath); },
                         metadataOut, albumArtPath);
}

bool COrVaneWmpPlugin::getMediaInfoFromIndex(int trackIndex, juce::StringPairArray& metadataOut,
                                             const juce::String& albumArtPath) {
    return readMediaInfo(
        [&](IWMPCore& core) { return library::getMediaByIndex(&core, trackIndex); }, metadataOut,
        albumArtPath);
}

bool COrVaneWmpPlugin::setMediaInfoToPath(const juce::String& trackPath,
                                          const juce::StringPairArray& metadata,
                                          const juce::String& albumArtPath, bool /*emptyOk*/) {
    return writeMediaInfo([&](IWMPCore& core) { return library::getMediaByPath(&core, trackPath); },
                          metadata, albumArtPath);
}

bool COrVaneWmpPlugin::setMediaInfoToIndex(int trackIndex, const juce::StringPairArray& metadata,
                                           const juce::String& albumArtPath, bool /*emptyOk*/) {
    return writeMediaInfo(
        [&](IWMPCore& core) { return library::getMediaByIndex(&core, trackIndex); }, metadata,
        albumArtPath);
}

}  // namespace orvane
