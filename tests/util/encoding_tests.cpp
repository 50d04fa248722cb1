#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/util/captured_log.h"
#include "util/log.h"
#include "util/text.h"
#include "util/utf8.h"

namespace orvane {
namespace {

using test::LogMessage;
using test::takeLog;
using testing::ElementsAre;
using testing::IsEmpty;
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

std::string firstMessage() {
    const std::vector<LogMessage> messages = takeLog();
    return messages.empty() ? "(silent)" : messages.front().text;
}

TEST(Utf8, MalformedInputBecomesReplacementCharactersAndIsReadOnWhereStated) {
    struct Case {
        const char* bytes;
        Units result;
        const char* message;
    };
    const std::string self = "utl_utf8_decode_char: ";
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
        EXPECT_EQ(decoded(each.bytes), each.result);
        EXPECT_EQ(firstMessage(), "(silent)");
    }
}

TEST(Utf8, TheReplacementFlagTellsARealReplacementCharacterFromAnInventedOne) {
    std::array<Wide, 3> out{};
    auto& two = *reinterpret_cast<Wide(*)[2]>(out.data());
    bool replaced = true;
    const char real[] = "\xEF\xBF\xBD";
    EXPECT_EQ(utl_utf8_decode_char(real, sizeof real, two, &replaced, 0), real + 3);
    EXPECT_EQ(out[0], 0xFFFD);
    EXPECT_FALSE(replaced);
    const char invented[] = "\xFF";
    EXPECT_EQ(utl_utf8_decode_char(invented, sizeof invented, two, &replaced, 0), invented + 1);
    EXPECT_TRUE(replaced);
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
    const std::string utf8 = encoded(all);
    EXPECT_EQ(decoded(utf8), all);

    std::size_t characters = 0;
    std::size_t bytes = 0;
    EXPECT_TRUE(utl_wide_buf_utf8_len(all.data(), all.size(), &characters, bytes, 0));
    EXPECT_EQ(characters, 0x10FFFFU - 0x800 - 2);
    EXPECT_EQ(bytes, utf8.size());

    EXPECT_EQ(decoded("\xF0\x9F\x98\x80"), units({0xD83D, 0xDE00}));
    EXPECT_EQ(encoded(units({0xDBFF, 0xDFFF})), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(encoded({}), "");
    EXPECT_EQ(utl_utf8_len_from_ucs4(0x3FFFFFF, 0), 5);
    EXPECT_EQ(utl_utf8_len_from_ucs4(0x80000000, 1), 0);
    EXPECT_EQ(firstMessage(), "utl_utf8_len_from_ucs4: 0x80000000 is an invalid code point");
}

// Whatever the bytes, what comes out is UTF-16 that the strict direction takes.
TEST(Utf8, NoInputProducesBrokenUtf16) {
    constexpr unsigned char kLikely[] = {0x01, 0x41, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0,
                                         0xBF, 0xC0, 0xC1, 0xC3, 0xE0, 0xED, 0xEF, 0xF0,
                                         0xF4, 0xF5, 0xF8, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF};
    std::mt19937 random(20090601);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 24, '\0');
        for (char& byte : bytes) byte = static_cast<char>(kLikely[random() % std::size(kLikely)]);
        const std::string mended = encoded(decoded(bytes));
        ASSERT_NE(mended, "(none)") << testing::PrintToString(bytes);
        ASSERT_EQ(encoded(decoded(mended, 1)), mended);
        ASSERT_THAT(takeLog(), IsEmpty());
    }
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
        EXPECT_EQ(firstMessage(), std::string("utl_utf8_char_len: ") + each.message);
        EXPECT_EQ(encoded(each.text), "(none)");
        EXPECT_THAT(takeLog(), IsEmpty());
    }
    std::size_t length = 7;
    EXPECT_EQ(utl_utf8_char_len(nullptr, 0, length, nullptr, 1), nullptr);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(firstMessage(), "utl_utf8_char_len: can't determine length of empty buffer");
}

TEST(Utf16, ATextEndsAtItsFirstNulOrAtTheCount) {
    EXPECT_EQ(encoded(units({'a', 0, 0xDE00})), "a");
    const Units text = units({'a', 'b', 0xDE00});
    const OwnedText two = utl_wide_buf_to_utf8(text.data(), 2, 0);
    EXPECT_STREQ(two.get(), "ab");
}

// A buffer of `size` bytes holding garbage, with what must stay untouched behind it.
TEST(Utf8Buffer, TakesWhatFitsAndReportsTheRest) {
    struct Case {
        const char* text;
        std::size_t size;
        const char* message;  // none: it fits
    };
    const std::string self = "utl_utf8_to_wide_buf: ";
    const Case cases[] = {
        {"abc", 8, nullptr},
        {"abc", 9, nullptr},
        {"abc", 6,
         "1 byte(s) of input string remain(s) undecoded (c): out of space in 6 byte output string"},
        {"abc", 2,
         "3 byte(s) of input string remain(s) undecoded (abc): out of space in 2 byte output "
         "string"},
        {"abc", 1,
         "1 byte(s) is not enough to transform a 4 byte UTF-8 string to NUL-terminated UTF-16"},
        {"", 2, nullptr},
        {"a\xF0\x9F\x98\x80", 6,
         "out of space in 6 byte output string to store surrogate pair low half (0xDE00)"},
        {"a\xF0\x9F\x98\x80", 8, nullptr},
    };
    for (const Case& each : cases) {
        std::array<Wide, 8> buffer;
        buffer.fill(0x7777);
        EXPECT_EQ(utl_utf8_to_wide_buf(each.text, buffer.data(), each.size, 1),
                  each.message == nullptr);
        if (each.message == nullptr) {
            EXPECT_THAT(takeLog(), IsEmpty());
            EXPECT_EQ(Units(buffer.data()), decoded(each.text));
        } else {
            EXPECT_THAT(takeLog(), ElementsAre(LogMessage{LOG_ERR, self + each.message}));
        }
        EXPECT_EQ(buffer[(each.size + 1) / 2], 0x7777) << "wrote past " << each.size << " bytes";
        if (each.size >= 2) {
            EXPECT_EQ(buffer[each.size / 2 - 1], 0);
        }
    }
}

TEST(UtlUTF8Str, AlwaysHasSomethingToPrint) {
    const Units good = units({0x65E5, 0x672C});
    const Units bad = units({0xDE00});
    EXPECT_STREQ(UtlUTF8Str(good.c_str(), 0).str(), "日本");
    EXPECT_STREQ(UtlUTF8Str(nullptr, 1).str(), "(null)");
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_STREQ(UtlUTF8Str(bad.c_str(), 0).str(), "(null)");
    EXPECT_THAT(takeLog(), IsEmpty());
    EXPECT_STREQ(UtlUTF8Str(bad.c_str(), 1).str(), "(null)");
    EXPECT_EQ(takeLog().size(), 1U);
}

}  // namespace
}  // namespace orvane
