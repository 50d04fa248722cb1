#pragma once

// Reading and rewriting the header of an ASF file (.wma), with no Windows in it: the tags and
// pictures that the stand-in player and the stand-in Format runtime work on. Everything here may
// be called from any thread; no object is shared between threads. Nothing throws.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::asf {

// The numbering of the file format's Extended Content Description and Metadata Library objects.
// A file may hold other numbers; they are kept as they are.
enum class AttributeType : std::uint16_t {
    unicode = 0,
    bytes = 1,
    boolean = 2,
    dword = 3,
    qword = 4,
    word = 5,
    guid = 6,
};

// The object of the header that holds an attribute. One that is new (automatic), or no longer fits
// where it was, goes where the format has room for it: see Header. The last two hold none.
enum class Place : std::uint8_t {
    automatic,
    contentDescription,
    extendedContentDescription,
    metadata,
    metadataLibrary,
    fileProperties,
    headerExtension,
};

// One tag, whichever object of the header holds it. Text values are UTF-16 without terminator in
// `value`, little-endian; numbers little-endian.
struct Attribute {
    std::u16string name;
    AttributeType type = AttributeType::unicode;
    std::uint16_t language = 0;  // index into the header's list of languages
    std::uint16_t stream = 0;    // 0: the whole file
    std::vector<std::uint8_t> value;
    Place place = Place::automatic;

    // As a player would show it: numbers in decimal, "true" or "false", nothing for what is no
    // text.
    [[nodiscard]] std::u16string text() const;
    // The value of a numeric or boolean attribute, 0 for others.
    [[nodiscard]] std::uint64_t number() const;
    static Attribute fromText(std::u16string_view name, std::u16string_view text);
};

// The parsed header. Unknown objects are kept byte for byte; what is not understood is never
// dropped. "Title", "Author", "Copyright", "Description" and "Rating" are the five fields of the
// Content Description object, everything else an attribute of one of the other three objects;
// what has a stream, a language, the name of another attribute or a value too large for a 16-bit
// length goes to the Metadata Library object. Attributes are in the order of these objects,
// whatever their order in the file, and within one of them in that of the file.
class Header {
public:
    // Larger ones are refused: this is many times the largest picture anybody embeds.
    static constexpr std::uint64_t kMaximumSize = 256U << 20U;

    // Reads the header at the start of `bytes`, which may hold more; `error` gets a sentence when
    // it is not one, or when anything in it does not add up.
    static std::optional<Header> parse(std::span<const std::uint8_t> bytes, std::string& error);

    [[nodiscard]] const std::vector<Attribute>& attributes() const { return m_attributes; }
    std::vector<Attribute>& attributes() { return m_attributes; }

    // First attribute of that name (case matters) of the whole file, or null.
    [[nodiscard]] const Attribute* find(std::u16string_view name) const;
    // Makes `text` the only value of that name (of the whole file, in one language): replaces the
    // first in place or appends it. A number stays a number when the text is one. An empty text
    // removes the attribute.
    void setText(std::u16string_view name, std::u16string_view text);

    [[nodiscard]] std::uint64_t durationHns() const { return m_durationHns; }  // 100 ns units
    [[nodiscard]] std::uint32_t bitrate() const { return m_bitrate; }          // bits per second

    // The header as it stands in a file in which `bytesAfterHeader` bytes follow it. Nothing, and
    // a sentence in `error`, when the format has no room for the attributes.
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> serialise(std::uint64_t bytesAfterHeader,
                                                                     std::string& error) const;

private:
    friend class HeaderParser;
    friend class HeaderWriter;

    // A part of the header in its place: one object, or (automatic) a run of whole objects that are
    // kept byte for byte. `bytes` of an object that is written anew is what follows its last entry.
    struct Piece {
        Place object = Place::automatic;
        std::uint32_t objects = 1;
        std::vector<std::uint8_t> bytes;
    };

    std::vector<Piece> m_pieces;           // the Header object's
    std::vector<Piece> m_extensionPieces;  // the Header Extension object's
    std::vector<Attribute> m_attributes;
    std::uint64_t m_durationHns = 0;
    std::uint32_t m_bitrate = 0;
};

// Reads only the header of the file at `path`; the audio data is not touched.
std::optional<Header> readHeader(const std::filesystem::path& path, std::string& error);

// Writes the file anew with this header and the old audio data, beside the old one, and puts it in
// its place in one step: a failure half-way leaves the old file whole, and nothing beside it.
// Nobody else may have the file open. Paths may be longer than 260 characters. For tests it can
// simulate a disk that is full after so many bytes.
bool replaceHeader(const std::filesystem::path& path, const Header& header, std::string& error,
                   std::optional<std::uint64_t> diskFullAfter = {});

}  // namespace orvane::asf
