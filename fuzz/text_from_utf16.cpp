// Fuzzes the conversion from UTF-16: the UTF-8 converts back to the same units; malformed input
// gives null.

#include "util/text/text.h"

#include <cstring>
#include <memory>
#include <string_view>

#include "fuzz/require.h"
#include "fuzz/strict_utf8.h"

using namespace orvane;
using fuzz::require;

namespace {

using Units = std::basic_string_view<Wide>;

bool isWellFormed(Units text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned unit = text[i];
        if (unit >= 0xFFFE) return false;
        if (unit < 0xD800 || unit > 0xDFFF) continue;
        if (unit > 0xDBFF || ++i == text.size()) return false;
        const unsigned low = text[i];
        if (low < 0xDC00 || low > 0xDFFF) return false;
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Memory of its very size and without a NUL, so that a look past its end is seen.
    const std::size_t count = size / sizeof(Wide);
    const auto memory = std::make_unique<Wide[]>(count);
    if (count != 0) std::memcpy(memory.get(), data, count * sizeof(Wide));
    const Units whole(memory.get(), count);
    const Units text = whole.substr(0, whole.find(Wide{0}));

    std::size_t characters = 0;
    std::size_t bytes = 0;
    const bool measured = utl_wide_buf_utf8_len(memory.get(), count, &characters, bytes, 1);
    require(measured == isWellFormed(text), "exactly what is malformed is refused");
    const OwnedText encoded = utl_wide_buf_to_utf8(memory.get(), count, 1);
    require((encoded != nullptr) == measured, "what can be measured can be converted");
    if (!encoded) return 0;
    require(std::strlen(encoded.get()) == bytes, "it is as long as measured");
    require(fuzz::isStrictUtf8(encoded.get()), "it is UTF-8");
    require(characters <= text.size() && 2 * characters >= text.size(), "characters are counted");

    const OwnedWide back = utl_utf8_to_wide_intl(encoded.get(), 1);
    require(back != nullptr && Units(back.get()) == text, "it is the same text");
    return 0;
}
