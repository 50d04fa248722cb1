#pragma once

// Everything that has come over the two pipes, in order, for those who wait for some of it.
// Reader threads add; the thread that runs the commands waits.

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "standins/app/message.h"

namespace orvane::standin::app {

struct Arrival {
    enum class What { message, problem, connected, disconnected };
    What what = What::message;
    PipeId pipe = PipeId::event;
    Message message;   // of a message
    std::string text;  // of a problem or a disconnection: what a person should know
};

class Arrivals {
public:
    using Test = std::function<bool(const Arrival&)>;

    void add(Arrival arrival);

    // How many have come: a place to look from.
    [[nodiscard]] std::size_t count() const;

    // The first one from `place` on that passes, waiting for it up to `limit`; `place` then
    // stands behind it. None when the time is up: `place` stays.
    std::optional<Arrival> waitFor(std::size_t& place, std::chrono::milliseconds limit,
                                   const Test& test);

    // Calls `each` for those from `place` on, oldest first.
    void forEach(std::size_t place, const std::function<void(const Arrival&)>& each) const;

    // Ends every wait, now and later.
    void stop();

private:
    // What came before is forgotten, so that days at the prompt do not fill the memory.
    static constexpr std::size_t kKeptAtMost = 20'000;

    mutable std::mutex m_mutex;
    std::condition_variable m_came;
    std::deque<Arrival> m_kept;
    std::size_t m_forgotten = 0;
    bool m_stopped = false;
};

}  // namespace orvane::standin::app
