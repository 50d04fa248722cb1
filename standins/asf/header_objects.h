#pragma once

// The objects of the header that we understand, and the fields of one of them.

#include <optional>
#include <string_view>

#include "standins/asf/asf_file.h"
#include "standins/asf/bytes.h"

namespace orvane::asf {

// From the usual notation: the first three groups are little-endian numbers in the file.
constexpr Guid makeGuid(std::uint32_t a, std::uint16_t b, std::uint16_t c, std::uint64_t d) {
    Guid guid{};
    for (unsigned i = 0; i < 4; ++i) guid[i] = static_cast<std::uint8_t>(a >> (8 * i));
    for (unsigned i = 0; i < 2; ++i) guid[4 + i] = static_cast<std::uint8_t>(b >> (8 * i));
    for (unsigned i = 0; i < 2; ++i) guid[6 + i] = static_cast<std::uint8_t>(c >> (8 * i));
    for (unsigned i = 0; i < 8; ++i) guid[8 + i] = static_cast<std::uint8_t>(d >> (56 - 8 * i));
    return guid;
}

inline constexpr Guid kHeaderGuid = makeGuid(0x75B22630, 0x668E, 0x11CF, 0xA6D900AA0062CE6C);
inline constexpr Guid kHeaderExtensionReservedGuid =
    makeGuid(0xABD3D211, 0xA9BA, 0x11CF, 0x8EE600C00C205365);
inline constexpr std::size_t kObjectPrefix = 24;  // bytes of an object's identifier and size

struct HeaderObject {
    Place place;
    bool inExtension;  // inside the Header Extension object, else directly in the Header object
    Guid guid;
};
inline constexpr HeaderObject kObjects[] = {
    {Place::fileProperties, false, makeGuid(0x8CABDCA1, 0xA947, 0x11CF, 0x8EE400C00C205365)},
    {Place::contentDescription, false, makeGuid(0x75B22633, 0x668E, 0x11CF, 0xA6D900AA0062CE6C)},
    {Place::extendedContentDescription, false,
     makeGuid(0xD2D0A440, 0xE307, 0x11D2, 0x97F000A0C95EA850)},
    {Place::headerExtension, false, makeGuid(0x5FBF03B5, 0xA92E, 0x11CF, 0x8EE300C00C205365)},
    {Place::metadata, true, makeGuid(0xC5F8CBEA, 0x5BAF, 0x4877, 0x8467AA8C44FA4CCA)},
    {Place::metadataLibrary, true, makeGuid(0x44231C94, 0x9498, 0x49D1, 0xA1411D134E457054)}};

// For arrays with one element for each Place.
inline constexpr std::size_t kPlaces = 7;
constexpr std::size_t index(Place place) { return static_cast<std::size_t>(place); }

// The fields of the Content Description object, in their order there.
inline constexpr std::array<std::u16string_view, 5> kContentFields = {
    u"Title", u"Author", u"Copyright", u"Description", u"Rating"};

inline std::optional<std::size_t> contentField(std::u16string_view name) {
    for (std::size_t i = 0; i < kContentFields.size(); ++i)
        if (kContentFields[i] == name) return i;
    return std::nullopt;
}

}  // namespace orvane::asf
