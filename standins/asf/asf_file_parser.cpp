#include <algorithm>
#include <array>
#include <iterator>

#include "standins/asf/error.h"
#include "standins/asf/header_objects.h"

namespace orvane::asf {

namespace {

// Numbers keep their bytes whatever their count is; only text loses its terminator.
Bytes valueFrom(AttributeType type, std::span<const std::uint8_t> bytes) {
    if (type == AttributeType::unicode) bytes = withoutTerminator(bytes);
    return {bytes.begin(), bytes.end()};
}

std::u16string nameFrom(std::span<const std::uint8_t> bytes) {
    return textFrom(withoutTerminator(bytes));
}

}  // namespace

// Reads one header into a Header. What does not add up is thrown as an Error.
class HeaderParser {
public:
    explicit HeaderParser(Header& header) : m_header(header) {}

    void header(std::span<const std::uint8_t> bytes) {
        constexpr std::size_t prefix = 30;
        ByteReader reader(bytes);
        if (reader.guid() != kHeaderGuid)
            throw Error("The file does not begin with an ASF header.");
        const std::uint64_t size = reader.u64();
        if (size < prefix || size > bytes.size())
            throw Error("The header says that it is larger than what there is.");
        if (size > Header::kMaximumSize) throw Error("The header is too large.");
        const std::uint32_t count = reader.u32();
        const auto content = bytes.subspan(prefix, static_cast<std::size_t>(size) - prefix);
        if (objects(content, m_header.m_pieces, false) != count)
            throw Error("The header holds another number of objects than it says.");
        if (!m_seen[index(Place::fileProperties)])
            throw Error("The header has no File Properties object.");
        // The order of attributes does not depend on the order of the objects that hold them.
        std::ranges::stable_sort(m_header.m_attributes, {}, &Attribute::place);
    }

private:
    // Returns how many objects there are.
    std::uint32_t objects(std::span<const std::uint8_t> bytes, std::vector<Header::Piece>& pieces,
                          bool inExtension) {
        std::uint32_t count = 0;
        for (; !bytes.empty(); ++count) {
            ByteReader reader(bytes);
            const Guid guid = reader.guid();
            const std::uint64_t size = reader.u64();
            if (size < kObjectPrefix || size > bytes.size())
                throw Error("An object of the header reaches past the header's end.");
            const auto whole = bytes.first(static_cast<std::size_t>(size));
            bytes = bytes.subspan(whole.size());
            // An object of a known kind may be there once; a second one is kept unread.
            const auto* const known = std::ranges::find_if(kObjects, [&](const HeaderObject& one) {
                return one.guid == guid && one.inExtension == inExtension &&
                       !m_seen[index(one.place)];
            });
            if (known == std::end(kObjects))
                keep(whole, pieces);
            else
                object(known->place, whole, pieces);
        }
        return count;
    }

    // Neighbours share one piece: a header of a million empty objects is one run of bytes.
    static void keep(std::span<const std::uint8_t> whole, std::vector<Header::Piece>& pieces) {
        if (pieces.empty() || pieces.back().object != Place::automatic)
            pieces.push_back({Place::automatic, 0, {}});
        putBytes(pieces.back().bytes, whole);
        ++pieces.back().objects;
    }

    void object(Place place, std::span<const std::uint8_t> whole,
                std::vector<Header::Piece>& pieces) {
        m_seen[index(place)] = true;
        ByteReader reader(whole.subspan(kObjectPrefix));
        if (place == Place::fileProperties)
            fileProperties(reader);
        else if (place == Place::headerExtension)
            headerExtension(reader);
        else if (place == Place::contentDescription)
            contentDescription(reader);
        else
            attributeList(reader, place);
        const auto kept = place == Place::fileProperties ? whole : reader.rest();
        pieces.push_back({place, 1, {kept.begin(), kept.end()}});
    }

    void fileProperties(ByteReader& reader) {
        reader.take(40);  // file identifier, size, creation date, packets
        const std::uint64_t playHns = reader.u64();
        reader.u64();  // send duration
        const std::uint64_t prerollMs = reader.u64();
        reader.take(12);  // flags, packet sizes
        m_header.m_bitrate = reader.u32();
        // The play duration counts the time in which the buffer fills.
        m_header.m_durationHns = prerollMs <= playHns / 10000 ? playHns - prerollMs * 10000 : 0;
    }

    void contentDescription(ByteReader& reader) {
        std::array<std::uint16_t, kContentFields.size()> lengths{};
        for (auto& length : lengths) length = reader.u16();
        for (std::size_t i = 0; i < lengths.size(); ++i) {
            Attribute field;
            field.name = kContentFields[i];
            field.value = valueFrom(AttributeType::unicode, reader.take(lengths[i]));
            field.place = Place::contentDescription;
            if (!field.value.empty()) m_header.m_attributes.push_back(std::move(field));
        }
    }

    void attributeList(ByteReader& reader, Place place) {
        const bool extended = place == Place::extendedContentDescription;
        for (unsigned count = reader.u16(); count > 0; --count) {
            Attribute attribute;
            attribute.place = place;
            if (!extended) {
                attribute.language = reader.u16();  // reserved, 0, in the Metadata object
                attribute.stream = reader.u16();
            }
            const std::uint16_t nameLength = reader.u16();
            if (extended) attribute.name = nameFrom(reader.take(nameLength));
            attribute.type = static_cast<AttributeType>(reader.u16());
            const std::uint32_t valueLength = extended ? reader.u16() : reader.u32();
            if (!extended) attribute.name = nameFrom(reader.take(nameLength));
            attribute.value = valueFrom(attribute.type, reader.take(valueLength));
            m_header.m_attributes.push_back(std::move(attribute));
        }
    }

    void headerExtension(ByteReader& reader) {
        if (reader.guid() != kHeaderExtensionReservedGuid || reader.u16() != 6)
            throw Error("The Header Extension object is not one.");
        if (reader.u32() != reader.rest().size())
            throw Error("The Header Extension object's size is not that of what it holds.");
        objects(reader.take(reader.rest().size()), m_header.m_extensionPieces, true);
    }

    Header& m_header;
    std::array<bool, kPlaces> m_seen{};
};

std::optional<Header> Header::parse(std::span<const std::uint8_t> bytes, std::string& error) {
    return explained(error, [&]() -> std::optional<Header> {
        Header header;
        HeaderParser(header).header(bytes);
        return header;
    });
}

}  // namespace orvane::asf
