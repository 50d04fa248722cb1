// Any stream of bytes, cut at any places: what the frame reader asks for and yields stays in
// bounds.

#include "common/frame.h"

#include <algorithm>
#include <cstdlib>

using namespace orvane::frame;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const std::size_t stride = std::size_t{1} + data[0] * (data[1] % 8U);
    std::span<const std::uint8_t> stream(data + 2, size - 2);
    Reader reader;
    std::size_t delivered = 0;
    while (!stream.empty()) {
        const auto room = reader.room();
        if (room.empty() || room.size() > Reader::maxStep) std::abort();
        const std::size_t count = std::min({stride, room.size(), stream.size()});
        std::copy_n(stream.begin(), count, room.begin());
        stream = stream.subspan(count);
        if (reader.advance(count)) {
            if (!isPayloadLength(reader.payload().size())) std::abort();
            delivered += reader.payload().size();
        }
    }
    if (reader.cut()) delivered += reader.payload().size();
    if (delivered > size) std::abort();
    return 0;
}
