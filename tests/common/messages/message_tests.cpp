#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>

#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"
#include "tests/common/messages/build_speed.h"

namespace orvane {
namespace {

juce::String units(std::u16string_view text) { return stringOfUnits(text); }

std::string utf8(const juce::String& text) {
    const auto bytes = encodePayload(text);
    return {bytes.begin(), bytes.end() - 1};
}

std::unique_ptr<OrvaneMessage> overTheWire(const OrvaneMessage& message) {
    return OrvaneMessage::parse(decodePayload(encodePayload(message.toDocument())));
}

TEST(Document, IsWrittenToTheByte) {
    OrvaneEvent event("PlayerMaximized");
    event.setValue("Player", "wmp");
    event.setValue("PlayerRect", "10,20,800,600");
    EXPECT_EQ(utf8(event.toDocument()),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n"
              "<OrVaneIPC event=\"PlayerMaximized\">\r\n"
              "  <Player>wmp</Player>\r\n"
              "  <PlayerRect>10,20,800,600</PlayerRect>\r\n"
              "</OrVaneIPC>\r\n");
    EXPECT_EQ(encodePayload(event.toDocument()).size(), 158u);

    EXPECT_EQ(utf8(OrvaneCommand("pause").toDocument()),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<command event=\"pause\"/>\r\n");

    OrvaneResponse response("x");
    response.setValue("empty", "");
    EXPECT_EQ(utf8(response.toDocument()),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<response event=\"x\">\r\n"
              "  <empty></empty>\r\n</response>\r\n");
}

TEST(Document, EscapesByPlace) {
    const juce::String plain = " .,;:-()_+=?!'#@[]/\\*%~{}azAZ09";
    const juce::String odd = units(u"&\">< $^`|\t\u007F\u00E9\U0001F3B5\xD83C");
    const std::string escaped =
        "&amp;&quot;&gt;&lt; &#36;&#94;&#96;&#124;&#9;&#127;&#233;&#55356;&#57269;&#55356;";
    OrvaneEvent event(odd + "\r\n");
    event.setValue("plain", plain);
    event.setValue("odd", odd + "\r\n");
    const std::string document = utf8(event.toDocument());
    EXPECT_NE(document.find("event=\"" + escaped + "&#13;&#10;\">"), std::string::npos) << document;
    EXPECT_NE(document.find("<plain>" + utf8(plain) + "</plain>"), std::string::npos) << document;
    EXPECT_NE(document.find("<odd>" + escaped + "\r\n</odd>"), std::string::npos) << document;
}

TEST(Document, ComesBackAsItWas) {
    OrvaneCommand command("setMediaInfoToPath");
    const juce::String title = units(u"<Caf\u00E9> & \"\u65E5\u672C\" $ \U0001F3B5 \xDC00-\xD83C");
    command.setValue("metadata.TrackTitle", title);
    command.setValue("spaces", "   ");
    command.setValue("framed", "  a  b ");
    const auto back = overTheWire(command);
    ASSERT_NE(dynamic_cast<OrvaneCommand*>(back.get()), nullptr);
    EXPECT_EQ(back->getName(), "setMediaInfoToPath");
    EXPECT_EQ(back->getValue("METADATA.tracktitle"), title);
    EXPECT_EQ(back->getValue("spaces"), "");
    EXPECT_EQ(back->getValue("framed"), "a  b");

    EXPECT_NE(dynamic_cast<OrvaneEvent*>(overTheWire(OrvaneEvent("a")).get()), nullptr);
    OrvaneResponse answer("b");
    EXPECT_FALSE(answer.getReturnValue());
    answer.setValue("return_value", "TRUE");
    const auto response = overTheWire(answer);
    ASSERT_NE(dynamic_cast<OrvaneResponse*>(response.get()), nullptr);
    EXPECT_TRUE(dynamic_cast<OrvaneResponse*>(response.get())->getReturnValue());
}

TEST(Message, KeysIgnoreCaseAndKeepTheirPlace) {
    OrvaneEvent event("e");
    event.setValue("player", "old");
    event.setValue("other", "1");
    event.setValue("Player", "new");
    ASSERT_EQ(event.getParameters().size(), 2u);
    EXPECT_EQ(event.getParameters()[0].key, "player");
    EXPECT_EQ(event.getParameters()[0].value, "new");

    OrvaneMessage copy = event;
    copy.setValue("PLAYER", "copied");
    copy.setValue("more", "2");
    EXPECT_EQ(event.getValue("Player"), "new");
    EXPECT_EQ(event.getValue("more"), "");
    EXPECT_EQ(copy.getValue("player"), "copied");
}

TEST(Message, ListsEndAtTheFirstEmptyValue) {
    OrvaneEvent event("e");
    event.addList("none", {});
    event.addList("p", {"a", "", "c"});
    juce::StringArray list;
    EXPECT_FALSE(event.getList("none", list));
    EXPECT_TRUE(event.getList("p", list));
    EXPECT_EQ(list, juce::StringArray({"a"}));
    EXPECT_TRUE(event.getList("none", list)) << "what the list held before counts";
}

TEST(Message, MapsAreReadFromKeysThatHoldThePrefix) {
    OrvaneCommand command("c");
    command.setValue("metadata.TrackTitle", "t");
    command.setValue("metadata.", "nothing after the dot");
    command.setValue("Metadata.Year", "other case");
    command.setValue("other", "no prefix");
    juce::StringPairArray map;
    EXPECT_TRUE(command.getMap("metadata", map));
    ASSERT_EQ(map.size(), 1);
    EXPECT_EQ(map["tracktitle"], "t");

    command.setValue("my metadata.metadata.x", "1");
    command.setValue("metadata.TRACKTITLE2", "");
    command.setValue("a.metadata.trackTitle", "replaced");
    EXPECT_TRUE(command.getMap("metadata", map));
    EXPECT_EQ(map.getAllKeys(), juce::StringArray({"TrackTitle", "metadata.x", "TRACKTITLE2"}));
    EXPECT_EQ(map.getAllValues(), juce::StringArray({"replaced", "1", ""}));
    EXPECT_FALSE(
        OrvaneCommand("none").getMap("metadata", *std::make_unique<juce::StringPairArray>()));

    OrvaneResponse response("c");
    response.addMap("metadataOut", map);
    EXPECT_EQ(response.getParameters()[1].key, "metadataOut.metadata.x");
}

TEST(Payload, IsDecodedLenientlyUpToTheFirstZero) {
    const auto decoded = [](const std::string& bytes) {
        return decodePayload({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
    };
    EXPECT_EQ(decoded("abc"), decoded(std::string("abc\0", 4)));
    EXPECT_EQ(decoded(std::string("ab\0c", 4)), "ab");
    EXPECT_EQ(decoded(""), "");
    EXPECT_EQ(decoded("\xC3\x28"), units(u"\uFFFD("));
    EXPECT_EQ(decoded("\xC0\x80!"), units(u"\uFFFD!"));
    EXPECT_EQ(decoded("\xED\xA0\x80"), units(u"\uFFFD"));
    EXPECT_EQ(decoded("\xF0\x9F\x98\x80"), units(u"\U0001F600"));
    EXPECT_EQ(decoded("\xF4\x90\x80\x80"), units(u"\uFFFD"));
    EXPECT_EQ(decoded("\x80\xFF\xE2\x82"), units(u"\uFFFD\uFFFD\uFFFD"));
    // Halves cannot travel alone in UTF-8.
    EXPECT_EQ(utf8(units(u"a\xDC00\xD83C")), "a\xEF\xBF\xBD\xEF\xBF\xBD");
}

// A whole library selected in the player: built, written, encoded, decoded, parsed, read, as a
// list and as a map.
long long roundTrip(int tracks) {
    juce::StringArray paths;
    for (int i = 0; i < tracks; ++i)
        paths.add(units(u"C:\\Music\\Caf\u00E9 & Co\\Album 17\\") + juce::String(i) + ".wma");
    const auto start = std::chrono::steady_clock::now();
    OrvaneEvent event("CleanTracks");
    event.addList("map.trackPaths", paths);
    const auto back = overTheWire(event);
    juce::StringArray list;
    back->getList("map.trackPaths", list);
    juce::StringPairArray map;
    back->getMap("map", map);
    const auto time = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(list, paths);
    EXPECT_EQ(map.getAllValues(), paths);
    return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

TEST(Cost, GrowsWithTheNumberOfTracks) {
    roundTrip(1000);  // caches, allocator
    // The best of two: the machine may be busy with other things.
    const auto best = [](int tracks) { return std::min(roundTrip(tracks), roundTrip(tracks)); };
    const auto base = best(20'000 / test::slowdown);
    EXPECT_LT(base, 1500);
    // Four times the work; quadratic cost would show as sixteen.
    EXPECT_LT(best(80'000 / test::slowdown), 9 * std::max(base, 20LL));
}

}  // namespace
}  // namespace orvane
