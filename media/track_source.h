#pragma once

#include <windows.h>

#include <juce_core/juce_core.h>

#include <optional>

struct IWMPMedia;

namespace orvane {

// What cover art needs to know of a track: read from its media item once, on the player's thread,
// and used on any thread afterwards.
struct TrackSource {
    TrackSource() = default;
    // Null is a track that nothing is known of.
    explicit TrackSource(IWMPMedia* media);

    HRESULT located = E_POINTER;  // what the player answered when asked for the path
    juce::String path;            // empty when it failed
    bool hasDetails = false;      // the item is an IWMPMedia3
    // The names of the pictures that a player keeps are made from it. None when it cannot be read;
    // it may well be empty.
    std::optional<juce::String> collectionId;
};

}  // namespace orvane
