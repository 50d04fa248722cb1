// Fuzzes the conversion from UTF-8: the result is always a text, valid input is unchanged, and
// nothing is read or written past a buffer.

#include "util/text/text.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/require.h"
#include "fuzz/strict_utf8.h"
#include "util/text/utf8.h"

using namespace orvane;
using fuzz::require;

namespace {

// Unicode's last two of the first plane stand for no character, and count as malformed.
bool isCharacter(std::string_view one) { return one != "\xEF\xBF\xBE" && one != "\xEF\xBF\xBF"; }

// What the text has to become: each malformed piece, as long as the decoder says, is one U+FFFD.
std::string repaired(const std::string& text) {
    std::string result;
    for (const char* at = text.c_str(); *at != '\0';) {
        const std::string_view rest(at);
        Wide units[2];
        bool replaced = false;
        const char* const next = utl_utf8_decode_char(at, rest.size() + 1, units, &replaced, 0);
        require(next > at && next <= at + rest.size(), "each step goes on within the text");
        const std::size_t length = fuzz::strictLength(rest);
        const bool good = length != 0 && isCharacter(rest.substr(0, length));
        require(replaced != good, "exactly what is malformed is replaced");
        require(!good || next == at + length, "a character is read whole");
        result += good ? rest.substr(0, length) : "\xEF\xBF\xBD";
        at = next;
    }
    return result;
}

// Bytes that no NUL ends, in memory of their very size: no step looks past them.
void requireWithin(const std::vector<char>& bytes) {
    const char* const end = bytes.data() + bytes.size();
    for (const char* at = bytes.data(); at != end;) {
        Wide units[2];
        const char* const next =
            utl_utf8_decode_char(at, static_cast<std::size_t>(end - at), units, nullptr, 0);
        require(next > at && next <= end, "each step goes on within the bytes");
        at = next;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::span<const std::uint8_t> input(data, size);
    const std::size_t bufferSize = fuzz::takeChoice(input);
    const std::string text(
        std::string(reinterpret_cast<const char*>(input.data()), input.size()).c_str());

    requireWithin({input.begin(), input.end()});

    const OwnedWide wide = utl_utf8_to_wide_intl(text.c_str(), 1);
    require(wide != nullptr, "any text can be converted");
    const OwnedText back = utl_wide_to_utf8(wide.get());
    require(back != nullptr, "what it became is UTF-16");
    require(back.get() == repaired(text), "it is the same text, repaired");

    // Memory of the buffer's very size, so that a unit too many is seen.
    const std::size_t units = std::char_traits<Wide>::length(wide.get());
    const std::unique_ptr<void, FreeDeleter> memory(std::malloc(bufferSize));
    if (memory == nullptr) return 0;
    auto* const buffer = static_cast<Wide*>(memory.get());
    const bool fits = utl_utf8_to_wide_buf(text.c_str(), buffer, bufferSize, 1);
    require(fits == (bufferSize / sizeof(Wide) > units), "a buffer is enough or it is not");
    if (fits)
        require(std::memcmp(buffer, wide.get(), (units + 1) * sizeof(Wide)) == 0, "same text");
    return 0;
}
