#include "standins/asf/asf_file.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>
#include <new>
#include <unordered_set>
#include <utility>

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
        for (const Attribute& a : m_header.m_attributes) {
            if (nameSize(a) > kLargest16 || a.value.size() > Header::kMaximumSize)
                return fail("An attribute's name or value is too long.");
            in(placeOf(a)).push_back(&a);
        }
        if (in(Place::metadata).size() > kLargest16 ||
            in(Place::metadataLibrary).size() > kLargest16)
            return fail("The header has more attributes than the format can hold.");
        Bytes out;
        std::uint64_t objects = 0;
        std::optional<std::size_t> fileProperties;
        {
            const ObjectFrame frame(out, kHeaderGuid);
            const std::size_t countAt = out.size();
            putNumber(out, 0, 4);
            putNumber(out, 0x0201, 2);
            for (const Header::Piece& piece : m_header.m_pieces) {
                if (piece.kind == Kind::fileProperties) fileProperties = out.size();
                objects += putPiece(out, piece);
            }
            objects += putMissing(out, m_header.m_pieces,
                                  {Kind::contentDescription, Kind::extendedContentDescription,
                                   Kind::headerExtension});
            overwriteNumber(out, countAt, objects, 4);
        }
        if (out.size() > Header::kMaximumSize) return fail("The header becomes too large.");
        if (fileProperties)
            overwriteNumber(out, *fileProperties + kFileSizeAt, out.size() + bytesAfterHeader, 8);
        return out;
    }

private:
    using Kind = Header::Kind;
    using Attributes = std::vector<const Attribute*>;

    std::nullopt_t fail(const char* sentence) {
        m_error = sentence;
        return std::nullopt;
    }
    Attributes& in(Place place) { return m_in[static_cast<std::size_t>(place)]; }
    [[nodiscard]] const Attributes& in(Place place) const {
        return m_in[static_cast<std::size_t>(place)];
    }

    // ---- who goes where

    // Where it was read from, if it still fits there; what is new goes to the first place that it
    // fits. A second attribute of one name is new to the library, even where the first is there,
    // too: so they are read in the order in which they were written.
    Place placeOf(const Attribute& a) {
        const bool isNew = a.place == Place::automatic;
        const bool plain = a.stream == 0 && a.language == 0;
        const auto fits = [&](Place place) { return sizeIn(place, a) <= kLargest16; };
        const auto may = [&](Place place) { return (isNew || a.place == place) && fits(place); };
        if (a.place == Place::metadata && a.language == 0 && fits(a.place)) return a.place;
        const auto field = contentField(a.name);
        if (plain && field && isText(a) && may(Place::contentDescription) &&
            !std::exchange(m_fieldTaken[*field], true))
            return Place::contentDescription;
        const bool isFirst = m_names.insert(a.name).second;
        if (plain && a.type != AttributeType::guid && may(Place::extendedContentDescription) &&
            (isFirst || !isNew) && in(Place::extendedContentDescription).size() < kLargest16)
            return Place::extendedContentDescription;
        return Place::metadataLibrary;
    }

    // ---- what is written

    // The objects that hold attributes.
    struct List {
        Kind kind;
        Place place;
        Guid guid;
    };
    static constexpr List kLists[] = {
        {Kind::contentDescription, Place::contentDescription, kContentDescriptionGuid},
        {Kind::extendedContentDescription, Place::extendedContentDescription,
         kExtendedContentDescriptionGuid},
        {Kind::metadata, Place::metadata, kMetadataGuid},
        {Kind::metadataLibrary, Place::metadataLibrary, kMetadataLibraryGuid}};
    static const List* listOf(Kind kind) {
        const auto* const found = std::ranges::find(kLists, kind, &List::kind);
        return found == std::end(kLists) ? nullptr : found;
    }

    [[nodiscard]] bool isNeeded(Kind kind) const {
        if (const List* const list = listOf(kind)) return !in(list->place).empty();
        return isNeeded(Kind::metadata) || isNeeded(Kind::metadataLibrary);
    }

    // An object that the header did not have is added only when something goes into it. Answers
    // how many.
    std::uint32_t putMissing(Bytes& out, const std::vector<Header::Piece>& there,
                             std::initializer_list<Kind> kinds) const {
        std::uint32_t objects = 0;
        for (const Kind kind : kinds)
            if (isNeeded(kind) &&
                std::ranges::find(there, kind, &Header::Piece::kind) == there.end())
                objects += putPiece(out, {kind, 1, {}});
        return objects;
    }

    // Answers how many objects it wrote.
    std::uint32_t putPiece(Bytes& out, const Header::Piece& piece) const {
        if (const List* const list = listOf(piece.kind)) {
            const ObjectFrame frame(out, list->guid);
            if (list->place == Place::contentDescription)
                putFields(out);
            else
                putList(out, list->place);
            putBytes(out, piece.bytes);
            return 1;
        }
        if (piece.kind == Kind::headerExtension) {
            putHeaderExtension(out);
            return 1;
        }
        putBytes(out, piece.bytes);
        return piece.objects;
    }

    void putFields(Bytes& out) const {
        constexpr Place place = Place::contentDescription;
        std::array<const Attribute*, kContentFields.size()> fields{};
        for (const Attribute* a : in(place)) fields[*contentField(a->name)] = a;
        for (const Attribute* a : fields) putNumber(out, a ? sizeIn(place, *a) : 0, 2);
        for (const Attribute* a : fields)
            if (a) putValue(out, place, *a);
    }

    void putList(Bytes& out, Place place) const {
        const bool extended = place == Place::extendedContentDescription;
        putNumber(out, in(place).size(), 2);
        for (const Attribute* a : in(place)) {
            if (!extended) putNumber(out, a->language, 2);
            if (!extended) putNumber(out, a->stream, 2);
            putNumber(out, nameSize(*a), 2);
            if (extended) putTerminatedText(out, a->name);
            putNumber(out, static_cast<std::uint16_t>(a->type), 2);
            putNumber(out, sizeIn(place, *a), extended ? 2 : 4);
            if (!extended) putTerminatedText(out, a->name);
            putValue(out, place, *a);
        }
    }

    void putHeaderExtension(Bytes& out) const {
        const ObjectFrame frame(out, kHeaderExtensionGuid);
        putBytes(out, kHeaderExtensionReservedGuid);
        putNumber(out, 6, 2);
        const std::size_t sizeAt = out.size();
        putNumber(out, 0, 4);
        for (const Header::Piece& piece : m_header.m_extensionPieces) putPiece(out, piece);
        putMissing(out, m_header.m_extensionPieces, {Kind::metadata, Kind::metadataLibrary});
        overwriteNumber(out, sizeAt, out.size() - sizeAt - 4, 4);
    }

    const Header& m_header;
    std::string& m_error;
    std::array<Attributes, 5> m_in;  // by place
    std::array<bool, kContentFields.size()> m_fieldTaken{};
    std::unordered_set<std::u16string_view> m_names;  // extended or library
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
