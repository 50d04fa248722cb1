#pragma once

#include <juce_core/juce_core.h>

#include <string>

namespace orvane {

// The path as Windows calls accept it: unchanged, or in its extended-length form when it is too
// long.
[[nodiscard]] std::wstring fileNameOf(const juce::String& path);

// Whether a file or folder of that path exists. GetFileAttributesW.
[[nodiscard]] bool fileExists(const juce::String& path);

// Whether both paths name the same file: the texts are equal, ignoring case, or both open the same
// file. Paths with different texts that cannot be opened count as different files.
[[nodiscard]] bool namesSameFile(const juce::String& path, const juce::String& other);

// All spellings of a path, without duplicates: unchanged, in full (GetFullPathNameW) and, when the
// file exists, without links and short names (GetFinalPathNameByHandleW).
[[nodiscard]] juce::StringArray spellingsOf(const juce::String& path);

}  // namespace orvane
