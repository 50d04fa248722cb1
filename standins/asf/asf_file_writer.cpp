#include "standins/asf/asf_file.h"

#include <algorithm>
#include <array>
#include <new>
#include <unordered_set>

#include "standins/asf/bytes.h"
#include "standins/asf/content_fields.h"

namespace orvane::asf {

namespace {

constexpr std::size_t kLargest16 = 0xFFFF;
constexpr std::size_t kFileSizeAt = 40;  // in the File Properties object

bool isText(const Attribute& a) { return a.type == AttributeType::unicode; }

// With its terminator, and booleans in the width that the object asks for.
std::size_t sizeIn(Place place, const Attribute& a) {
    if (isText(a)) return a.value.size() + 2;
    if (a.type == AttributeType::boolean && (a.value.size() == 2 || a.value.size() == 4))
        return place == Place::extendedContentDescription ? 4 : 2;
    return a.value.size();
}

void putValue(Bytes& out, Place place, const Attribute& a) {
    const std::size_t size = sizeIn(place, a);
    if (a.type == AttributeType::boolean && size != a.value.size()) {
        putNumber(out, a.number() != 0 ? 1 : 0, static_cast<unsigned>(size));
        return;
    }
    putBytes(out, a.value);
    if (isText(a)) putNumber(out, 0, 2);
}

std::size_t nameSize(const Attribute& a) { return (a.name.size() + 1) * 2; }

// Begins an object whose size is filled in when it is complete.
class ObjectFrame {
public:
    ObjectFrame(Bytes& out, const Guid& guid) : m_out(out), m_start(out.size()) {
        putBytes(out, guid);
        putNumber(out, 0, 8);
    }
    ~ObjectFrame() { overwriteNumber(m_out, m_start + 16, m_out.size() - m_start, 8); }
    ObjectFrame(const ObjectFrame&) = delete;
    ObjectFrame& operator=(const ObjectFrame&) = delete;

private:
    Bytes& m_out;
    std::size_t m_start;
};

}  // namespace

// Gives each attribute its object, then writes the pieces in their order.
class HeaderWriter {
public:
    HeaderWriter(const Header& header, std::string& error) : m_header(header), m_error(error) {}

    std::optional<Bytes> write(std::uint64_t bytesAfterHeader) {
        if (!assignPlaces()) return std::nullopt;
        Bytes out;
        std::uint64_t objects = 0;
        std::optional<std::size_t> fileProperties;
        {
            const ObjectFrame frame(out, kHeaderGuid);
            const std::size_t countAt = out.size();
            putNumber(out, 0, 4);
            putNumber(out, 1, 1);
            putNumber(out, 2, 1);
            for (const Header::Piece& piece : m_header.m_pieces) {
                if (piece.kind == Header::Kind::fileProperties) fileProperties = out.size();
                objects += putPiece(out, piece);
            }
            for (const Kind kind : {Kind::contentDescription, Kind::extendedContentDescription,
                                    Kind::headerExtension})
                if (isMissing(kind)) objects += putPiece(out, {kind, 1, {}});
            overwriteNumber(out, countAt, objects, 4);
        }
        if (out.size() > Header::kMaximumSize) return fail("The header becomes too large.");
        if (fileProperties)
            overwriteNumber(out, *fileProperties + kFileSizeAt, out.size() + bytesAfterHeader, 8);
        return out;
    }

private:
    using Kind = Header::Kind;

    std::nullopt_t fail(const char* sentence) {
        m_error = sentence;
        return std::nullopt;
    }

    // ---- who goes where

    static bool fitsContentDescription(const Attribute& a) {
        return contentField(a.name) && isText(a) && a.stream == 0 && a.language == 0 &&
               sizeIn(Place::contentDescription, a) <= kLargest16;
    }
    static bool fitsExtended(const Attribute& a) {
        return a.stream == 0 && a.language == 0 && a.type != AttributeType::guid &&
               sizeIn(Place::extendedContentDescription, a) <= kLargest16;
    }
    static bool fitsMetadata(const Attribute& a) {
        return a.language == 0 && sizeIn(Place::metadata, a) <= kLargest16;
    }

    bool takeField(const Attribute& a) {
        const Attribute*& slot = m_fields[*contentField(a.name)];
        if (slot != nullptr) return false;
        slot = &a;
        return true;
    }

    // True when the attribute can stay in the object that it was read from.
    bool stays(const Attribute& a) {
        switch (a.place) {
            case Place::contentDescription:
                return fitsContentDescription(a) && takeField(a);
            case Place::extendedContentDescription:
                if (!fitsExtended(a) || m_extendedCount == kLargest16) return false;
                ++m_extendedCount;
                m_names.insert(a.name);
                return true;
            case Place::metadata:
                return fitsMetadata(a);
            case Place::metadataLibrary:
                m_names.insert(a.name);
                return true;
            case Place::automatic:
                break;
        }
        return false;
    }

    // A second attribute of one name goes to the library even where the first is there, too: so
    // they are read in the order in which they were written.
    Place newPlace(const Attribute& a) {
        if (fitsContentDescription(a) && takeField(a)) return Place::contentDescription;
        const bool isFirst = m_names.insert(a.name).second;
        if (!isFirst || !fitsExtended(a) || m_extendedCount == kLargest16)
            return Place::metadataLibrary;
        ++m_extendedCount;
        return Place::extendedContentDescription;
    }

    bool assignPlaces() {
        const std::vector<Attribute>& attributes = m_header.m_attributes;
        std::vector<Place> places(attributes.size(), Place::automatic);
        for (std::size_t i = 0; i < attributes.size(); ++i) {
            const Attribute& a = attributes[i];
            if (nameSize(a) > kLargest16 || a.value.size() > Header::kMaximumSize) {
                fail("An attribute's name or value is too long.");
                return false;
            }
            if (stays(a)) places[i] = a.place;
        }
        for (std::size_t i = 0; i < attributes.size(); ++i) {
            if (places[i] == Place::automatic) places[i] = newPlace(attributes[i]);
            if (places[i] == Place::extendedContentDescription)
                m_extended.push_back(&attributes[i]);
            if (places[i] == Place::metadata) m_metadata.push_back(&attributes[i]);
            if (places[i] == Place::metadataLibrary) m_library.push_back(&attributes[i]);
        }
        if (m_metadata.size() > kLargest16 || m_library.size() > kLargest16) {
            fail("The header has more attributes than the format can hold.");
            return false;
        }
        return true;
    }

    // ---- what is written

    // An object that the header did not have is added only when something goes into it.
    bool isMissing(Kind kind) const {
        const auto has = [](const std::vector<Header::Piece>& pieces, Kind wanted) {
            return std::ranges::any_of(
                pieces, [wanted](const Header::Piece& p) { return p.kind == wanted; });
        };
        switch (kind) {
            case Kind::contentDescription:
                return !has(m_header.m_pieces, kind) &&
                       std::ranges::any_of(m_fields,
                                           [](const Attribute* a) { return a != nullptr; });
            case Kind::extendedContentDescription:
                return !has(m_header.m_pieces, kind) && !m_extended.empty();
            case Kind::headerExtension:
                return !has(m_header.m_pieces, kind) &&
                       (isMissing(Kind::metadata) || isMissing(Kind::metadataLibrary));
            case Kind::metadata:
                return !has(m_header.m_extensionPieces, kind) && !m_metadata.empty();
            case Kind::metadataLibrary:
                return !has(m_header.m_extensionPieces, kind) && !m_library.empty();
            default:
                return false;
        }
    }

    // Answers how many objects it wrote.
    std::uint32_t putPiece(Bytes& out, const Header::Piece& piece) const {
        switch (piece.kind) {
            case Kind::contentDescription:
                putContentDescription(out, piece.bytes);
                return 1;
            case Kind::extendedContentDescription:
                putExtended(out, piece.bytes);
                return 1;
            case Kind::headerExtension:
                putHeaderExtension(out);
                return 1;
            case Kind::metadata:
                putMetadata(out, kMetadataGuid, Place::metadata, m_metadata, piece.bytes);
                return 1;
            case Kind::metadataLibrary:
                putMetadata(out, kMetadataLibraryGuid, Place::metadataLibrary, m_library,
                            piece.bytes);
                return 1;
            default:
                putBytes(out, piece.bytes);
                return piece.objects;
        }
    }

    void putContentDescription(Bytes& out, const Bytes& tail) const {
        const ObjectFrame frame(out, kContentDescriptionGuid);
        for (const Attribute* field : m_fields)
            putNumber(out, field ? sizeIn(Place::contentDescription, *field) : 0, 2);
        for (const Attribute* field : m_fields)
            if (field) putValue(out, Place::contentDescription, *field);
        putBytes(out, tail);
    }

    void putExtended(Bytes& out, const Bytes& tail) const {
        constexpr Place place = Place::extendedContentDescription;
        const ObjectFrame frame(out, kExtendedContentDescriptionGuid);
        putNumber(out, m_extended.size(), 2);
        for (const Attribute* a : m_extended) {
            putNumber(out, nameSize(*a), 2);
            putTerminatedText(out, a->name);
            putNumber(out, static_cast<std::uint16_t>(a->type), 2);
            putNumber(out, sizeIn(place, *a), 2);
            putValue(out, place, *a);
        }
        putBytes(out, tail);
    }

    static void putMetadata(Bytes& out, const Guid& guid, Place place,
                            const std::vector<const Attribute*>& attributes, const Bytes& tail) {
        const ObjectFrame frame(out, guid);
        putNumber(out, attributes.size(), 2);
        for (const Attribute* a : attributes) {
            putNumber(out, a->language, 2);
            putNumber(out, a->stream, 2);
            putNumber(out, nameSize(*a), 2);
            putNumber(out, static_cast<std::uint16_t>(a->type), 2);
            putNumber(out, sizeIn(place, *a), 4);
            putTerminatedText(out, a->name);
            putValue(out, place, *a);
        }
        putBytes(out, tail);
    }

    void putHeaderExtension(Bytes& out) const {
        const ObjectFrame frame(out, kHeaderExtensionGuid);
        putBytes(out, kHeaderExtensionReservedGuid);
        putNumber(out, 6, 2);
        const std::size_t sizeAt = out.size();
        putNumber(out, 0, 4);
        for (const Header::Piece& piece : m_header.m_extensionPieces) putPiece(out, piece);
        for (const Kind kind : {Kind::metadata, Kind::metadataLibrary})
            if (isMissing(kind)) putPiece(out, {kind, 1, {}});
        overwriteNumber(out, sizeAt, out.size() - sizeAt - 4, 4);
    }

    const Header& m_header;
    std::string& m_error;
    std::array<const Attribute*, kContentFields.size()> m_fields{};
    std::vector<const Attribute*> m_extended;
    std::size_t m_extendedCount = 0;
    std::unordered_set<std::u16string_view> m_names;  // extended or library
    std::vector<const Attribute*> m_metadata;
    std::vector<const Attribute*> m_library;
};

std::optional<std::vector<std::uint8_t>> Header::serialise(std::uint64_t bytesAfterHeader,
                                                           std::string& error) const {
    try {
        return HeaderWriter(*this, error).write(bytesAfterHeader);
    } catch (const std::bad_alloc&) {
        error = "There is not enough memory for the header.";
        return std::nullopt;
    }
}

}  // namespace orvane::asf
