#include "media/picture_files.h"

namespace orvane {
namespace {

// Up to the last backslash; all of a path that has none.
juce::String folderOf(const juce::String& sourcePath) {
    const int backslash = sourcePath.lastIndexOfChar('\\');
    return backslash < 0 ? sourcePath : sourcePath.substring(0, backslash);
}

bool isPartOfFileName(const juce::String& text) {
    for (auto character = text.getCharPointer(); !character.isEmpty(); ++character)
        if (*character < 0x20) return false;
    return !text.containsAnyOf("\\/:*?\"<>|");
}

}  // namespace

juce::StringArray albumPictureFiles(const juce::String& sourcePath,
                                    const juce::String& collectionId) {
    if (sourcePath.isEmpty() || !isPartOfFileName(collectionId)) return {};
    const juce::String start = folderOf(sourcePath) + "\\albumart_" + collectionId;
    return {start + "_large.jpg", start + "_small.jpg"};
}

juce::String folderPictureFile(const juce::String& sourcePath) {
    return sourcePath.isEmpty() ? juce::String() : folderOf(sourcePath) + "\\folder.jpg";
}

}  // namespace orvane
