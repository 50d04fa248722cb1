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
bool produceCoverArt(IWMPMedia* media, const juce::String& path) {
    const auto retrieved = WmpMediaItem::retrieveTrackCoverArt(media, path);
    if (retrieved != WmpMediaItem::Retrieved::noneThere)
        return retrieved == WmpMediaItem::Retrieved::written;
    juce::String found;
    if (!WmpMediaItem::findCoverArtFile(media, found)) return false;
    if (found.equalsIgnoreCase(path)) return true;
    CComBSTR source;
    // Copied over the track itself, the picture would be the end of the track.
    if (SUCCEEDED(media->get_sourceURL(&source)) && namesSameFile(path, textOf(source)))
        return false;
    return copyImageFile("COrVaneWmpPlugin::getMediaInfo", found, path);
}

bool readMediaInfo(IWMPCore* core, IWMPMedia* media, juce::StringPairArray& metadataOut,
                   const juce::String& albumArtPath) {
    WmpMediaItem item;
    if (!item.Load(media)) return false;
    item.getMetadata(metadataOut);
    if (albumArtPath.isEmpty()) return true;
    // A picture written over any track of the library would destroy that track.
    return !library::mayHoldTrack(core, spellingsOf(albumArtPath)) &&
           produceCoverArt(media, albumArtPath);
}

// Empty values never clear a tag, whatever the command says of them: a partial record would
// otherwise clear every field that it does not name.
bool writeMediaInfo(IWMPMedia* media, const juce::StringPairArray& metadata,
                    const juce::String& albumArtPath) {
    if (!media) return false;
    if (!WmpMediaItem(metadata).Save(media, false)) return false;
    if (albumArtPath.isNotEmpty())
        std::ignore = WmpMediaItem::setAlbumCoverArt(media, albumArtPath);
    return true;
}

}  // namespace

int COrVaneWmpPlugin::getTrackCount() {
    const CComPtr<IWMPPlaylist> all = library::allTracks(core());
    LONG count = 0;
    return all && SUCCEEDED(all->get_count(&count)) ? static_cast<int>(count) : 0;
}

bool COrVaneWmpPlugin::getCurrentMediaInfo(juce::StringPairArray& metadataOut) {
    const CComPtr<IWMPCore> core = this->core();
    CComPtr<IWMPMedia> current;
    if (!core || FAILED(core->get_currentMedia(&current))) return false;
    return readMediaInfo(core, current, metadataOut, {});
}

bool COrVaneWmpPlugin::getMediaInfoFromPath(const juce::String& trackPath,
                                            juce::StringPairArray& metadataOut,
                                            const juce::String& albumArtPath) {
    const CComPtr<IWMPCore> core = this->core();
    return readMediaInfo(core, library::getMediaByPath(core, trackPath), metadataOut, albumArtPath);
}

bool COrVaneWmpPlugin::getMediaInfoFromIndex(int trackIndex, juce::StringPairArray& metadataOut,
                                             const juce::String& albumArtPath) {
    const CComPtr<IWMPCore> core = this->core();
    return readMediaInfo(core, library::getMediaByIndex(core, trackIndex), metadataOut,
                         albumArtPath);
}

bool COrVaneWmpPlugin::setMediaInfoToPath(const juce::String& trackPath,
                                          const juce::StringPairArray& metadata,
                                          const juce::String& albumArtPath, bool /*emptyOk*/) {
    return writeMediaInfo(library::getMediaByPath(core(), trackPath), metadata, albumArtPath);
}

bool COrVaneWmpPlugin::setMediaInfoToIndex(int trackIndex, const juce::StringPairArray& metadata,
                                           const juce::String& albumArtPath, bool /*emptyOk*/) {
    return writeMediaInfo(library::getMediaByIndex(core(), trackIndex), metadata, albumArtPath);
}

}  // namespace orvane
