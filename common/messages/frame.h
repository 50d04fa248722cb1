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
inline constexpr std::uint32_t magic = 0xF2B49E2C;
inline constexpr std::size_t headerSize = 8;
inline constexpr std::size_t payloadLimit = 10'485'760;  // a payload is shorter than this

using Header = std::array<std::uint8_t, headerSize>;

[[nodiscard]] constexpr bool isPayloadLength(std::size_t length) {
    return length > 0 && length < payloadLimit;
}

[[nodiscard]] Header encodeHeader(std::uint32_t payloadLength);
// The payload's length; none when the magic is another or the length out of range.
[[nodiscard]] std::optional<std::uint32_t> decodeHeader(const Header& header);

// Header and payload in one block, for a single write; empty when the payload's length is out of
// range.
[[nodiscard]] std::vector<std::uint8_t> encode(std::span<const std::uint8_t> payload);

// Takes a stream apart into payloads, however it is cut into reads. Fill room(), say with
// advance() how much was filled, and take the payload whenever that answers true. Never asks for a
// byte beyond the frame under way, and its memory grows with what has arrived, not with what a
// header claims. Eight bytes that are no header are dropped; the next eight are looked at as one.
class Reader {
public:
    static constexpr std::size_t maxStep = 65'536;

    // Where the next bytes go: at least one, at most maxStep.
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
    static constexpr std::size_t keptMemory = 4 * maxStep;

    Header m_header{};
    std::size_t m_headerFilled = 0;
    std::size_t m_expected = 0;  // of the payload; 0 while a header is being read
    std::size_t m_filled = 0;    // of the payload
    std::vector<std::uint8_t> m_payload;
};

}  // namespace orvane::frame
