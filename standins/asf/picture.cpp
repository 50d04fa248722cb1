#include "standins/asf/picture.h"

#include "standins/asf/bytes.h"

namespace orvane::asf {

namespace {

std::u16string takeTerminatedText(ByteReader& reader) {
    std::u16string text;
    while (const char16_t unit = reader.u16()) text += unit;
    return text;
}

}  // namespace

std::optional<Picture> Picture::parse(std::span<const std::uint8_t> value) {
    std::string ignored;
    return explained(ignored, [&]() -> std::optional<Picture> {
        ByteReader reader(value);
        Picture picture;
        picture.type = reader.u8();
        const std::uint32_t length = reader.u32();
        picture.mimeType = takeTerminatedText(reader);
        picture.description = takeTerminatedText(reader);
        picture.data = reader.take(length);
        return picture;
    });
}

std::vector<std::uint8_t> Picture::serialise() const {
    Bytes out;
    out.reserve(data.size() + 2 * (mimeType.size() + description.size()) + 9);
    putNumber(out, type, 1);
    putNumber(out, data.size(), 4);
    putTerminatedText(out, mimeType);
    putTerminatedText(out, description);
    putBytes(out, data);
    return out;
}

}  // namespace orvane::asf
