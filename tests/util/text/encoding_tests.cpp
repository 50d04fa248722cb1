#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "tests/support/captured_log.h"
#include "util/text/text.h"
#include "util/text/utf8.h"

namespace orvane {
namespace {

using testing::IsEmpty;
using Units = std::basic_string<Wide>;

test::CapturedLog s_log;

std::vector<std::string> takeLog() { return s_log.lines(); }

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

std::string firstMessage() {
    const std::vector<std::string> messages = takeLog();
    return messages.empty() ? "(silent)" : messages.front();
}

TEST(Utf8, MalformedInputBecomesReplacementCharactersAndIsReadOnWhereStated) {
    struct Case {
        const char* bytes;
        Units result;
        const char* message;
    };
    const std::string self = "<3> utl_utf8_decode_char: ";
    const Case cases[] = {
        {"\xC3(", units({0xFFFD, '('}),
         "0x28 is not a valid continuation character in a UTF-8 encoding"},
        {"\xC0\x80z", units({0xFFFD, 'z'}),
         "overlong encoding(\xC0\x80z)...should be 1 byte(s), not 2"},
        {"\xED\xA0\x80", units({0xFFFD}),
         "code point 0x0000D800 is in the range used to indicate surrogate pairs"},
        {"\xEF\xBF\xBF", units({0xFFFD}), "invalid code point (0x0000FFFF)"},
        {"\xF4\x90\x80\x80", units({0xFFFD}), "code point 0x00110000 is too big"},
        {"\xFD\xBF\xBF\xBF\xBF\xBF", units({0xFFFD}), "code point 0x7FFFFFFF is too big"},
        {"\xFE!", units({0xFFFD, '!'}),
         "0xFE is not a valid first byte of a UTF-8 encoded character"},
        {"\x80", units({0xFFFD}), "0x80 is not a valid first byte of a UTF-8 encoded character"},
        {"\xE2\x82", units({0xFFFD}),
         "0x00 is not a valid continuation character in a UTF-8 encoding"},
        {"a\xE2", units({'a', 0xFFFD}),
         "first byte 0xE2 indicates a 3 byte UTF-8 character, but we only have 2 valid byte(s)"},
        {"\xF0\x9F\x98\xC3\xA9", units({0xFFFD, 0xE9}),
         "0xC3 is not a valid continuation character in a UTF-8 encoding"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(decoded(each.bytes, 1), each.result) << each.message;
        EXPECT_EQ(firstMessage(), self + each.message);
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
    EXPECT_EQ(utl_utf8_len_from_ucs4(0x80000000, 1), 0);
    EXPECT_EQ(firstMessage(), "<3> utl_utf8_len_from_ucs4: 0x80000000 is an invalid code point");
}

TEST(Utf16, OneBadUnitFailsTheText) {
    struct Case {
        Units text;
        const char* message;
    };
    const Case cases[] = {
        {units({'a', 0xD83D}), "buffer ends after the high-half of a surrogate pair"},
        {units({0xDE00}), "0xDE00 is an invalid surrogate pair high-half"},
        {units({0xD83D, 'a'}), "0x0061 is an invalid surrogate pair low-half"},
        {units({'a', 0xFFFE, 'b'}), "invalid UTF-16 value: 0xFFFE"},
        {units({0xFFFF}), "invalid UTF-16 value: 0xFFFF"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(encoded(each.text, 1), "(none)");
        EXPECT_EQ(firstMessage(), std::string("<3> utl_utf8_char_len: ") + each.message);
    }
}

TEST(Utf8Buffer, TakesWhatFitsAndReportsTheRest) {
    struct Case {
        const char* text;
        std::size_t size;
        const char* message;  // "(silent)": it fits
    };
    const Case cases[] = {
        {"abc", 8, "(silent)"},
        {"abc", 9, "(silent)"},
        {"abc", 6,
         "1 byte(s) of input string remain(s) undecoded (c): out of space in 6 byte output string"},
        {"abc", 2,
         "3 byte(s) of input string remain(s) undecoded (abc): out of space in 2 byte output "
         "string"},
        {"abc", 1,
         "1 byte(s) is not enough to transform a 4 byte UTF-8 string to NUL-terminated UTF-16"},
        {"", 2, "(silent)"},
        {"a\xF0\x9F\x98\x80", 6,
         "out of space in 6 byte output string to store surrogate pair low half (0xDE00)"},
        {"a\xF0\x9F\x98\x80", 8, "(silent)"},
    };
    for (const Case& each : cases) {
        const std::string message = each.message;
        std::array<Wide, 8> buffer;
        buffer.fill(0x7777);
        const bool fits = utl_utf8_to_wide_buf(each.text, buffer.data(), each.size, 1);
        EXPECT_EQ(fits, message == "(silent)");
        EXPECT_EQ(firstMessage(), fits ? message : "<3> utl_utf8_to_wide_buf: " + message);
        if (fits) {
            EXPECT_EQ(Units(buffer.data()), decoded(each.text));
        }
        EXPECT_EQ(buffer[(each.size + 1) / 2], 0x7777) << "wrote past " << each.size << " bytes";
    }
}

TEST(UtlUTF8Str, AlwaysHasSomethingToPrint) {
    const Units good = units({0x65E5, 0x672C});
    const Units bad = units({0xDE00});
    EXPECT_STREQ(UtlUTF8Str(good.c_str(), 0).str(), "日本");
    EXPECT_STREQ(UtlUTF8Str(nullptr, 1).str(), "(null)");
    EXPECT_STREQ(UtlUTF8Str(bad.c_str(), 0).str(), "(null)");
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_STREQ(UtlUTF8Str(bad.c_str(), 1).str(), "(null)");
    EXPECT_EQ(takeLog().size(), 1U);
}

}  // namespace
}  // namespace orvane
