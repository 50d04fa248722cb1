#pragma once

// The picture files that a player keeps beside a track: by which names to look for them.

#include <juce_core/juce_core.h>

namespace orvane {

// The track's folder with the names of its album pictures, the preferred one first. The collection
// id comes out of a media file: one that is no part of a file name (a separator, a wildcard, a
// drive or stream mark in it) would lead elsewhere and gives no names.
[[nodiscard]] juce::StringArray albumPictureFiles(const juce::String& sourcePath,
                                                  const juce::String& collectionId);

// The picture of the whole folder; empty for an empty path.
[[nodiscard]] juce::String folderPictureFile(const juce::String& sourcePath);

}  // namespace orvane
