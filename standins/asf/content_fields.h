#pragma once

// The fields of the Content Description object, in their order there.

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace orvane::asf {

inline constexpr std::array<std::u16string_view, 5> kContentFields = {
    u"Title", u"Author", u"Copyright", u"Description", u"Rating"};

inline std::optional<std::size_t> contentField(std::u16string_view name) {
    for (std::size_t i = 0; i < kContentFields.size(); ++i)
        if (kContentFields[i] == name) return i;
    return std::nullopt;
}

// Some writers repeat the five fields as ordinary attributes, in other case ("title").
inline bool equalIgnoringAsciiCase(std::u16string_view a, std::u16string_view b) {
    const auto lower = [](char16_t c) {
        return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
    };
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i])) return false;
    return true;
}

}  // namespace orvane::asf
