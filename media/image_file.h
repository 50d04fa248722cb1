#pragma once

// Image files named by the application, moved whole between file and memory. Each failure is one
// line in the log in the caller's name ("Class::method").

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

// Makes or replaces the file. It is written beside its target first and moved over that when it is
// whole: a failure leaves what was there.
[[nodiscard]] bool writeImageFile(const char* caller, const juce::String& path,
                                  std::span<const BYTE> image);

// The same with the content of the file `from`; the copy is an ordinary file, neither hidden nor
// write-protected. CopyFileW.
[[nodiscard]] bool copyImageFile(const char* caller, const juce::String& from,
                                 const juce::String& to);

// A step of writeImageFile: fills the stream and closes it. Whether it took all of the image, also
// when it was closed.
[[nodiscard]] bool writeWhole(std::FILE* stream, std::span<const BYTE> image);

}  // namespace orvane
