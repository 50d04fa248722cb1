#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace orvane::frame {

// Encodes and decodes frames. Each message on a pipe is one frame: magic and payload length, both
// 32 bits little-endian, then the payload. There is nothing between two frames.
inline constexpr std::uint32_t kMagic = 0xF2B49E2C;
inline constexpr std::size_t kHeaderSize = 8;
inline constexpr std::size_t kPayloadLimit = 10'485'760;  // a payload is shorter than this

using Header = std::array<std::uint8_t, kHeaderSize>;

[[nodiscard]] constexpr bool isPayloadLength(std::size_t length) {
    return length > 0 && length < kPayloadLimit;
}

[[nodiscard]] Header encodeHeader(std::uint32_t payloadLength);
// The payload's length in bytes; none when the magic is wrong or the length is out of range.
[[nodiscard]] std::optional<std::uint32_t> decodeHeader(const Header& header);

// The first returns a block with space for the header; append the payload to it. The second then
// writes the header: false when the payload's length is out of range. One block is one write.
[[nodiscard]] std::vector<std::uint8_t> begin();
[[nodiscard]] bool finish(std::vector<std::uint8_t>& block);

// Both at once; empty when the payload's length is out of range.
[[nodiscard]] std::vector<std::uint8_t> encode(std::span<const std::uint8_t> payload);

// Splits a byte stream into payloads, whatever the sizes of the reads. Fill room(), call advance()
// with the number of bytes, and take the payload when it returns true. Never requests bytes beyond
// the present frame. Memory grows with the bytes that have arrived, not with the length that a
// header claims. Drops eight bytes that are not a header and reads the next eight as one.
class Reader {
public:
    static constexpr std::size_t kMaxStep = 65'536;

    // The buffer for the next bytes: at least one, at most kMaxStep.
    [[nodiscard]] std::span<std::uint8_t> room();
    // Call it when the first `count` bytes of room() are filled. True when payload() is complete.
    bool advance(std::size_t count);
    // Call it when the stream ends or a frame is not continued. True when a payload had begun;
    // payload() is then the part that arrived. It is not padded with zero bytes to the length in
    // the header: a text ends at its first zero byte, so the padding would not change it.
    bool cut();

    // Valid until the next room().
    [[nodiscard]] std::span<const std::uint8_t> payload() const { return m_payload; }

private:
    static constexpr std::size_t kKeptMemory = 4 * kMaxStep;

    Header m_header{};
    std::size_t m_headerFilled = 0;
    std::size_t m_expected = 0;  // of the payload; 0 while a header is being read
    std::size_t m_filled = 0;    // of the payload
    std::vector<std::uint8_t> m_payload;
};

}  // namespace orvane::frame
