#pragma once

#include <juce_core/juce_core.h>
#include <wmp.h>

#include "platform/atl/atlcomcli.h"

// Finds tracks and playlists in the player's library. Runs on the thread that owns `core` (may be
// null). The result is null when nothing is found or a call of the player fails.
namespace orvane::library {

// All tracks, in the order of the application's track indices.
[[nodiscard]] CComPtr<IWMPPlaylist> allTracks(IWMPCore* core);

// The track with that index in allTracks().
[[nodiscard]] CComPtr<IWMPMedia> getMediaByIndex(IWMPCore* core, int trackIndex);

// The track with that source path; null unless there is exactly one.
[[nodiscard]] CComPtr<IWMPMedia> getMediaByPath(IWMPCore* core, const juce::String& path);

// Whether an item that is not a photo may have one of these source paths. True also when a call of
// the player fails.
[[nodiscard]] bool mayHoldTrack(IWMPCore* core, const juce::StringArray& spellings);

// The first playlist of that name, created when there is none.
[[nodiscard]] CComPtr<IWMPPlaylist> playlistNamed(IWMPCore* core, const juce::String& name);

}  // namespace orvane::library
