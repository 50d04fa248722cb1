#include "standins/asf/picture.h"

#include <utility>

#include "standins/asf/bytes.h"

namespace orvane::asf {

namespace {

std::optional<std::u16string> takeTerminatedText(ByteReader& reader) {
    const auto rest = reader.rest();
    for (std::size_t at = 0; at + 1 < rest.size(); at += 2) {
        if (rest[at] != 0 || rest[at + 1] != 0) continue;
        return textFrom(reader.take(at + 2).first(at));
    }
    return std::nullopt;
}

}  // namespace

std::optional<Picture> Picture::parse(std::span<const std::uint8_t> value) {
    ByteReader reader(value);
    Picture picture;
    picture.type = reader.u8();
    const std::uint32_t length = reader.u32();
    auto mimeType = takeTerminatedText(reader);
    if (!mimeType) return std::nullopt;
    auto description = takeTerminatedText(reader);
    if (!description) return std::nullopt;
    picture.mimeType = std::move(*mimeType);
    picture.description = std::move(*description);
    picture.data = reader.take(length);
    if (reader.failed()) return std::nullopt;
    return picture;
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
