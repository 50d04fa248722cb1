#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

#include <optional>

struct IWMPMedia;

namespace orvane {

// What the cover art operations need to know about a track. Constructed from its media item on the
// player's thread; usable on any thread afterwards.
struct TrackSource {
    TrackSource() = default;
    // With null, nothing is known about the track.
    explicit TrackSource(IWMPMedia* media);

    HRESULT located = E_POINTER;  // the player's result when it was asked for the path
    juce::String path;            // empty when it failed
    bool hasDetails = false;      // the item is an IWMPMedia3
    // Part of the names of the player's picture files. None when it cannot be read; may be empty.
    std::optional<juce::String> collectionId;
};

}  // namespace orvane
