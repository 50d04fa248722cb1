#pragma once

// Reads, writes and copies the image files that the application names. Each failure logs one line
// that begins with `caller` ("Class::method").

#include <windows.h>

#include <juce_core/juce_core.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>

namespace orvane {

// The largest image that is accepted, in bytes. Several copies are in memory while an image is
// embedded, and the player's 32-bit process must not run out of memory.
inline constexpr std::int64_t kMaxImageBytes = 128 << 20;

struct ImageData {
    std::unique_ptr<BYTE[]> bytes;
    std::size_t size = 0;

    [[nodiscard]] std::span<const BYTE> span() const { return {bytes.get(), size}; }
};

// None for a file that cannot be read completely, is longer than kMaxImageBytes, or is a pipe or
// device, which could block the caller.
[[nodiscard]] std::optional<ImageData> readImageFile(const char* caller, const juce::String& path);

// Creates or replaces the file. Writes a new file beside it first and then moves that over it: a
// failure leaves the old file unchanged.
[[nodiscard]] bool writeImageFile(const char* caller, const juce::String& path,
                                  std::span<const BYTE> image);

// The same with the content of the file `from`. The copy is neither hidden nor read-only.
// CopyFileW.
[[nodiscard]] bool copyImageFile(const char* caller, const juce::String& from,
                                 const juce::String& to);

// A step of writeImageFile(): writes the image and closes the stream. True when both succeeded.
[[nodiscard]] bool writeWhole(std::FILE* stream, std::span<const BYTE> image);

}  // namespace orvane
