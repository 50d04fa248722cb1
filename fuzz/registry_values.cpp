// Fuzzes the conversion of registry values with any data of any type: the result is a text or null,
// and nothing is read past the data's end.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/require.h"
#include "fuzz/strict_utf8.h"
#include "util/log/log.h"
#include "util/registry/registry_value.h"

using namespace orvane;
using fuzz::require;

namespace {

// Stands for the system's: %x% is known, anything else stays.
OwnedWide expandX(const Wide* text, int /*log*/) noexcept {
    const std::basic_string_view<Wide> source(text);
    OwnedWide expanded = allocateWide(source.size() + 1);
    for (std::size_t i = 0, out = 0; expanded && i < source.size(); ++out) {
        constexpr Wide variable[] = {'%', 'x', '%'};
        const bool known = source.substr(i).starts_with({variable, 3});
        expanded[out] = known ? Wide{0xE9} : source[i];
        i += known ? 3 : 1;
    }
    return expanded;
}

// What is logged is put together as the log would.
void writeToNowhere(int /*priority*/, const char* format, va_list args) {
    char line[256];
    require(std::vsnprintf(line, sizeof line, format, args) >= 0, "a log line can be written");
}

std::string hexOf(std::span<const std::uint8_t> data) {
    std::string hex;
    char digits[3];
    for (const std::uint8_t byte : data) {
        std::snprintf(digits, sizeof digits, "%02X", byte);
        hex += digits;
    }
    return hex;
}

bool isText(ValueType type) {
    return type == ValueType::sz || type == ValueType::link || type == ValueType::multiSz;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    setLogWriter(&writeToNowhere);
    std::span<const std::uint8_t> input(bytes, size);
    const auto type = static_cast<ValueType>(fuzz::takeChoice(input) % 16);
    const std::vector<std::uint8_t> data(input.begin(), input.end());  // of its very size
    const OwnedText text =
        RegistryValue("HKCU\\k", "v", data.data(), data.size(), &expandX, 1).ValueToUTF8(type);

    if (text) require(fuzz::isStrictUtf8(text.get()), "it is UTF-8");
    if (data.empty()) {
        require(text != nullptr && *text.get() == '\0', "no data is an empty text");
        return 0;
    }
    switch (type) {
        case ValueType::none:
        case ValueType::binary:
            require(text != nullptr && text.get() == hexOf(data), "binary data is hexadecimal");
            break;
        case ValueType::dword:
        case ValueType::dwordBigEndian:
        case ValueType::qword: {
            require(text != nullptr, "any number reads");
            const std::string digits(text.get());
            require(std::to_string(std::strtoll(digits.c_str(), nullptr, 10)) == digits,
                    "a number is decimal");
            break;
        }
        case ValueType::sz:
        case ValueType::link:
        case ValueType::multiSz:
        case ValueType::expandSz:
            require(!isText(type) || data.size() % 2 == 0 || !text, "half a unit is no text");
            require(!text || std::string_view(text.get()).size() <= data.size() / 2 * 3 + 3,
                    "a text is as long as its data");
            break;
        default:
            require(!text, "another type has no text");
    }
    return 0;
}
