// Frames and documents: what is right is read, what is wrong is told in clear words.

#include "standins/app/protocol.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "standins/app/frame_scanner.h"

namespace orvane::standin::app {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

// What came out, as words: "frame@0:abc" or "trouble@12:...".
std::vector<std::string> inPieces(const std::string& bytes, std::size_t size) {
    FrameScanner scanner;
    std::vector<std::string> all;
    const auto take = [&](const std::vector<FrameScanner::Found>& found) {
        for (const FrameScanner::Found& one : found)
            all.push_back((one.isFrame ? "frame@" : "trouble@") + std::to_string(one.offset) + ":" +
                          one.text);
    };
    for (std::size_t at = 0; at < bytes.size(); at += size)
        take(scanner.feed(std::string_view(bytes).substr(at, size)));
    take(scanner.finish());
    return all;
}

TEST(FrameScanner, FindsFramesHoweverTheyAreCut) {
    const std::string bytes = frameAround("one") + frameAround("t") + frameAround("three");
    for (const std::size_t size : {1u, 2u, 7u, 8u, 9u, 1000u})
        EXPECT_THAT(inPieces(bytes, size),
                    ElementsAre("frame@0:one", "frame@11:t", "frame@20:three"))
            << "in pieces of " << size;
    FrameScanner scanner;
    std::size_t frames = 0;
    const std::string largest = frameAround(std::string(10'485'759, 'x'));
    for (std::size_t at = 0; at < largest.size(); at += 4096)
        frames += scanner.feed(std::string_view(largest).substr(at, 4096)).size();
    EXPECT_EQ(frames, 1u);
}

TEST(FrameScanner, TellsWhatIsWrongAndFindsTheNextFrame) {
    // Part of a magic among the garbage must neither be taken for one nor hide the real one.
    const std::string garbage = std::string("\xDE\xAD\xBE\xEF") + "\x2C\x9E" + "zz" + "\x2C";
    const std::string bytes = frameAround("a") + garbage + frameAround("b");
    EXPECT_THAT(inPieces(bytes, 1000),
                ElementsAre("frame@0:a",
                            testing::AllOf(HasSubstr("trouble@9:bad magic DE AD BE EF"),
                                           HasSubstr("2C 9E B4 F2"), HasSubstr("9 bytes skipped")),
                            "frame@18:b"));
    EXPECT_EQ(inPieces(bytes, 1).back(), "frame@18:b");
    EXPECT_EQ(FrameScanner().feed("\xDE\xAD\xBE\xEF").size(), 1u) << "waits for more";
    for (const std::uint32_t length : {0u, 10'485'760u, 0xFFFFFFFFu})
        EXPECT_THAT(inPieces(frameAround("", length) + frameAround("next"), 1000),
                    ElementsAre(HasSubstr("trouble@0:bad length " + std::to_string(length)),
                                "frame@8:next"));
    const std::string frame = frameAround("twelve bytes");
    EXPECT_THAT(
        inPieces(frameAround("a") + frame.substr(0, 13), 1000),
        ElementsAre("frame@0:a", "trouble@9:frame cut short: only 5 of 12 payload bytes arrived"));
    EXPECT_THAT(inPieces(frame.substr(0, 6), 1000), ElementsAre(HasSubstr("6 of a header's 8")));
}

TEST(Protocol, WritesACommandAndReadsEventsAndResponses) {
    EXPECT_EQ(commandPayload("start", {{"trackPath", "C:\\caf\xC3\xA9 & co"}}),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n"
              "<command event=\"start\">\r\n"
              "  <trackPath>C:\\caf&#233; &amp; co</trackPath>\r\n"
              "</command>\r\n\0"s);
    const Reading event = readPayload(PipeId::event,
                                      "<OrVaneIPC event=\"PlayerMaximized\"><Player>wmp</Player>"
                                      "<PlayerRect>10,20,800,600</PlayerRect></OrVaneIPC>\0"s);
    ASSERT_TRUE(event.message && event.problems.empty());
    EXPECT_EQ(event.message->name, "PlayerMaximized");
    EXPECT_THAT(event.message->parameters,
                ElementsAre(Pair("Player", "wmp"), Pair("PlayerRect", "10,20,800,600")));
    const Reading response =
        readPayload(PipeId::command, "<response event=\"x\"><a>&#55356;&#57269;</a></response>\0"s);
    ASSERT_TRUE(response.message && response.problems.empty());
    EXPECT_EQ(response.message->parameters.at(0).second, "\xF0\x9F\x8E\xB5");
}

TEST(Protocol, SaysWhatIsWrongWithADocument) {
    const struct {
        PipeId pipe;
        std::string payload;
        const char* problem;
        bool readable;
    } cases[] = {
        {PipeId::event, "<OrVaneIPC event=\"PlayStopped\"><Player>wmp</Plyer>\0"s, "not XML",
         false},
        {PipeId::event, "\0"s, "the document is empty", false},
        {PipeId::event, "<Command event=\"x\"/>\0"s, "root element is 'Command'", false},
        {PipeId::command, "<response event=\"x\"/>", "does not end in a zero", true},
        {PipeId::command, "<response event=\"x\"/>\0more\0"s, "5 bytes after it", true},
        {PipeId::command, "<response event=\"x\"><a>\xFF</a></response>\0"s,
         "not UTF-8 at byte 23: FF", true},
        {PipeId::event, "<response event=\"x\"/>\0"s, "this pipe carries events", true},
        {PipeId::event, "<OrVaneIPC event=\"PlayerSang\"/>\0"s, "no event 'PlayerSang'", true},
        {PipeId::command, "<response/>\0"s, "no 'event' attribute", true},
        {PipeId::event, "<OrVaneIPC event=\"PlayStopped\"/>\0"s, "without its parameter Player",
         true},
    };
    for (const auto& one : cases) {
        const Reading reading = readPayload(one.pipe, one.payload);
        EXPECT_EQ(reading.message.has_value(), one.readable) << one.problem;
        EXPECT_THAT(reading.problems, testing::Contains(HasSubstr(one.problem)));
    }
}

}  // namespace
}  // namespace orvane::standin::app
