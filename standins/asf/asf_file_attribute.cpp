#include <algorithm>
#include <charconv>

#include "standins/asf/header_objects.h"

namespace orvane::asf {

namespace {

std::u16string decimal(std::uint64_t value) {
    const std::string digits = std::to_string(value);
    return {digits.begin(), digits.end()};
}

// How many bytes a number of this type has; 0 for what is none.
unsigned numberSize(AttributeType type) {
    if (type == AttributeType::qword) return 8;
    if (type == AttributeType::dword) return 4;
    return type == AttributeType::word ? 2 : 0;
}

// Some writers repeat the five fields as ordinary attributes, in other case ("title").
bool equalIgnoringAsciiCase(std::u16string_view a, std::u16string_view b) {
    const auto lower = [](char16_t c) -> char16_t { return c >= u'A' && c <= u'Z' ? c | 0x20 : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

// Other readers expect the type that the file's writer chose, so it stays when it can.
void assignText(Attribute& attribute, std::u16string_view text) {
    const unsigned size = numberSize(attribute.type);
    const std::string digits(text.begin(), text.end());
    std::uint64_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    attribute.value.clear();
    // Leading zeros are part of what the user typed: only text keeps them.
    if (decimal(number) == text && size != 0 && (size == 8 || number >> (8 * size) == 0)) {
        putNumber(attribute.value, number, size);
    } else {
        attribute.type = AttributeType::unicode;
        putText(attribute.value, text);
    }
}

}  // namespace

std::uint64_t Attribute::number() const {
    std::uint64_t result = 0;
    if (numberSize(type) != 0 || type == AttributeType::boolean)
        for (std::size_t i = 0; i < value.size() && i < 8; ++i)
            result |= std::uint64_t{value[i]} << (8 * i);
    return result;
}

std::u16string Attribute::text() const {
    if (type == AttributeType::boolean) return number() != 0 ? u"true" : u"false";
    if (numberSize(type) != 0) return decimal(number());
    if (type != AttributeType::unicode) return {};
    const std::u16string all = textFrom(value);
    return all.substr(0, all.find(u'\0'));
}

Attribute Attribute::fromText(std::u16string_view name, std::u16string_view text) {
    Attribute attribute;
    attribute.name = name;
    putText(attribute.value, text);
    return attribute;
}

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
        if (isField) *first = Attribute::fromText(name, {});
        assignText(*first, text);
        ++firstOther;
    }
    const auto isOther = [&](const Attribute& a) { return matches(a) && a.language == language; };
    m_attributes.erase(std::remove_if(firstOther, m_attributes.end(), isOther), m_attributes.end());
}

}  // namespace orvane::asf
