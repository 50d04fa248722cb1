#include "standins/app/frame_scanner.h"

#include <algorithm>
#include <utility>

#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

void putLittleEndian(std::string& out, std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        out += static_cast<char>(static_cast<std::uint8_t>(value >> shift));
}

std::uint32_t littleEndian(std::string_view bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= static_cast<std::uint32_t>(static_cast<std::uint8_t>(bytes[i])) << (8 * i);
    return value;
}

const std::string& magicBytes() {
    static const std::string bytes = [] {
        std::string b;
        putLittleEndian(b, frame::kMagic);
        return b;
    }();
    return bytes;
}

// Where the magic, or as much of it as has arrived, begins.
std::size_t nextMagic(std::string_view bytes, std::size_t from) {
    const std::string& magic = magicBytes();
    for (std::size_t at = bytes.find(magic[0], from); at != std::string_view::npos;
         at = bytes.find(magic[0], at + 1)) {
        const std::string_view rest = bytes.substr(at, magic.size());
        if (std::string_view(magic).substr(0, rest.size()) == rest) return at;
    }
    return bytes.size();
}

}  // namespace

std::string frameAround(std::string_view payload, std::uint32_t length, std::uint32_t magic) {
    std::string frame;
    frame.reserve(frame::kHeaderSize + payload.size());
    putLittleEndian(frame, magic);
    putLittleEndian(frame, length);
    frame += payload;
    return frame;
}

std::string frameAround(std::string_view payload) {
    return frameAround(payload, static_cast<std::uint32_t>(payload.size()));
}

std::vector<FrameScanner::Found> FrameScanner::feed(std::string_view bytes) {
    m_pending += bytes;
    std::vector<Found> found;
    scan(found);
    return found;
}

void FrameScanner::scan(std::vector<Found>& found) {
    std::size_t at = 0;
    for (;;) {
        const std::string_view rest = std::string_view(m_pending).substr(at);
        // Judged as soon as the magic is here: a peer that sends four wrong bytes and waits is
        // told so.
        if (rest.size() < 4) break;
        if (littleEndian(rest) != frame::kMagic) {
            if (m_trouble.empty()) {
                m_troubleAt = m_offset + at;
                m_trouble = "bad magic " + hexBytes(rest.substr(0, 4)) + ", a frame begins with " +
                            hexBytes(magicBytes());
            }
            const std::size_t skip = nextMagic(rest, 1);
            m_skipped += skip;
            at += skip;
            continue;
        }
        if (rest.size() < frame::kHeaderSize) break;
        const std::uint32_t length = littleEndian(rest.substr(4));
        if (!frame::isPayloadLength(length)) {
            noteSkipped(found);
            m_troubleAt = m_offset + at;
            m_trouble = "bad length " + std::to_string(length) + " (" +
                        hexBytes(rest.substr(4, 4)) + "), it must be 1 to " +
                        std::to_string(frame::kPayloadLimit - 1);
            m_skipped = frame::kHeaderSize;
            at += frame::kHeaderSize;
            continue;
        }
        noteSkipped(found);
        if (rest.size() - frame::kHeaderSize < length) break;
        found.push_back(
            {true, m_offset + at, std::string(rest.substr(frame::kHeaderSize, length))});
        at += frame::kHeaderSize + length;
    }
    // Nothing more to judge for now: say what is already certain rather than wait for a next frame.
    if (m_pending.size() - at < 4) noteSkipped(found);
    discard(at);
}

void FrameScanner::noteSkipped(std::vector<Found>& found) {
    if (m_trouble.empty()) return;
    std::string text = std::exchange(m_trouble, {});
    text += "; " + std::to_string(std::exchange(m_skipped, 0)) + " bytes skipped";
    found.push_back({false, m_troubleAt, std::move(text)});
}

void FrameScanner::discard(std::size_t count) {
    m_pending.erase(0, count);
    m_offset += count;
}

std::string FrameScanner::unfinished() const {
    if (m_pending.empty()) return {};
    if (m_pending.size() < frame::kHeaderSize)
        return std::to_string(m_pending.size()) + " of a header's 8 bytes (" + hexBytes(m_pending) +
               ")";
    return std::to_string(m_pending.size() - frame::kHeaderSize) + " of " +
           std::to_string(littleEndian(std::string_view(m_pending).substr(4))) + " payload bytes";
}

std::vector<FrameScanner::Found> FrameScanner::finish() {
    std::vector<Found> found;
    noteSkipped(found);
    if (!m_pending.empty())
        found.push_back({false, m_offset, "frame cut short: only " + unfinished() + " arrived"});
    m_offset += m_pending.size();
    m_pending.clear();
    return found;
}

}  // namespace orvane::standin::app
