#pragma once

// The names of the picture files that a player keeps beside a track.

#include <juce_core/juce_core.h>

namespace orvane {

// The paths of the album pictures in the track's folder, the preferred one first. The collection id
// comes from a media file and is not trusted: when it contains a separator, a wildcard or a colon,
// it could name a file elsewhere, and the result is empty.
[[nodiscard]] juce::StringArray albumPictureFiles(const juce::String& sourcePath,
                                                  const juce::String& collectionId);

// The path of the folder's own picture; empty for an empty path.
[[nodiscard]] juce::String folderPictureFile(const juce::String& sourcePath);

}  // namespace orvane
