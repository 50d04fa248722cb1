#include "standins/asf/asf_file.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "standins/asf/bytes.h"
#include "standins/asf/content_fields.h"

namespace orvane::asf {

namespace {

constexpr std::uint64_t kObjectPrefix = 24;  // identifier and size
constexpr std::size_t kFilePropertiesMinimum = 80;

// Numbers keep their bytes whatever their count is; only text loses its terminator.
Bytes valueFrom(AttributeType type, std::span<const std::uint8_t> bytes) {
    if (type == AttributeType::unicode) bytes = withoutTerminator(bytes);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

// Reads one header into a Header. Every step answers false after it has said why in `error`.
class HeaderParser {
public:
    HeaderParser(Header& header, std::string& error) : m_header(header), m_error(error) {}

    bool header(std::span<const std::uint8_t> bytes) {
        ByteReader reader(bytes);
        if (reader.guid() != kHeaderGuid)
            return fail("The file does not begin with an ASF header.");
        const std::uint64_t size = reader.u64();
        if (size < 30 || size > bytes.size())
            return fail("The header says that it is larger than what there is.");
        if (size > Header::kMaximumSize) return fail("The header is too large.");
        const std::uint32_t count = reader.u32();
        reader.take(2);  // reserved: always 1 and 2
        if (!objects(bytes.subspan(30, static_cast<std::size_t>(size - 30)), m_header.m_pieces,
                     &HeaderParser::topObject))
            return false;
        if (m_objects != count)
            return fail("The header holds another number of objects than it says.");
        if (!m_seen[index(Header::Kind::fileProperties)])
            return fail("The header has no File Properties object.");
        // The order of attributes does not hang on the order of the objects that hold them.
        std::ranges::stable_sort(m_header.m_attributes, {}, &Attribute::place);
        return true;
    }

private:
    using ObjectStep = bool (HeaderParser::*)(const Guid&, std::span<const std::uint8_t>,
                                              std::span<const std::uint8_t>,
                                              std::vector<Header::Piece>&);

    static std::size_t index(Header::Kind kind) { return static_cast<std::size_t>(kind); }

    bool fail(const char* sentence) {
        m_error = sentence;
        return false;
    }

    // An object of a kind that may be there once; a second one is kept unread.
    bool firstOf(Header::Kind kind) { return !std::exchange(m_seen[index(kind)], true); }

    bool objects(std::span<const std::uint8_t> bytes, std::vector<Header::Piece>& pieces,
                 ObjectStep step) {
        m_objects = 0;
        while (!bytes.empty()) {
            ByteReader reader(bytes);
            const Guid guid = reader.guid();
            const std::uint64_t size = reader.u64();
            if (reader.failed() || size < kObjectPrefix || size > bytes.size())
                return fail("An object of the header reaches past the header's end.");
            const auto whole = bytes.first(static_cast<std::size_t>(size));
            const std::uint32_t before = m_objects;
            if (!(this->*step)(guid, whole, whole.subspan(kObjectPrefix), pieces)) return false;
            m_objects = before + 1;
            bytes = bytes.subspan(whole.size());
        }
        return true;
    }

    // Neighbours share one piece: a header of a million empty objects is one run of bytes.
    static void keep(std::span<const std::uint8_t> whole, std::vector<Header::Piece>& pieces,
                     Header::Kind kind = Header::Kind::kept) {
        const bool joins = kind == Header::Kind::kept && !pieces.empty() &&
                           pieces.back().kind == Header::Kind::kept;
        if (!joins) pieces.push_back({kind, 0, {}});
        putBytes(pieces.back().bytes, whole);
        ++pieces.back().objects;
    }

    bool topObject(const Guid& guid, std::span<const std::uint8_t> whole,
                   std::span<const std::uint8_t> content, std::vector<Header::Piece>& pieces) {
        if (guid == kFilePropertiesGuid && firstOf(Header::Kind::fileProperties)) {
            keep(whole, pieces, Header::Kind::fileProperties);
            return fileProperties(content);
        }
        if (guid == kContentDescriptionGuid && firstOf(Header::Kind::contentDescription))
            return contentDescription(content, pieces);
        if (guid == kExtendedContentDescriptionGuid &&
            firstOf(Header::Kind::extendedContentDescription))
            return extendedContentDescription(content, pieces);
        if (guid == kHeaderExtensionGuid && firstOf(Header::Kind::headerExtension)) {
            pieces.push_back({Header::Kind::headerExtension, 1, {}});
            return headerExtension(content);
        }
        keep(whole, pieces);
        return true;
    }

    bool extensionObject(const Guid& guid, std::span<const std::uint8_t> whole,
                         std::span<const std::uint8_t> content,
                         std::vector<Header::Piece>& pieces) {
        if (guid == kMetadataGuid && firstOf(Header::Kind::metadata))
            return metadata(content, pieces, Header::Kind::metadata, Place::metadata);
        if (guid == kMetadataLibraryGuid && firstOf(Header::Kind::metadataLibrary))
            return metadata(content, pieces, Header::Kind::metadataLibrary, Place::metadataLibrary);
        keep(whole, pieces);
        return true;
    }

    bool fileProperties(std::span<const std::uint8_t> content) {
        if (content.size() < kFilePropertiesMinimum)
            return fail("The File Properties object is too short.");
        ByteReader reader(content);
        reader.take(40);  // file identifier, size, creation date, packets
        const std::uint64_t playHns = reader.u64();
        reader.u64();  // send duration
        const std::uint64_t prerollMs = reader.u64();
        reader.take(12);  // flags, packet sizes
        m_header.m_bitrate = reader.u32();
        // The play duration counts the time in which the buffer fills.
        m_header.m_durationHns = prerollMs <= playHns / 10000 ? playHns - prerollMs * 10000 : 0;
        return true;
    }

    bool contentDescription(std::span<const std::uint8_t> content,
                            std::vector<Header::Piece>& pieces) {
        ByteReader reader(content);
        std::array<std::uint16_t, kContentFields.size()> lengths{};
        for (auto& length : lengths) length = reader.u16();
        for (std::size_t i = 0; i < lengths.size(); ++i) {
            Attribute field;
            field.name = kContentFields[i];
            field.value = valueFrom(AttributeType::unicode, reader.take(lengths[i]));
            field.place = Place::contentDescription;
            if (!field.value.empty()) m_header.m_attributes.push_back(std::move(field));
        }
        return finish(reader, pieces, Header::Kind::contentDescription);
    }

    bool extendedContentDescription(std::span<const std::uint8_t> content,
                                    std::vector<Header::Piece>& pieces) {
        ByteReader reader(content);
        for (unsigned count = reader.u16(); count > 0 && !reader.failed(); --count) {
            Attribute attribute;
            attribute.name = textFrom(withoutTerminator(reader.take(reader.u16())));
            attribute.type = static_cast<AttributeType>(reader.u16());
            attribute.value = valueFrom(attribute.type, reader.take(reader.u16()));
            attribute.place = Place::extendedContentDescription;
            m_header.m_attributes.push_back(std::move(attribute));
        }
        return finish(reader, pieces, Header::Kind::extendedContentDescription);
    }

    bool metadata(std::span<const std::uint8_t> content, std::vector<Header::Piece>& pieces,
                  Header::Kind kind, Place place) {
        ByteReader reader(content);
        for (unsigned count = reader.u16(); count > 0 && !reader.failed(); --count) {
            Attribute attribute;
            attribute.language = reader.u16();  // reserved, 0, in the Metadata object
            attribute.stream = reader.u16();
            const std::uint16_t nameLength = reader.u16();
            attribute.type = static_cast<AttributeType>(reader.u16());
            const std::uint32_t valueLength = reader.u32();
            attribute.name = textFrom(withoutTerminator(reader.take(nameLength)));
            attribute.value = valueFrom(attribute.type, reader.take(valueLength));
            attribute.place = place;
            m_header.m_attributes.push_back(std::move(attribute));
        }
        return finish(reader, pieces, kind);
    }

    bool finish(const ByteReader& reader, std::vector<Header::Piece>& pieces, Header::Kind kind) {
        if (reader.failed()) return fail("A list of attributes is cut short.");
        pieces.push_back({kind, 1, {reader.rest().begin(), reader.rest().end()}});
        return true;
    }

    bool headerExtension(std::span<const std::uint8_t> content) {
        ByteReader reader(content);
        if (reader.guid() != kHeaderExtensionReservedGuid || reader.u16() != 6)
            return fail("The Header Extension object is not one.");
        if (reader.u32() != reader.remaining() || reader.failed())
            return fail("The Header Extension object's size is not that of what it holds.");
        return objects(reader.rest(), m_header.m_extensionPieces, &HeaderParser::extensionObject);
    }

    Header& m_header;
    std::string& m_error;
    std::uint32_t m_objects = 0;
    std::array<bool, 7> m_seen{};
};

std::optional<Header> Header::parse(std::span<const std::uint8_t> bytes, std::string& error) {
    try {
        Header header;
        if (!HeaderParser(header, error).header(bytes)) return std::nullopt;
        return header;
    } catch (const std::bad_alloc&) {
        error = "There is not enough memory for the header.";
        return std::nullopt;
    }
}

}  // namespace orvane::asf
