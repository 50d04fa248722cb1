#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"
#include "tests/common/messages/build_speed.h"
#include "tests/support/captured_log.h"

namespace orvane {
namespace {

std::unique_ptr<OrvaneMessage> parseBytes(const std::string& bytes) {
    return OrvaneMessage::parse(
        decodePayload({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
}

juce::String valueOf(const std::string& content) {
    const auto message = parseBytes("<command event='c'>" + content + "</command>");
    return message == nullptr ? "(no message)" : message->getValue("v");
}

TEST(HostileDocument, ThatDoesNotParseIsLoggedAndIgnored) {
    test::CapturedLog log;
    for (const std::string text :
         {"", "   ", "not XML", "<", "<a", "<command", "<command>", "<command event='x>",
          "<command></commandx>", "<command><a></command>", "</command>", "<a>&#x", "<!DOCTYPE",
          "<!--", "<![CDATA[", "<?xml", "<x><?\?>", "<command><!DOCTYPE a></command>", "<1/>"}) {
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
        "  text of the root <b><v>not mine</v></b></command><!-- after --><second/>");
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->getName(), "name");
    EXPECT_EQ(message->getValue("v"), "one twothree");
    EXPECT_EQ(message->getParameters().size(), 2u);

    EXPECT_EQ(parseBytes("<response/>")->getName(), "");
}

TEST(HostileDocument, OddTextIsReadAsFarAsItGoes) {
    EXPECT_EQ(valueOf("<v><![CDATA[ a<b>&amp; ]]></v>"), "a<b>&amp;");
    EXPECT_EQ(valueOf("<v>a\r\nb\rc&#13;</v>"), "a\nb\nc");
    EXPECT_EQ(valueOf("<v>&#x41;&apos;&quot;&lt;&gt;&amp;</v>"), "A'\"<>&");
    EXPECT_EQ(valueOf("<!-- --><v>&e;&unknown;</v>"), "&e;&unknown;");
    EXPECT_EQ(valueOf("<v>a&#0;b</v>"), "a");
    EXPECT_EQ(valueOf("<v>&#55356;&#57269;</v>"), stringOfUnits(u"\U0001F3B5"));
    EXPECT_EQ(valueOf("<v>&#xD83C;<!-- -->&#xDFB5;</v>"), stringOfUnits(u"\U0001F3B5"));
    EXPECT_EQ(valueOf("<v>&#57269;x&#55356;</v>"), stringOfUnits(u"\xDFB5x\xD83C"));
    EXPECT_EQ(valueOf("<v>\xC3(</v>"), stringOfUnits(u"\uFFFD("));
    EXPECT_EQ(valueOf("<v>1</v><V>2</V>"), "2");
    EXPECT_EQ(valueOf("<v>1</v><V/>"), "");
    // No character at all; whatever is made of them, the link goes on.
    for (const std::string reference : {"&#1114112;", "&#4294967295;", "&#99999999999;", "&#x;",
                                        "&#;", "&", "&;", "&#-1;", "&#xFFFFFFFF;"})
        EXPECT_NE(valueOf("<v>a" + reference + "</v>"), "(no message)") << reference;
}

TEST(HostileDocument, TakesTimeLinearInItsSize) {
    const auto repeated = [](const std::string& piece, std::size_t count) {
        std::string text;
        text.reserve(piece.size() * count);
        for (std::size_t i = 0; i < count; ++i) text += piece;
        return text;
    };
    const std::string entities = "<!DOCTYPE c [<!ENTITY a 'aaaaaaaaaa'>" +
                                 repeated("<!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>", 1000) + "]>";
    constexpr std::size_t size = 2'000'000 / test::slowdown;
    constexpr std::size_t longest = 10'000'000 / test::slowdown;
    const std::vector<std::pair<std::string, std::string>> documents = {
        {"nested", repeated("<a>", 200'000) + repeated("</a>", 200'000)},
        {"nested in a parameter", "<command event='c'>" + repeated("<v>", 200'000) +
                                      repeated("</v>", 200'000) + "</command>"},
        {"unclosed", repeated("<a>", size / 3)},
        {"long text", "<command><v>" + std::string(longest, 'x') + "</v></command>"},
        {"long name", "<" + std::string(size, 'x') + "/>"},
        {"long attribute", "<command event='" + std::string(size, 'x') + "'/>"},
        {"attributes", "<command " + repeated("a='' ", size / 5) + "/>"},
        {"comments", "<command><v>" + repeated("x<!---->", size / 8) + "</v></command>"},
        {"instructions", "<command>" + repeated("<?p?>t", size / 6) + "</command>"},
        {"runs", "<command><v>" + repeated("x<b/>", size / 5) + "</v></command>"},
        {"references", "<command><v>" + repeated("&#9;", size / 4) + "</v></command>"},
        {"spaces", "<command><v>" + std::string(size, ' ') + "</v></command>"},
        {"same parameter", "<command>" + repeated("<v>1</v>", size / 8) + "</command>"},
        {"entities", entities + "<command><v>" + repeated("&b;", 100'000) + "</v></command>"},
        {"doctype", "<!DOCTYPE " + repeated("<!", size / 2)},
        {"less than", repeated("<", size)},
    };
    for (const auto& [what, text] : documents) {
        const auto start = std::chrono::steady_clock::now();
        const auto message = parseBytes(text);
        const auto seconds = std::chrono::duration_cast<std::chrono::duration<double>>(
            std::chrono::steady_clock::now() - start);
        // Generous, for a loaded machine and sanitizers; anything quadratic takes minutes here.
        EXPECT_LT(seconds.count(), 10) << what;
    }
    EXPECT_EQ(parseBytes(documents[3].second)->getValue("v").length(), static_cast<int>(longest));
}

}  // namespace
}  // namespace orvane
