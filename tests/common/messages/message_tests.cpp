#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"

namespace orvane {
namespace {

juce::String units(std::u16string_view text) { return stringOfUnits(text); }

// The payload without its zero byte.
std::string written(const OrvaneMessage& message) {
    const auto bytes = message.toPayload();
    EXPECT_EQ(bytes.back(), 0);
    return {bytes.begin(), bytes.end() - 1};
}

std::unique_ptr<OrvaneMessage> read(const std::string& bytes) {
    return OrvaneMessage::parsePayload(
        {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

TEST(Document, IsWrittenByteForByte) {
    OrvaneEvent event("PlayerMaximized");
    event.setValue("Player", "wmp");
    event.setValue("PlayerRect", "10,20,800,600");
    const std::string text = written(event);
    EXPECT_EQ(text,
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n"
              "<OrVaneIPC event=\"PlayerMaximized\">\r\n"
              "  <Player>wmp</Player>\r\n"
              "  <PlayerRect>10,20,800,600</PlayerRect>\r\n"
              "</OrVaneIPC>\r\n");
    EXPECT_EQ(event.toPayload().size(), 158U);
    EXPECT_EQ(event.toDocument().toStdString(), text);
    std::vector<std::uint8_t> behind{1, 2};
    event.appendPayload(behind);
    EXPECT_EQ(behind.size(), 160U);

    EXPECT_EQ(written(OrvaneCommand("pause")),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<command event=\"pause\"/>\r\n");
    OrvaneResponse response("x");
    response.setValue("empty", "");
    EXPECT_EQ(written(response),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<response event=\"x\">\r\n"
              "  <empty></empty>\r\n</response>\r\n");
}

TEST(Document, EscapesTextAndAttributesDifferently) {
    const std::string plain = " .,;:-()_+=?!'#@[]/\\*%~{}azAZ09";
    const juce::String odd = units(u"&\">< $^`|\t\u007F\u00E9\uFFFF\U0001F3B5\xD83C");
    const std::string escaped =
        "&amp;&quot;&gt;&lt; &#36;&#94;&#96;&#124;&#9;&#127;&#233;&#65535;&#55356;&#57269;&#55356;";
    OrvaneEvent event(odd + "\r\n");
    event.setValue("plain", juce::String(plain));
    event.setValue(units(u"odd\u00E9\xDC00"), odd + "\r\n");
    const std::string document = written(event);
    for (const std::string& part :
         {"event=\"" + escaped + "&#13;&#10;\">", "<plain>" + plain + "</plain>",
          "<odd\xC3\xA9\xEF\xBF\xBD>" + escaped + "\r\n</odd\xC3\xA9\xEF\xBF\xBD>"})
        EXPECT_NE(document.find(part), std::string::npos) << document;
}

TEST(Document, IsReadBackUnchangedAsTheSameClass) {
    OrvaneCommand command("setMediaInfoToPath");
    const juce::String title = units(u"<Caf\u00E9> & \"\u65E5\u672C\" $ \U0001F3B5 \xDC00-\xD83C");
    command.setValue("metadata.TrackTitle", title);
    command.setValue("spaces", "   ");
    command.setValue("framed", "  a  b ");
    command.setValue("wide", units(u"\u2003x y\u3000"));
    const juce::String clef = units(u"\U0001D11E");  // names stand as they are, in UTF-8
    command.setValue(clef, "G");
    command.setValue("ab", "c");
    for (const auto& back : {read(written(command)), OrvaneMessage::parse(command.toDocument())}) {
        ASSERT_NE(dynamic_cast<OrvaneCommand*>(back.get()), nullptr);
        EXPECT_EQ(back->getName(), "setMediaInfoToPath");
        EXPECT_EQ(back->getValue("METADATA.tracktitle"), title);
        EXPECT_EQ(back->getValue("spaces"), "");
        EXPECT_EQ(back->getValue("framed"), "a  b");
        EXPECT_EQ(back->getValue("wide"), "x y");
        EXPECT_EQ(back->getValue(clef), "G");
        EXPECT_EQ(back->getValue("ab"), "c");
    }
    EXPECT_NE(dynamic_cast<OrvaneEvent*>(read(written(OrvaneEvent("a"))).get()), nullptr);
    OrvaneResponse answer("b");
    EXPECT_FALSE(answer.getReturnValue());
    answer.setValue("return_value", "TRUE");
    const auto response = read(written(answer));
    ASSERT_NE(dynamic_cast<OrvaneResponse*>(response.get()), nullptr);
    EXPECT_TRUE(dynamic_cast<OrvaneResponse*>(response.get())->getReturnValue());
}

TEST(Message, KeysIgnoreCaseAndKeepTheirPosition) {
    OrvaneEvent event("e");
    for (const char* key : {"player", "other", "a", "b1", "Other"}) event.setValue(key, "old");
    event.setValue("Player", "new");
    std::string all;
    for (const auto& [key, value] : event.getParameters())
        all += (key + "=" + value + " ").toStdString();
    EXPECT_EQ(all, "player=new other=old a=old b1=old ");

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
    event.addList("late", {"", "b"});
    juce::StringArray list;
    EXPECT_FALSE(event.getList("none", list));
    EXPECT_FALSE(event.getList("late", list));
    EXPECT_TRUE(event.getList("p", list));
    EXPECT_EQ(list, juce::StringArray({"a"}));
    EXPECT_TRUE(event.getList("none", list)) << "what the list held before counts";

    event.setValue("P1", "b");
    event.addList("p", {"A"});
    list.clear();
    EXPECT_TRUE(event.getList("p", list));
    EXPECT_EQ(list, juce::StringArray({"A", "b", "c"}));
    juce::StringArray many;
    for (int i = 0; i < 1200; ++i) many.add("x" + juce::String(i));
    event.addList("many", many);
    list.clear();
    EXPECT_TRUE(read(written(event))->getList("MANY", list));
    EXPECT_EQ(list, many);
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

}  // namespace
}  // namespace orvane
