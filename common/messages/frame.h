#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace orvane::frame {

// Each message on a pipe is one frame: magic and payload length, both 32 bits little-endian, then
// the payload. Frames follow one another with nothing between them.
inline constexpr std::uint32_t kMagic = 0xF2B49E2C;
inline constexpr std::size_t kHeaderSize = 8;
inline constexpr std::size_t kPayloadLimit = 10'485'760;  // a payload is shorter than this

using Header = std::array<std::uint8_t, kHeaderSize>;

[[nodiscard]] constexpr bool isPayloadLength(std::size_t length) {
    return length > 0 && length < kPayloadLimit;
}

[[nodiscard]] Header encodeHeader(std::uint32_t payloadLength);
// The payload's length; none when the magic is another or the length out of range.
[[nodiscard]] std::optional<std::uint32_t> decodeHeader(const Header& header);

// A block that begins with room for a header, to append a payload to, and that header once the
// payload is there: false when its length is out of range. One block is one write.
[[nodiscard]] std::vector<std::uint8_t> begin();
[[nodiscard]] bool finish(std::vector<std::uint8_t>& block);

// Both at once; empty when the payload's length is out of range.
[[nodiscard]] std::vector<std::uint8_t> encode(std::span<const std::uint8_t> payload);

// Takes a stream apart into payloads, however it is cut into reads. Fill room(), say with
// advance() how much was filled, and take the payload whenever that answers true. Never asks for a
// byte beyond the frame under way, and its memory grows with what has arrived, not with what a
// header claims. Eight bytes that are no header are dropped; the next eight are looked at as one.
class Reader {
public:
    static constexpr std::size_t kMaxStep = 65'536;

    // Where the next bytes go: at least one, at most kMaxStep.
    [[nodiscard]] std::span<std::uint8_t> room();
    // The first `count` bytes of room() are filled. True: payload() is whole.
    bool advance(std::size_t count);
    // No more will come of the frame under way. True: a payload had begun, and payload() holds
    // what arrived of it. The announced length would be filled up with zero bytes, and a text ends
    // at the first of those, so leaving them out changes no text.
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
