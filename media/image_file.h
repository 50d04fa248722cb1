#pragma once

// Image files named by the application, moved whole between file and memory. A file that cannot be
// opened is logged in the caller's name ("Class::method"); other failures are not.

#include <windows.h>

#include <juce_core/juce_core.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>

namespace orvane {

// An image lies in memory several times while it is embedded, in the player's 32-bit process: what
// is larger is no picture, and running the player out of memory would end it.
inline constexpr std::int64_t kMaxImageBytes = 128 << 20;

struct ImageData {
    std::unique_ptr<BYTE[]> bytes;
    std::size_t size = 0;

    [[nodiscard]] std::span<const BYTE> span() const { return {bytes.get(), size}; }
};

// Nothing for a file that cannot be read whole, is longer than kMaxImageBytes, or is none (a pipe
// or device would make the caller wait).
[[nodiscard]] std::optional<ImageData> readImageFile(const char* caller, const juce::String& path);

// Makes or overwrites the file. True only when all of it is in the file; a file that could be
// written only in part is deleted, so that nobody takes it for the picture.
[[nodiscard]] bool writeImageFile(const char* caller, const juce::String& path,
                                  std::span<const BYTE> image);

// The last step of writeImageFile, with the file's opened stream: closes it, and deletes the file
// unless the stream took all of the image, also when it was closed.
[[nodiscard]] bool writeWholeOrDelete(std::FILE* stream, const juce::String& path,
                                      std::span<const BYTE> image);

}  // namespace orvane
