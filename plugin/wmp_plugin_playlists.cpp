// The player operations around playlists. The three special groups of the application are families
// of ordinary playlists whose names begin alike; the player's folders play no part.

#include "plugin/wmp_plugin.h"

#include "platform/waiting.h"
#include "plugin/library.h"
#include "util/log/log.h"

namespace orvane {
namespace {

// A long list is cut into steps, so that the player's thread does its own work in between.
constexpr DWORD kLongestStepMs = 40;

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
    const bool added = addTracksToPlaylist(kCleaned + playlistName, trackPaths);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Add2CleanedFolder %s", outcome(added));
    return added;
}

bool COrVaneWmpPlugin::addToNotFoundFolder(const juce::String& playlistName,
                                           const juce::StringArray& trackPaths) {
    const bool added = addTracksToPlaylist(kNotFound + playlistName, trackPaths);
    syslog(LOG_DEBUG, "COrVaneWmpPlugin: Add2NotFoundFolder %s", outcome(added));
    return added;
}

bool COrVaneWmpPlugin::addToDirtyFolder(const juce::String& playlistName,
                                        const juce::StringArray& trackPaths) {
    const bool added = addTracksToPlaylist(kDirty + playlistName, trackPaths);
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

bool COrVaneWmpPlugin::addTracksToPlaylist(const juce::String& name,
                                           const juce::StringArray& trackPaths) {
    bool found = false;
    int next = 0;
    // Of the playlist nothing is kept between two steps: the player may be used meanwhile.
    const auto step = [&](IWMPCore& core) {
        const CComPtr<IWMPPlaylist> playlist = library::playlistNamed(&core, name);
        found = playlist != nullptr;
        const Deadline deadline(kLongestStepMs);
        for (; found && next < trackPaths.size() && deadline.remaining() > 0; ++next) {
            if (const CComPtr<IWMPMedia> media = library::getMediaByPath(&core, trackPaths[next]))
                playlist->appendItem(media);
        }
        return found;
    };
    do {
        if (m_released || !onPlayer(step)) return false;
    } while (next < trackPaths.size());
    return found;
}

}  // namespace orvane
