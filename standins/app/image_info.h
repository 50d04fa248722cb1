#pragma once

// What kind of picture a file holds, from its first bytes: its name says nothing reliable.

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane::standin::app {

struct ImageInfo {
    std::string type;         // "jpeg", "png", "gif", "bmp"; "unknown"
    std::uint32_t width = 0;  // 0 when it cannot be told
    std::uint32_t height = 0;
};

ImageInfo imageInfo(std::string_view bytes);

}  // namespace orvane::standin::app
