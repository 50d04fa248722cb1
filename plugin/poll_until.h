#pragma once

#include <cstdint>

namespace orvane {

// Polls without sleeping until `reached` answers true, or until `timeoutMs` have passed on the
// clock `nowMs`, a 32-bit millisecond counter that may wrap around meanwhile. `betweenPolls` runs
// after each poll. Polls at least once, whatever the time-out. Whether the last poll was true.
template <typename Clock, typename Poll, typename Work>
[[nodiscard]] bool pollUntil(std::uint32_t timeoutMs, Clock nowMs, Poll reached,
                             Work betweenPolls) {
    const std::uint32_t start = nowMs();
    for (;;) {
        const bool done = reached();
        betweenPolls();
        if (done) return true;
        // Unsigned on purpose: the difference is right across the wrap.
        if (nowMs() - start >= timeoutMs) return false;
    }
}

}  // namespace orvane
