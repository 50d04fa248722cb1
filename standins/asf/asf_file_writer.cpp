#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

#include "standins/asf/error.h"
#include "standins/asf/header_objects.h"

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
    explicit HeaderWriter(const Header& header) : m_header(header) {}

    Bytes write(std::uint64_t bytesAfterHeader) {
        for (const Attribute& a : m_header.m_attributes) {
            if (nameSize(a) > kLargest16 || a.value.size() > Header::kMaximumSize)
                throw Error("An attribute's name or value is too long.");
            in(placeOf(a)).push_back(&a);
        }
        if (in(Place::metadata).size() > kLargest16 ||
            in(Place::metadataLibrary).size() > kLargest16)
            throw Error("The header has more attributes than the format can hold.");
        Bytes out;
        {
            const ObjectFrame frame(out, kHeaderGuid);
            const std::size_t countAt = out.size();
            putNumber(out, 0, 4);
            putNumber(out, 0x0201, 2);
            overwriteNumber(out, countAt, putPieces(out, m_header.m_pieces, false), 4);
        }
        if (out.size() > Header::kMaximumSize) throw Error("The header becomes too large.");
        if (m_filePropertiesAt)
            overwriteNumber(out, *m_filePropertiesAt + kFileSizeAt, out.size() + bytesAfterHeader,
                            8);
        return out;
    }

private:
    using Attributes = std::vector<const Attribute*>;

    Attributes& in(Place place) { return m_in[index(place)]; }

    // Where it was read from, if it still fits there; what is new goes to the first place that it
    // fits. A second new attribute of one name goes to the library, even when the first is there
    // too: then they are read in the order in which they were written.
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

    bool isNeeded(Place place) {
        if (place != Place::headerExtension) return !in(place).empty();
        return isNeeded(Place::metadata) || isNeeded(Place::metadataLibrary);
    }

    // An object that the header did not have is added only when something goes into it. Returns
    // how many objects there are.
    std::uint32_t putPieces(Bytes& out, const std::vector<Header::Piece>& pieces,
                            bool inExtension) {
        std::uint32_t objects = 0;
        std::array<bool, kPlaces> there{};
        for (const Header::Piece& piece : pieces) {
            there[index(piece.object)] = true;
            putPiece(out, piece);
            objects += piece.objects;
        }
        for (const HeaderObject& known : kObjects) {
            if (known.inExtension != inExtension || there[index(known.place)] ||
                !isNeeded(known.place))
                continue;
            putPiece(out, {known.place, 1, {}});
            ++objects;
        }
        return objects;
    }

    void putPiece(Bytes& out, const Header::Piece& piece) {
        if (piece.object == Place::fileProperties) m_filePropertiesAt = out.size();
        if (piece.object == Place::automatic || piece.object == Place::fileProperties) {
            putBytes(out, piece.bytes);
            return;
        }
        const ObjectFrame frame(
            out, std::ranges::find(kObjects, piece.object, &HeaderObject::place)->guid);
        if (piece.object == Place::contentDescription)
            putFields(out);
        else if (piece.object == Place::headerExtension)
            putHeaderExtension(out);
        else
            putList(out, piece.object);
        putBytes(out, piece.bytes);
    }

    void putFields(Bytes& out) {
        constexpr Place place = Place::contentDescription;
        std::array<const Attribute*, kContentFields.size()> fields{};
        for (const Attribute* a : in(place)) fields[*contentField(a->name)] = a;
        for (const Attribute* a : fields) putNumber(out, a ? sizeIn(place, *a) : 0, 2);
        for (const Attribute* a : fields)
            if (a) putValue(out, place, *a);
    }

    void putList(Bytes& out, Place place) {
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

    void putHeaderExtension(Bytes& out) {
        putBytes(out, kHeaderExtensionReservedGuid);
        putNumber(out, 6, 2);
        const std::size_t sizeAt = out.size();
        putNumber(out, 0, 4);
        putPieces(out, m_header.m_extensionPieces, true);
        overwriteNumber(out, sizeAt, out.size() - sizeAt - 4, 4);
    }

    const Header& m_header;
    std::array<Attributes, kPlaces> m_in;
    std::array<bool, kContentFields.size()> m_fieldTaken{};
    std::unordered_set<std::u16string_view> m_names;  // extended or library
    std::optional<std::size_t> m_filePropertiesAt;
};

std::optional<Bytes> Header::serialise(std::uint64_t bytesAfterHeader, std::string& error) const {
    return explained(error,
                     [&] { return std::optional(HeaderWriter(*this).write(bytesAfterHeader)); });
}

}  // namespace orvane::asf
