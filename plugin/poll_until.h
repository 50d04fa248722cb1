#pragma once

#include <cstdint>

namespace orvane {

// Calls `reached` until it returns true or `timeoutMs` have passed on the clock `nowMs`, a 32-bit
// millisecond counter that may wrap around. Calls it at least once. Does not sleep: `betweenPolls`
// runs after each poll. Returns the last result of `reached`.
template <typename Clock, typename Poll, typename Work>
[[nodiscard]] bool pollUntil(std::uint32_t timeoutMs, Clock nowMs, Poll reached,
                             Work betweenPolls) {
    const std::uint32_t start = nowMs();
    for (;;) {
        const bool done = reached();
        betweenPolls();
        if (done) return true;
        // Unsigned: the difference is correct when the counter wraps around.
        if (nowMs() - start >= timeoutMs) return false;
    }
}

}  // namespace orvane
