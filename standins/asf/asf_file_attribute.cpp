#include "standins/asf/asf_file.h"

#include <charconv>

#include "standins/asf/bytes.h"

namespace orvane::asf {

namespace {

std::u16string widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

std::u16string decimal(std::uint64_t value) { return widen(std::to_string(value)); }

std::u16string guidText(std::span<const std::uint8_t> guid) {
    static constexpr std::array<int, 16> order = {3, 2, 1,  0,  5,  4,  7,  6,
                                                  8, 9, 10, 11, 12, 13, 14, 15};
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "{";
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        const std::uint8_t byte = guid[static_cast<std::size_t>(order[i])];
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return widen(text + "}");
}

}  // namespace

std::uint64_t Attribute::number() const {
    switch (type) {
        case AttributeType::boolean:
        case AttributeType::dword:
        case AttributeType::qword:
        case AttributeType::word: {
            std::uint64_t result = 0;
            for (std::size_t i = 0; i < value.size() && i < 8; ++i)
                result |= std::uint64_t{value[i]} << (8 * i);
            return result;
        }
        default:
            return 0;
    }
}

std::u16string Attribute::text() const {
    switch (type) {
        case AttributeType::unicode: {
            const std::u16string all = textFrom(value);
            return all.substr(0, all.find(u'\0'));
        }
        case AttributeType::boolean:
            return number() != 0 ? u"true" : u"false";
        case AttributeType::dword:
        case AttributeType::qword:
        case AttributeType::word:
            return decimal(number());
        case AttributeType::guid:
            return value.size() == 16 ? guidText(value) : std::u16string();
        default:
            return {};
    }
}

Attribute Attribute::fromText(std::u16string_view name, std::u16string_view text) {
    Attribute attribute;
    attribute.name = name;
    putText(attribute.value, text);
    return attribute;
}

}  // namespace orvane::asf
