#include "plugin/wmp_plugin.h"

namespace orvane {

bool COrVaneWmpPlugin::createSpecialPlaylistFolders() { return true; }

bool COrVaneWmpPlugin::addToCleanedFolder(const juce::String&, const juce::StringArray&) {
    return false;
}

bool COrVaneWmpPlugin::addToNotFoundFolder(const juce::String&, const juce::StringArray&) {
    return false;
}

bool COrVaneWmpPlugin::addToDirtyFolder(const juce::String&, const juce::StringArray&) {
    return false;
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

CComPtr<IWMPMedia> COrVaneWmpPlugin::getMediaByPath(IWMPCore*, const juce::String&) { return {}; }

bool COrVaneWmpPlugin::addTracksToPlaylist(IWMPCore*, const juce::String&,
                                           const juce::StringArray&) {
    return false;
}

}  // namespace orvane
