// Fuzzes the header of a music file and its pictures: it is read, changed, written and read again
// without a loss.

#include <algorithm>
#include <optional>
#include <string>

#include "fuzz/require.h"
#include "standins/asf/asf_file.h"
#include "standins/asf/picture.h"

using namespace orvane::asf;
using orvane::fuzz::require;
using Bytes = std::vector<std::uint8_t>;

namespace {

Bytes written(const Header& header) {
    std::string error;
    auto bytes = header.serialise(1000, error);
    require(bytes.has_value(), "a header that was read can be written");
    return std::move(*bytes);
}

Header readAgain(const Bytes& bytes) {
    std::string error;
    auto header = Header::parse(bytes, error);
    require(header.has_value(), "a header that was written can be read");
    return std::move(*header);
}

// Booleans have another width in each object; all else stays as it is.
bool isSame(const Attribute& a, const Attribute& b) {
    return a.name == b.name && a.type == b.type && a.stream == b.stream &&
           a.language == b.language &&
           (a.type == AttributeType::boolean ? (a.number() != 0) == (b.number() != 0)
                                             : a.value == b.value);
}

void requirePicture(std::span<const std::uint8_t> value) {
    const auto picture = Picture::parse(value);
    if (!picture) return;
    const Bytes again = picture->serialise();
    require(again.size() <= value.size() && std::equal(again.begin(), again.end(), value.begin()),
            "a picture is written as it was read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    requirePicture({data, size});
    std::string error;
    const auto header = Header::parse({data, size}, error);
    require(header.has_value() == error.empty(), "what cannot be read says why");
    if (!header) return 0;

    const Bytes bytes = written(*header);
    Header again = readAgain(bytes);
    require(again.durationHns() == header->durationHns() && again.bitrate() == header->bitrate(),
            "duration and bit rate stay");
    require(again.attributes().size() == header->attributes().size(), "no attribute is lost");
    for (const Attribute& attribute : header->attributes()) {
        require(std::ranges::any_of(again.attributes(),
                                    [&](const Attribute& a) { return isSame(a, attribute); }),
                "attributes stay");
        if (attribute.type == AttributeType::bytes) requirePicture(attribute.value);
    }
    require(written(again) == bytes, "a header written once is written the same again");

    for (const std::u16string_view name : {u"Title", u"WM/Genre"}) {
        again.setText(name, u"7");
        const Header changed = readAgain(written(again));
        const Attribute* const found = changed.find(name);
        require(found != nullptr && found->text() == u"7", "a text that was set is read");
        again.setText(name, u"");
    }
    written(again);
    return 0;
}
