#pragma once

// The messages that have come over the two pipes, in order. Reader threads add; one thread, which
// runs the lines, waits.

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "common/messages/orvane_message.h"

namespace orvane::standin::app {

using MessagePtr = std::shared_ptr<const OrvaneMessage>;

class Arrivals {
public:
    void add(MessagePtr message);
    // Wakes the waiting thread after another change: a client has connected or disconnected.
    void changed() { m_came.signal(); }

    // How many have come: a place to look from.
    [[nodiscard]] std::size_t count() const;
    // The first one from `place` on that passes, or null; `place` is then the one after it.
    MessagePtr next(std::size_t& place,
                    const std::function<bool(const OrvaneMessage&)>& test) const;

    // Calls `isSo` at once, and again after each arrival and change, until it answers true or the
    // time is up. Returns its last answer.
    bool waitUntil(std::chrono::milliseconds limit, const std::function<bool()>& isSo);

private:
    static constexpr std::size_t kKeptAtMost = 10'000;

    mutable std::mutex m_mutex;
    juce::WaitableEvent m_came;
    std::deque<MessagePtr> m_kept;
    std::size_t m_forgotten = 0;  // how many came before the first one kept
};

}  // namespace orvane::standin::app
