#pragma once

// Reading and rewriting the header of an ASF file (.wma), with no Windows in it: the tags and
// pictures that the stand-in player and the stand-in Format runtime work on.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::asf {

// The numbering of the file format's Extended Content Description and Metadata Library objects.
enum class AttributeType : std::uint16_t {
    unicode = 0,
    bytes = 1,
    boolean = 2,
    dword = 3,
    qword = 4,
    word = 5,
    guid = 6,
};

// One tag, whichever object of the header holds it. Text values are UTF-16 without terminator in
// `value`, little-endian; numbers little-endian.
struct Attribute {
    std::u16string name;
    AttributeType type = AttributeType::unicode;
    std::uint16_t language = 0;
    std::uint16_t stream = 0;
    std::vector<std::uint8_t> value;

    [[nodiscard]] std::u16string text() const;  // any type, as a player would show it
    static Attribute fromText(std::u16string_view name, std::u16string_view text);
};

// The parsed header. Unknown objects are kept byte for byte; what is not understood is never
// dropped. "Title", "Author", "Copyright", "Description" and "Rating" are the five fields of the
// Content Description object, everything else an attribute of one of the other three objects;
// a value too large for a 16-bit length goes to the Metadata Library object.
class Header {
public:
    // Reads the header at the start of a file; `error` gets a sentence when it is not one.
    static std::optional<Header> parse(const std::vector<std::uint8_t>& bytes, std::string& error);

    [[nodiscard]] const std::vector<Attribute>& attributes() const { return m_attributes; }
    std::vector<Attribute>& attributes() { return m_attributes; }

    // First attribute of that name (case matters), or null.
    [[nodiscard]] const Attribute* find(std::u16string_view name) const;
    // Replaces the first of that name in place or appends it; an empty text removes it.
    void setText(std::u16string_view name, std::u16string_view text);

    [[nodiscard]] std::uint64_t durationHns() const;  // play duration, 100 ns units
    [[nodiscard]] std::uint32_t bitrate() const;      // bits per second

    [[nodiscard]] std::vector<std::uint8_t> serialise() const;

private:
    struct RawObject;
    std::vector<Attribute> m_attributes;
};

// Reads only the header of the file at `path`; the audio data is not touched.
std::optional<Header> readHeader(const std::filesystem::path& path, std::string& error);

// Writes the file anew with this header and the old audio data, beside the old one, and puts it in
// its place in one step: a failure half-way leaves the old file whole.
bool replaceHeader(const std::filesystem::path& path, const Header& header, std::string& error);

}  // namespace orvane::asf
