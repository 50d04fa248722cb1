#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/support/captured_log.h"
#include "util/text/text.h"
#include "util/text/utf8.h"

namespace orvane {
namespace {

using Units = std::basic_string<Wide>;

// Exactly as large as its content, so that the sanitizers see a read past it.
template <typename T>
std::unique_ptr<T[]> exactly(const std::basic_string<T>& text) {
    auto copy = std::make_unique<T[]>(text.size());
    std::copy(text.begin(), text.end(), copy.get());
    return copy;
}

Units units(std::initializer_list<unsigned> values) {
    Units text;
    for (const unsigned value : values) text.push_back(static_cast<Wide>(value));
    return text;
}

Units decoded(const std::string& bytes, int log = 0) {
    const std::string withNul = bytes + '\0';
    const OwnedWide wide = utl_utf8_to_wide_intl(exactly(withNul).get(), log);
    return wide ? Units(wide.get()) : units({0xDEAD});
}

std::string encoded(const Units& text, int log = 0) {
    const OwnedText utf8 = utl_wide_buf_to_utf8(exactly(text).get(), text.size(), log);
    return utf8 ? std::string(utf8.get()) : "(none)";
}

TEST(Utf8, MalformedInputBecomesReplacementCharacters) {
    test::CapturedLog log;
    const std::pair<const char*, Units> cases[] = {
        {"\xC3(", units({0xFFFD, '('})},
        {"\xC0\x80z", units({0xFFFD, 'z'})},            // overlong
        {"\xED\xA0\x80", units({0xFFFD})},              // a surrogate
        {"\xEF\xBF\xBE!", units({0xFFFD, '!'})},        // no characters
        {"\xEF\xBF\xBF", units({0xFFFD})},              //
        {"\xF4\x90\x80\x80", units({0xFFFD})},          // beyond the last character
        {"\xFD\xBF\xBF\xBF\xBF\xBF", units({0xFFFD})},  //
        {"\xFE!", units({0xFFFD, '!'})},
        {"\x80", units({0xFFFD})},
        {"\xE2\x82", units({0xFFFD})},
        {"a\xE2", units({'a', 0xFFFD})},
        {"\xF0\x9F", units({0xFFFD, 0xFFFD})},  // more is promised than there is: byte by byte
        {"\xF0\x9F\x98\xC3\xA9", units({0xFFFD, 0xE9})},
    };
    for (const auto& [bytes, result] : cases) {
        EXPECT_EQ(decoded(bytes, 0), result) << bytes;
        EXPECT_TRUE(log.lines().empty()) << bytes;
        EXPECT_EQ(decoded(bytes, 1), result) << bytes;
        EXPECT_FALSE(log.lines().empty()) << bytes;
    }
}

TEST(Utf8, EveryCharacterSurvivesTheRoundTrip) {
    Units all;
    for (std::uint32_t point = 1; point <= 0x10FFFF; ++point) {
        if (point >= 0xD800 && point <= 0xDFFF) continue;
        if (point == 0xFFFE || point == 0xFFFF) continue;
        if (point > 0xFFFF) {
            all.push_back(static_cast<Wide>(0xD800 + ((point - 0x10000) >> 10)));
            all.push_back(static_cast<Wide>(0xDC00 + (point & 0x3FF)));
        } else {
            all.push_back(static_cast<Wide>(point));
        }
    }
    EXPECT_EQ(decoded(encoded(all)), all);
    EXPECT_EQ(decoded("\xF0\x9F\x98\x80"), units({0xD83D, 0xDE00}));
    EXPECT_EQ(encoded(units({0xDBFF, 0xDFFF})), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(encoded({}), "");
    EXPECT_EQ(encoded(units({'a', 0, 0xDE00})), "a") << "a text ends at its first NUL";
    EXPECT_EQ(utl_utf8_len_from_ucs4(0x80000000, 0), 0);
}

TEST(Utf16, OneBadUnitFailsTheText) {
    test::CapturedLog log;
    for (const Units& text : {units({'a', 0xD83D}), units({0xDE00}), units({0xD83D, 'a'}),
                              units({'a', 0xFFFE, 'b'}), units({0xFFFF})}) {
        EXPECT_EQ(encoded(text, 0), "(none)");
        EXPECT_TRUE(log.lines().empty());
        EXPECT_EQ(encoded(text, 1), "(none)");
        EXPECT_EQ(log.lines().size(), 1U);
    }
}

TEST(Utf8Buffer, TakesWhatFitsAndRefusesTheRest) {
    const struct {
        const char* text;
        std::size_t size;
        bool fits;
    } cases[] = {
        {"abc", 8, true},
        {"abc", 9, true},
        {"abc", 6, false},
        {"abc", 2, false},
        {"abc", 1, false},
        {"", 2, true},
        {"a\xF0\x9F\x98\x80", 6, false},
        {"a\xF0\x9F\x98\x80", 8, true},
    };
    for (const auto& each : cases) {
        std::array<Wide, 8> buffer;
        buffer.fill(0x7777);
        EXPECT_EQ(utl_utf8_to_wide_buf(each.text, buffer.data(), each.size, 0), each.fits)
            << each.text << each.size;
        if (each.fits) {
            EXPECT_EQ(Units(buffer.data()), decoded(each.text));
        }
        EXPECT_EQ(buffer[(each.size + 1) / 2], 0x7777) << "wrote past " << each.size << " bytes";
    }
}

TEST(UtlUTF8Str, AlwaysHasSomethingToPrint) {
    EXPECT_STREQ(UtlUTF8Str(units({0x65E5, 0x672C}).c_str(), 0).str(), "日本");
    EXPECT_STREQ(UtlUTF8Str(nullptr, 1).str(), "(null)");
    EXPECT_STREQ(UtlUTF8Str(units({0xDE00}).c_str(), 0).str(), "(null)");
}

}  // namespace
}  // namespace orvane
