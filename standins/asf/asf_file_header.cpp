#include "standins/asf/asf_file.h"

#include <algorithm>

#include "standins/asf/bytes.h"
#include "standins/asf/content_fields.h"

namespace orvane::asf {

namespace {

// The text as a number that fits `size` bytes.
std::optional<std::uint64_t> asNumber(std::u16string_view text, unsigned size) {
    const std::uint64_t largest = size >= 8 ? UINT64_MAX : (std::uint64_t{1} << (8 * size)) - 1;
    std::uint64_t value = 0;
    if (text.empty()) return std::nullopt;
    for (const char16_t c : text) {
        if (c < u'0' || c > u'9') return std::nullopt;
        const std::uint64_t digit = c - u'0';
        if (value > (largest - digit) / 10) return std::nullopt;
        value = value * 10 + digit;
    }
    return value;
}

// Other readers expect the type that the file's writer chose, so it stays when it can.
void assignText(Attribute& attribute, std::u16string_view text) {
    unsigned size = 0;
    if (attribute.type == AttributeType::dword) size = 4;
    if (attribute.type == AttributeType::qword) size = 8;
    if (attribute.type == AttributeType::word) size = 2;
    attribute.value.clear();
    if (size != 0) {
        // Leading zeros are part of what the user typed: only text keeps them.
        const bool plain = text == u"0" || !text.starts_with(u'0');
        if (const auto number = plain ? asNumber(text, size) : std::nullopt) {
            putNumber(attribute.value, *number, size);
            return;
        }
    }
    attribute.type = AttributeType::unicode;
    putText(attribute.value, text);
}

}  // namespace

const Attribute* Header::find(std::u16string_view name) const {
    const auto found = std::ranges::find_if(
        m_attributes, [&](const Attribute& a) { return a.stream == 0 && a.name == name; });
    return found == m_attributes.end() ? nullptr : &*found;
}

void Header::setText(std::u16string_view name, std::u16string_view text) {
    // What follows the first terminator would be lost to every reader.
    text = text.substr(0, text.find(u'\0'));
    const bool isField = contentField(name).has_value();
    const auto matches = [&](const Attribute& a) {
        if (a.stream != 0) return false;
        return isField ? equalIgnoringAsciiCase(a.name, name) : a.name == name;
    };
    const auto first = std::ranges::find_if(m_attributes, matches);
    if (first == m_attributes.end()) {
        if (!text.empty()) m_attributes.push_back(Attribute::fromText(name, text));
        return;
    }
    const std::uint16_t language = first->language;
    auto firstOther = first;
    if (!text.empty()) {
        first->name = name;
        if (isField) {
            *first = Attribute::fromText(name, text);
        } else {
            assignText(*first, text);
        }
        ++firstOther;
    }
    m_attributes.erase(
        std::remove_if(firstOther, m_attributes.end(),
                       [&](const Attribute& a) { return matches(a) && a.language == language; }),
        m_attributes.end());
}

}  // namespace orvane::asf
