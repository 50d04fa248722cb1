#include "standins/app/protocol.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvane::standin::app {
namespace {

using namespace std::string_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

TEST(Protocol, WritesTheCommandThatThePlugInReads) {
    EXPECT_EQ(commandPayload("start", {{"trackPath", "C:\\caf\xC3\xA9 & co"}}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n"
              "<command event=\"start\">\r\n"
              "  <trackPath>C:\\caf&#233; &amp; co</trackPath>\r\n"
              "</command>\r\n\0"s);
}

TEST(Protocol, ReadsEventsAndResponses) {
    const Reading event = readPayload(PipeId::event,
                                      "<OrVaneIPC event=\"PlayerMaximized\"><Player>wmp</Player>"
                                      "<PlayerRect>10,20,800,600</PlayerRect></OrVaneIPC>\0"s);
    ASSERT_TRUE(event.message);
    EXPECT_THAT(event.problems, IsEmpty());
    EXPECT_EQ(event.message->kind, Message::Kind::event);
    EXPECT_EQ(event.message->name, "PlayerMaximized");
    EXPECT_THAT(event.message->parameters,
                ElementsAre(Pair("Player", "wmp"), Pair("PlayerRect", "10,20,800,600")));

    const Reading response =
        readPayload(PipeId::command,
                    "<response event=\"x\"><metadataOut.TrackTitle>&#55356;&#57269;"
                    "</metadataOut.TrackTitle></response>\0"s);
    ASSERT_TRUE(response.message);
    EXPECT_THAT(response.problems, IsEmpty());
    EXPECT_EQ(response.message->parameters.at(0).second, "\xF0\x9F\x8E\xB5");
}

struct Wrong {
    const char* what;
    PipeId pipe;
    std::string payload;
    const char* problem;
    bool readable;
};

class WrongPayload : public testing::TestWithParam<Wrong> {};

TEST_P(WrongPayload, IsToldWithItsReason) {
    const Reading reading = readPayload(GetParam().pipe, GetParam().payload);
    EXPECT_EQ(reading.message.has_value(), GetParam().readable);
    EXPECT_THAT(reading.problems, Contains(HasSubstr(GetParam().problem)));
}

INSTANTIATE_TEST_SUITE_P(
    Payloads, WrongPayload,
    testing::Values(
        Wrong{"NotXml", PipeId::event, "<OrVaneIPC event=\"PlayStopped\"><Player>wmp</Plyer>\0"s,
              "not XML", false},
        Wrong{"Empty", PipeId::event, "\0"s, "the document is empty", false},
        Wrong{"WrongRoot", PipeId::event, "<Command event=\"x\"/>\0"s, "root element is 'Command'",
              false},
        Wrong{"NoZero", PipeId::command, "<response event=\"x\"/>", "does not end in a zero", true},
        Wrong{"EarlyZero", PipeId::command, "<response event=\"x\"/>\0more\0"s, "5 bytes after it",
              true},
        Wrong{"NotUtf8", PipeId::command, "<response event=\"x\"><a>\xFF</a></response>\0"s,
              "not UTF-8 at byte 23: FF", true},
        Wrong{"WrongPipe", PipeId::event, "<response event=\"x\"/>\0"s, "this pipe carries events",
              true},
        Wrong{"UnknownEvent", PipeId::event, "<OrVaneIPC event=\"PlayerSang\"/>\0"s,
              "no event 'PlayerSang'", true},
        Wrong{"NoName", PipeId::command, "<response/>\0"s, "no 'event' attribute", true},
        Wrong{"NoPlayer", PipeId::event, "<OrVaneIPC event=\"PlayStopped\"/>\0"s,
              "without its parameter Player", true}),
    [](const auto& wrong) { return wrong.param.what; });

}  // namespace
}  // namespace orvane::standin::app
