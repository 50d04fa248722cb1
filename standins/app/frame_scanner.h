#pragma once

// Finds the frames in what one pipe brings, however it is cut into reads, and says of everything
// else what is wrong with it and where. The application is the tool one watches the protocol
// with, so it is kinder than the protocol asks: after a bad header it looks for the next magic.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/messages/frame.h"

namespace orvane::standin::app {

// One frame around a payload, or around a lie: `length` goes into the header as it is.
std::string frameAround(std::string_view payload, std::uint32_t length,
                        std::uint32_t magic = frame::kMagic);
std::string frameAround(std::string_view payload);

class FrameScanner {
public:
    struct Found {
        bool isFrame = false;
        std::uint64_t offset = 0;  // of the frame or the trouble, from the connection's beginning
        std::string text;          // the frame's payload, or the trouble in words
    };

    // Takes the next bytes; gives what they complete. Keeps only bytes that have arrived.
    std::vector<Found> feed(std::string_view bytes);

    // The connection has ended: what was begun and never finished, if anything.
    std::vector<Found> finish();

    // How much of an unfinished frame is here, for a reader that wonders; "" when nothing is.
    [[nodiscard]] std::string unfinished() const;

private:
    void scan(std::vector<Found>& found);
    void noteSkipped(std::vector<Found>& found);
    void discard(std::size_t count);

    std::string m_pending;
    std::uint64_t m_offset = 0;  // of m_pending's first byte
    std::string m_trouble;       // what is wrong with the header at m_troubleAt
    std::uint64_t m_troubleAt = 0;
    std::uint64_t m_skipped = 0;  // bytes thrown away since
};

}  // namespace orvane::standin::app
