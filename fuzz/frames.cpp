// Fuzzes the frame reader: the payloads do not depend on how the stream is split into reads.

#include <algorithm>
#include <vector>

#include "common/messages/frame.h"
#include "fuzz/require.h"

using namespace orvane;
using fuzz::require;
using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

namespace {

// The payloads of a stream, and last what had come of one that the end cuts.
std::vector<Bytes> cutBy(View stream, View cuts) {
    std::vector<Bytes> payloads;
    frame::Reader reader;
    const auto take = [&] {
        payloads.emplace_back(reader.payload().begin(), reader.payload().end());
    };
    for (std::size_t i = 0; !stream.empty(); ++i) {
        const auto room = reader.room();
        require(!room.empty() && room.size() <= frame::Reader::kMaxStep, "a read has a size");
        const std::size_t wanted = cuts.empty() ? stream.size() : cuts[i % cuts.size()] % 32 + 1;
        const std::size_t count = std::min({wanted, room.size(), stream.size()});
        std::copy_n(stream.begin(), count, room.begin());
        stream = stream.subspan(count);
        if (reader.advance(count)) take();
    }
    if (reader.cut()) take();
    return payloads;
}

// The same by looking at the whole stream at once.
std::vector<Bytes> seenWhole(View stream) {
    std::vector<Bytes> payloads;
    while (stream.size() >= frame::kHeaderSize) {
        frame::Header header;
        std::copy_n(stream.begin(), header.size(), header.begin());
        stream = stream.subspan(header.size());
        const auto length = frame::decodeHeader(header);
        if (!length) continue;
        const View payload = stream.first(std::min<std::size_t>(*length, stream.size()));
        payloads.emplace_back(payload.begin(), payload.end());
        stream = stream.subspan(payload.size());
    }
    return payloads;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    View input(data, size);
    const std::size_t cutCount = std::min<std::size_t>(fuzz::takeChoice(input) % 8, input.size());
    const View cuts = input.first(cutCount);
    const View stream = input.subspan(cutCount);

    const std::vector<Bytes> whole = seenWhole(stream);
    require(cutBy(stream, {}) == whole, "reads as large as may be give the stream's payloads");
    require(cutBy(stream, cuts) == whole, "small reads give the stream's payloads");

    Bytes sent;
    for (const Bytes& payload : whole) {
        const Bytes block = frame::encode(payload);
        require(block.empty() == payload.empty(), "every payload but an empty one has a frame");
        sent.insert(sent.end(), block.begin(), block.end());
    }
    std::vector<Bytes> expected = whole;
    std::erase_if(expected, [](const Bytes& payload) { return payload.empty(); });
    require(cutBy(sent, cuts) == expected, "what is framed comes out again");
    return 0;
}
