#include "standins/app/frame_scanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvane::standin::app {
namespace {

using testing::HasSubstr;

// What came out, as words: "frame@0:abc" or "trouble@12:...".
std::vector<std::string> words(const std::vector<FrameScanner::Found>& found) {
    std::vector<std::string> all;
    for (const FrameScanner::Found& one : found)
        all.push_back((one.isFrame ? "frame@" : "trouble@") + std::to_string(one.offset) + ":" +
                      one.text);
    return all;
}

std::vector<std::string> inPieces(const std::string& bytes, std::size_t size) {
    FrameScanner scanner;
    std::vector<FrameScanner::Found> found;
    for (std::size_t at = 0; at < bytes.size(); at += size)
        for (auto& one : scanner.feed(std::string_view(bytes).substr(at, size)))
            found.push_back(std::move(one));
    for (auto& one : scanner.finish()) found.push_back(std::move(one));
    return words(found);
}

TEST(FrameScanner, FindsFramesHoweverTheyAreCut) {
    const std::string bytes = frameAround("one") + frameAround("t") + frameAround("three");
    const std::vector<std::string> wanted = {"frame@0:one", "frame@11:t", "frame@20:three"};
    for (const std::size_t size : {1u, 2u, 7u, 8u, 9u, 1000u})
        EXPECT_EQ(inPieces(bytes, size), wanted) << "in pieces of " << size;
}

TEST(FrameScanner, TellsABadMagicAndFindsTheNextFrame) {
    // Part of a magic among the garbage must neither be taken for one nor hide the real one.
    const std::string garbage = std::string("\xDE\xAD\xBE\xEF") + "\x2C\x9E" + "zz" + "\x2C";
    const std::string bytes = frameAround("a") + garbage + frameAround("b");
    const auto whole = inPieces(bytes, 1000);
    ASSERT_EQ(whole.size(), 3u);
    EXPECT_EQ(whole[0], "frame@0:a");
    EXPECT_THAT(whole[1], HasSubstr("trouble@9:bad magic DE AD BE EF"));
    EXPECT_THAT(whole[1], HasSubstr("2C 9E B4 F2"));
    EXPECT_THAT(whole[1], HasSubstr("9 bytes skipped"));
    EXPECT_EQ(whole[2], "frame@18:b");
    // Byte by byte the frame is found as well; the garbage may be told in several pieces.
    EXPECT_EQ(inPieces(bytes, 1).back(), "frame@18:b");
}

TEST(FrameScanner, TellsFourWrongBytesWithoutWaitingForMore) {
    FrameScanner scanner;
    const auto found = words(scanner.feed("\xDE\xAD\xBE\xEF"));
    ASSERT_EQ(found.size(), 1u);
    EXPECT_THAT(found[0], HasSubstr("bad magic"));
}

TEST(FrameScanner, TellsLengthsOutOfRangeAndTakesTheLargestGoodOne) {
    for (const std::uint32_t length : {0u, 10'485'760u, 0xFFFFFFFFu}) {
        const auto found = inPieces(frameAround("", length) + frameAround("next"), 1000);
        ASSERT_EQ(found.size(), 2u) << length;
        EXPECT_THAT(found[0], HasSubstr("trouble@0:bad length " + std::to_string(length)));
        EXPECT_EQ(found[1], "frame@8:next");
    }
    const std::string largest(10'485'759, 'x');
    FrameScanner scanner;
    std::size_t frames = 0;
    const std::string bytes = frameAround(largest);
    for (std::size_t at = 0; at < bytes.size(); at += 64)
        frames += scanner.feed(std::string_view(bytes).substr(at, 64)).size();
    EXPECT_EQ(frames, 1u);
}

TEST(FrameScanner, TellsWhatWasCutShort) {
    const std::string frame = frameAround("twelve bytes");
    const auto inPayload = inPieces(frameAround("a") + frame.substr(0, 13), 1000);
    ASSERT_EQ(inPayload.size(), 2u);
    EXPECT_EQ(inPayload[1], "trouble@9:frame cut short: only 5 of 12 payload bytes arrived");
    EXPECT_THAT(inPieces(frame.substr(0, 6), 1000).at(0), HasSubstr("6 of a header's 8 bytes"));
    FrameScanner scanner;
    EXPECT_EQ(scanner.unfinished(), "");
    scanner.feed(frame.substr(0, 8));
    EXPECT_EQ(scanner.unfinished(), "0 of 12 payload bytes");
    scanner.feed(frame.substr(8));
    EXPECT_EQ(scanner.unfinished(), "");
}

}  // namespace
}  // namespace orvane::standin::app
