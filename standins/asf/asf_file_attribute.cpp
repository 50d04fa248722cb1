#include "standins/asf/asf_file.h"

#include "standins/asf/bytes.h"

namespace orvane::asf {

namespace {

std::u16string decimal(std::uint64_t value) {
    const std::string digits = std::to_string(value);
    return {digits.begin(), digits.end()};
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
