#pragma once

#include <juce_core/juce_core.h>
#include <wmp.h>

#include "platform/atl/atlcomcli.h"

// Where things are in the player's library. Any thread; `core` may be null, and so is the answer
// whenever the player refuses a call.
namespace orvane::library {

// Every track, in the order in which they are counted.
[[nodiscard]] CComPtr<IWMPPlaylist> allTracks(IWMPCore* core);

// The track at that position of all.
[[nodiscard]] CComPtr<IWMPMedia> getMediaByIndex(IWMPCore* core, int trackIndex);

// The track with that source path, when there is exactly one.
[[nodiscard]] CComPtr<IWMPMedia> getMediaByPath(IWMPCore* core, const juce::String& path);

// Whether an item that is not a photo has one of these source paths; true also when the player does
// not tell.
[[nodiscard]] bool mayHoldTrack(IWMPCore* core, const juce::StringArray& spellings);

// The first playlist of that name, made when there is none.
[[nodiscard]] CComPtr<IWMPPlaylist> playlistNamed(IWMPCore* core, const juce::String& name);

}  // namespace orvane::library
