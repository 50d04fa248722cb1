#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <string>
#include <vector>

#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"
#include "tests/support/captured_log.h"
#include "tests/support/counted_memory.h"

namespace orvane {
namespace {

std::unique_ptr<OrvaneMessage> parseBytes(const std::string& bytes) {
    return OrvaneMessage::parsePayload(
        {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

juce::String valueOf(const std::string& content) {
    const auto message = parseBytes("<command event='c'>" + content + "</command>");
    return message == nullptr ? "(no message)" : message->getValue("v");
}

TEST(HostileDocument, AMalformedDocumentIsLoggedAndIgnored) {
    test::CapturedLog log;
    const char* const broken[] = {
        "", "   ", "not XML", "<", "<a", "<command", "<command>", "<command event='x>",
        "<command></commandx>", "<command><a></command>", "</command>", "<a>&#x", "<!DOCTYPE",
        "<!--", "<![CDATA[", "<?xml", "<x><?\?>", "<command><!DOCTYPE a></command>", "<1/>",
        // One root, and no text beside it.
        "<command/><command/>", "<command/><x/>", "<command/>x", "<command/> text <!-- -->",
        "x<command/>", "<command/><![CDATA[]]>"};
    for (const std::string text : broken) {
        log.lines();
        EXPECT_EQ(parseBytes(text), nullptr) << text;
        const auto lines = log.lines();
        ASSERT_EQ(lines.size(), 1u) << text;
        EXPECT_EQ(lines[0].rfind("<3> OrvaneMessage: XML parsing error occured: ", 0), 0u)
            << lines[0];
    }
    // A root of another name is none of ours; nothing is wrong with it.
    for (const std::string text : {"<Command event='x'/>", "<a><command event='x'/></a>",
                                   "<commands/>", "<comman/>", "<x:command/>"})
        EXPECT_EQ(parseBytes(text), nullptr) << text;
    EXPECT_TRUE(log.lines().empty());
}

TEST(HostileDocument, AnyWellFormedFormIsRead) {
    const auto message = parseBytes(
        "\xEF\xBB\xBF<?xml version='1.0'?>\n<!-- c --><?p i?>\n"
        "<!DOCTYPE command [ <!ENTITY e 'expanded'> <!ELEMENT v ANY> ]>\n"
        "<command other='1' EVENT = 'na&#109;e' event='second'><?p?>\n"
        "  <V x='ignored'>\t one<!-- c --> <?p?>two<deep>no</deep> \n<b/>three </V><!-- c -->"
        "  text of the root <b><v>not mine</v></b></command><!-- after --> <?p?>\r\n\t");
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->getName(), "name");
    EXPECT_EQ(message->getValue("v"), "one twothree");
    EXPECT_EQ(message->getParameters().size(), 2u);
    EXPECT_EQ(parseBytes("<response/>")->getName(), "");
}

TEST(HostileDocument, MalformedTextIsReadAsFarAsPossible) {
    const std::pair<std::string, std::u16string> cases[] = {
        {"<v><![CDATA[ a<b>&amp; ]]></v>", u"a<b>&amp;"},
        {"<v>a\r\nb\rc&#13;</v>", u"a\nb\nc"},
        {"<v>&#x41;&apos;&quot;&lt;&gt;&amp;</v>", u"A'\"<>&"},
        {"<!-- --><v>&e;&unknown;</v>", u"&e;&unknown;"},
        {"<v>a&#0;b</v>", u"a"},
        {"<v>&#55356;&#57269;</v>", u"\U0001F3B5"},
        {"<v>&#xD83C;<!-- -->&#xDFB5;</v>", u"\U0001F3B5"},
        {"<v>&#57269;x&#55356;</v>", u"\xDFB5x\xD83C"},
        {"<v>1</v><V>2</V>", u"2"},
        {"<v>1</v><w/><V/>", u""},
        {"<v>\xE2\x80\x83 x \xE3\x80\x80</v>", u"x"},
        // What is not UTF-8: each malformed sequence is one U+FFFD, also a half of a pair.
        {"<v>\xC3(</v>", u"\uFFFD("},
        {"<v>\xC0\x80!</v>", u"\uFFFD!"},
        {"<v>\xED\xA0\x80</v>", u"\uFFFD"},
        {"<v>\xF0\x9F\x98\x80</v>", u"\U0001F600"},
        {"<v>\xF4\x90\x80\x80</v>", u"\uFFFD"},
        {"<v>\x80\xFF\xE2\x82</v>", u"\uFFFD\uFFFD\uFFFD"},
    };
    for (const auto& [content, value] : cases)
        EXPECT_EQ(valueOf(content), stringOfUnits(value)) << content;
    // No character at all; whatever is made of them, the link goes on.
    for (const std::string reference : {"&#1114112;", "&#4294967295;", "&#99999999999;", "&#x;",
                                        "&#;", "&", "&;", "&#-1;", "&#xFFFFFFFF;"})
        EXPECT_NE(valueOf("<v>a" + reference + "</v>"), "(no message)") << reference;

    const std::string whole = "<command event='c'/>";
    EXPECT_NE(parseBytes(whole + std::string("\0<", 2)), nullptr) << "a text ends at a zero byte";
}

std::string repeated(const std::string& piece, std::size_t size) {
    std::string text;
    while (text.size() < size) text += piece;
    return text;
}

// Names of one length, all different; `with` stands behind each.
std::string distinct(const std::string& before, const std::string& after, std::size_t size) {
    constexpr std::string_view digits = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string text;
    for (std::size_t i = 0; text.size() < size; ++i) {
        text += before;
        for (std::size_t rest = i, place = 0; place < 4; rest /= digits.size(), ++place)
            text += digits[rest % digits.size()];
        text += after;
    }
    return text;
}

// Time shows in the program's time limit: anything quadratic takes hours here.
TEST(HostileDocument, MemoryStaysWithinItsLimitAndIsReleased) {
    pugi::set_memory_management_functions(&test::countedAllocate, &test::countedFree);
#ifdef ORVANE_SANITIZED
    constexpr std::size_t share = 8;  // ten times as slow
#else
    constexpr std::size_t share = 1;
#endif
    constexpr std::size_t size = 10'485'700 / share;
    constexpr std::size_t part = size / 8;
    const std::string entities = "<!DOCTYPE c [<!ENTITY a 'aaaaaaaaaa'>" +
                                 repeated("<!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>", 40'000) + "]>";
    const auto within = [](const std::string& content) {
        return "<command>" + content + "</command>";
    };
    const std::pair<const char*, std::string> documents[] = {
        {"distinct empty elements", within(distinct("<", "/>", size - 40))},
        {"distinct elements of a letter", within(distinct("<", ">x</b>", size / 2))},
        {"one letter in each", within(repeated("<v>x</v>", size - 40))},
        {"short names", within(repeated("<\xFF/>", size - 40))},
        {"unclosed", repeated("<a>", size)},
        {"nested in a parameter", within(repeated("<v>", part * 3) + repeated("</v>", part * 4))},
        {"long text", within("<v>" + std::string(part - 40, 'x') + "</v>")},
        {"no UTF-8", within("<v>" + std::string(size - 40, '\xFF') + "</v>")},
        {"long name", "<" + std::string(part, 'x') + "/>"},
        {"attributes", "<command " + repeated("a='' ", part - 40) + "/>"},
        {"comments", within("<v>" + repeated("x<!---->", part - 40) + "</v>")},
        {"instructions", within(repeated("<?p?>t", part - 40))},
        {"runs", within("<v>" + repeated("x<b/>", part - 40) + "</v>")},
        {"references", within("<v>" + repeated("&#9;x", part - 40) + "</v>")},
        {"spaces", within("<v>" + std::string(part - 40, ' ') + "</v>")},
        {"entities", entities + within("<v>" + repeated("&b;", part / 2) + "</v>")},
        {"doctype", "<!DOCTYPE " + repeated("<!", part / 2)},
    };
    test::CapturedLog log;
    for (const auto& [what, text] : documents) {
        const std::size_t before = test::memoryInUse();
        test::resetPeak();
        parseBytes(text);
        log.lines();
        EXPECT_LT(test::peakMemory() - before, 200'000'000U / share) << what;
        EXPECT_LE(test::memoryInUse(), before + 100'000) << what;
    }
}

}  // namespace
}  // namespace orvane
