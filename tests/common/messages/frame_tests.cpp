#include "common/messages/frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "tests/support/counted_memory.h"

namespace orvane::frame {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes pattern(std::size_t size) {
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

// What a stream yields when it arrives in pieces of `step` bytes.
std::vector<Bytes> read(Reader& reader, std::span<const std::uint8_t> stream, std::size_t step) {
    std::vector<Bytes> payloads;
    while (!stream.empty()) {
        const auto room = reader.room();
        const std::size_t count = std::min({step, room.size(), stream.size()});
        std::copy_n(stream.begin(), count, room.begin());
        stream = stream.subspan(count);
        if (reader.advance(count))
            payloads.emplace_back(reader.payload().begin(), reader.payload().end());
    }
    return payloads;
}

TEST(Frame, HasItsMagicAndLengthLittleEndian) {
    EXPECT_EQ(encodeHeader(158), (Header{0x2C, 0x9E, 0xB4, 0xF2, 0x9E, 0, 0, 0}));
    EXPECT_EQ(decodeHeader(encodeHeader(10'485'759)), 10'485'759u);
    EXPECT_EQ(decodeHeader(encodeHeader(10'485'760)), std::nullopt);
    EXPECT_EQ(decodeHeader(encodeHeader(0xFFFFFFFF)), std::nullopt);
    EXPECT_EQ(decodeHeader(encodeHeader(0)), std::nullopt);
    EXPECT_EQ(decodeHeader({0x2D, 0x9E, 0xB4, 0xF2, 1, 0, 0, 0}), std::nullopt);
    EXPECT_TRUE(encode({}).empty());
    EXPECT_TRUE(encode(Bytes(kPayloadLimit)).empty());
}

TEST(Frame, ATruncatedFrameYieldsTheBytesThatArrived) {
    Reader reader;
    Bytes stream = encode(pattern(100'000));
    stream.resize(kHeaderSize + 70'000);
    EXPECT_TRUE(read(reader, stream, 4096).empty());
    ASSERT_TRUE(reader.cut());
    EXPECT_EQ(Bytes(reader.payload().begin(), reader.payload().end()),
              Bytes(stream.begin() + kHeaderSize, stream.end()));

    // Cut in the header: nothing to deliver, and the next byte starts a new one.
    read(reader, pattern(5), 5);
    EXPECT_FALSE(reader.cut());
    EXPECT_EQ(read(reader, encode(pattern(9)), 2), std::vector<Bytes>{pattern(9)});

    // Cut right after the header.
    stream.resize(kHeaderSize);
    read(reader, stream, 8);
    EXPECT_TRUE(reader.cut());
    EXPECT_TRUE(reader.payload().empty());
}

TEST(Frame, MemoryGrowsWithTheBytesReceivedNotWithTheClaimedLength) {
    const std::size_t before = test::memoryInUse();
    test::resetPeak();
    Reader reader;
    read(reader, encodeHeader(kPayloadLimit - 1), 8);
    EXPECT_LE(reader.room().size(), Reader::kMaxStep);
    read(reader, Bytes(100), 100);
    EXPECT_LE(test::peakMemory() - before, 2 * Reader::kMaxStep);

    // And one large message does not keep its memory for as long as the link lasts.
    Reader another;
    read(another, encode(Bytes(4'000'000)), 1'000'000);
    read(another, encode(Bytes(10)), 18);
    test::resetPeak();
    EXPECT_LE(test::peakMemory() - before, 1'000'000U);
}

}  // namespace
}  // namespace orvane::frame
