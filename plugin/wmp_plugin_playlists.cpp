// The player operations around playlists. The three special groups of the application are families
// of ordinary playlists whose names begin alike; the player's folders play no part.

#include "plugin/wmp_plugin.h"

#include "plugin/library.h"
#include "util/log/log.h"

namespace orvane {
namespace {

constexpr char kCleaned[] = "OrVane:Cleaned";
constexpr char kDirty[] = "OrVane:Dirty";
constexpr char kNotFound[] = "OrVane:NotFound";

const char* outcome(bool succeeded) { return succeeded ? "succeeded" : "failed"; }

}  // namespace

bool COrVaneWmpPlugin::createSpecialPlaylistFolders() {
    // Nothing to make yet: a playlist comes into being with the first tracks put into it.
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: CreateSpecialPlaylistFolders called");
    return true;
}

bool COrVaneWmpPlugin::addToCleanedFolder(const juce::String& playlistName,
                                          const juce::StringArray& trackPaths) {
    const bool added = addTracksToPlaylist(core(), kCleaned + playlistName, trackPaths);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Add2CleanedFolder %s", outcome(added));
    return added;
}

bool COrVaneWmpPlugin::addToNotFoundFolder(const juce::String& playlistName,
                                           const juce::StringArray& trackPaths) {
    const bool added = addTracksToPlaylist(core(), kNotFound + playlistName, trackPaths);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Add2NotFoundFolder %s", outcome(added));
    return added;
}

bool COrVaneWmpPlugin::addToDirtyFolder(const juce::String& playlistName,
                                        const juce::StringArray& trackPaths) {
    const bool added = addTracksToPlaylist(core(), kDirty + playlistName, trackPaths);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Add2DirtyFolder %s", outcome(added));
    return added;
}

bool COrVaneWmpPlugin::nestedPlaylistsSupported() { return false; }

int COrVaneWmpPlugin::getPlaylistCount(const juce::String&) { return 0; }

bool COrVaneWmpPlugin::getPlaylistName(const juce::String&, int, juce::String&) { return false; }

bool COrVaneWmpPlugin::removePlaylist(const juce::String&, const juce::String&) { return false; }

int COrVaneWmpPlugin::getPlaylistTrackCount(const juce::String&, const juce::String&) { return 0; }

bool COrVaneWmpPlugin::getPlaylistTrackPath(const juce::String&, const juce::String&, int,
                                            juce::String&) {
    return false;
}

bool COrVaneWmpPlugin::removeTrackFromPlaylist(const juce::String&, const juce::String&,
                                               const juce::String&) {
    return false;
}

bool COrVaneWmpPlugin::addTracksToPlaylist(IWMPCore* core, const juce::String& name,
                                           const juce::StringArray& trackPaths) const {
    const CComPtr<IWMPPlaylist> playlist = library::playlistNamed(core, name);
    if (!playlist) return false;
    for (const juce::String& path : trackPaths) {
        if (m_released) return false;
        if (const CComPtr<IWMPMedia> media = library::getMediaByPath(core, path))
            playlist->appendItem(media);
    }
    return true;
}

}  // namespace orvane
