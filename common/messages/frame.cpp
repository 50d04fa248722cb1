#include "common/messages/frame.h"

#include <algorithm>

namespace orvane::frame {
namespace {

void putLittleEndian(std::uint8_t* out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::uint32_t getLittleEndian(const std::uint8_t* in) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value |= static_cast<std::uint32_t>(in[i]) << (8 * i);
    return value;
}

}  // namespace

Header encodeHeader(std::uint32_t payloadLength) {
    Header header{};
    putLittleEndian(header.data(), kMagic);
    putLittleEndian(header.data() + 4, payloadLength);
    return header;
}

std::optional<std::uint32_t> decodeHeader(const Header& header) {
    const std::uint32_t length = getLittleEndian(header.data() + 4);
    if (getLittleEndian(header.data()) != kMagic || !isPayloadLength(length)) return std::nullopt;
    return length;
}

std::vector<std::uint8_t> begin() { return std::vector<std::uint8_t>(kHeaderSize); }

bool finish(std::vector<std::uint8_t>& block) {
    const std::size_t length = block.size() - kHeaderSize;
    if (!isPayloadLength(length)) return false;
    const Header header = encodeHeader(static_cast<std::uint32_t>(length));
    std::copy(header.begin(), header.end(), block.begin());
    return true;
}

std::vector<std::uint8_t> encode(std::span<const std::uint8_t> payload) {
    std::vector<std::uint8_t> block;
    block.reserve(kHeaderSize + payload.size());
    block.resize(kHeaderSize);
    block.insert(block.end(), payload.begin(), payload.end());
    if (!finish(block)) block.clear();
    return block;
}

std::span<std::uint8_t> Reader::room() {
    if (m_expected == 0) return std::span(m_header).subspan(m_headerFilled);
    const std::size_t step = std::min(kMaxStep, m_expected - m_filled);
    // Only ever longer while a frame comes in: shrinking it would clear it anew for each byte.
    const std::size_t needed = m_filled + step;
    if (m_payload.size() < needed) {
        if (m_payload.capacity() < needed)
            m_payload.reserve(std::min(m_expected, std::max(needed, 2 * m_payload.capacity())));
        m_payload.resize(needed);
    }
    return std::span(m_payload).subspan(m_filled, step);
}

bool Reader::advance(std::size_t count) {
    if (m_expected == 0) {
        m_headerFilled += count;
        if (m_headerFilled < kHeaderSize) return false;
        m_headerFilled = 0;
        m_expected = decodeHeader(m_header).value_or(0);
        m_filled = 0;
        // One large message must not keep its memory for as long as the link lasts.
        if (m_payload.capacity() > kKeptMemory) m_payload = std::vector<std::uint8_t>();
        return false;
    }
    m_filled += count;
    if (m_filled < m_expected) return false;
    m_payload.resize(m_filled);
    m_expected = 0;
    return true;
}

bool Reader::cut() {
    m_headerFilled = 0;
    if (m_expected == 0) return false;
    m_payload.resize(m_filled);
    m_expected = 0;
    return true;
}

}  // namespace orvane::frame
