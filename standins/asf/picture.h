#pragma once

// The value of a "WM/Picture" attribute as it stands in a file: a type byte, the data's length in
// four bytes, MIME type and description as terminated UTF-16, then the data.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvane::asf {

inline constexpr char16_t kPictureName[] = u"WM/Picture";

struct Picture {
    std::uint8_t type = 0;
    std::u16string mimeType;
    std::u16string description;
    std::span<const std::uint8_t> data;  // not owned

    // Nothing when the value is cut short. The data points into `value`.
    static std::optional<Picture> parse(std::span<const std::uint8_t> value);
    // The data is at most what 32 bits can count; the texts end at their first terminator.
    [[nodiscard]] std::vector<std::uint8_t> serialise() const;
};

}  // namespace orvane::asf
