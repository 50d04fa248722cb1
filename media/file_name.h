#pragma once

#include <juce_core/juce_core.h>

#include <string>

namespace orvane {

// The name by which to give a path to Windows: the path itself, or its extended-length form when it
// is too long for a plain one.
[[nodiscard]] std::wstring fileNameOf(const juce::String& path);

// Whether something of that path exists, file or folder (GetFileAttributesW).
[[nodiscard]] bool fileExists(const juce::String& path);

// Whether both paths lead to one file: by their text, ignoring case, or by what they open. False
// for files that are not there or cannot be opened.
[[nodiscard]] bool namesSameFile(const juce::String& path, const juce::String& other);

// The path as it is, in full (GetFullPathNameW), and, for what exists, as the system resolves it:
// without links and short names (GetFinalPathNameByHandleW). Equal ones once.
[[nodiscard]] juce::StringArray spellingsOf(const juce::String& path);

}  // namespace orvane
