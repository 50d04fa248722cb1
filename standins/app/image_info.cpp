#include "standins/app/image_info.h"

namespace orvane::standin::app {
namespace {

std::uint32_t bigEndian(std::string_view bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
        value = (value << 8) | static_cast<unsigned char>(bytes[at + i]);
    return value;
}

// A JPEG is a chain of segments; the frame header among them has the size.
ImageInfo jpegInfo(std::string_view bytes) {
    ImageInfo info{"jpeg", 0, 0};
    std::size_t at = 2;
    while (at + 9 <= bytes.size() && static_cast<unsigned char>(bytes[at]) == 0xFF) {
        const auto marker = static_cast<unsigned char>(bytes[at + 1]);
        const bool frameHeader =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (frameHeader) {
            info.height = bigEndian(bytes, at + 5, 2);
            info.width = bigEndian(bytes, at + 7, 2);
            break;
        }
        const std::size_t length = bigEndian(bytes, at + 2, 2);
        if (length < 2) break;
        at += 2 + length;
    }
    return info;
}

}  // namespace

ImageInfo imageInfo(std::string_view bytes) {
    using namespace std::string_view_literals;
    if (bytes.substr(0, 3) == "\xFF\xD8\xFF"sv) return jpegInfo(bytes);
    if (bytes.substr(0, 8) == "\x89PNG\r\n\x1A\n"sv) {
        if (bytes.size() < 24) return {"png", 0, 0};
        return {"png", bigEndian(bytes, 16, 4), bigEndian(bytes, 20, 4)};
    }
    if (bytes.substr(0, 4) == "GIF8"sv) return {"gif", 0, 0};
    if (bytes.substr(0, 2) == "BM"sv) return {"bmp", 0, 0};
    return {"unknown", 0, 0};
}

}  // namespace orvane::standin::app
