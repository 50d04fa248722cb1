#include "standins/app/arrivals.h"

#include <algorithm>

namespace orvane::standin::app {

void Arrivals::add(MessagePtr message) {
    {
        const std::lock_guard lock(m_mutex);
        m_kept.push_back(std::move(message));
        if (m_kept.size() > kKeptAtMost) {
            m_kept.pop_front();
            ++m_forgotten;
        }
    }
    changed();
}

std::size_t Arrivals::count() const {
    const std::lock_guard lock(m_mutex);
    return m_forgotten + m_kept.size();
}

MessagePtr Arrivals::next(std::size_t& place,
                          const std::function<bool(const OrvaneMessage&)>& test) const {
    const std::lock_guard lock(m_mutex);
    for (std::size_t at = std::max(place, m_forgotten); at < m_forgotten + m_kept.size(); ++at) {
        const MessagePtr& message = m_kept[at - m_forgotten];
        if (!test(*message)) continue;
        place = at + 1;
        return message;
    }
    return nullptr;
}

bool Arrivals::waitUntil(std::chrono::milliseconds limit, const std::function<bool()>& isSo) {
    using std::chrono::steady_clock;
    for (const auto deadline = steady_clock::now() + limit; !isSo();) {
        const std::chrono::duration<double, std::milli> left = deadline - steady_clock::now();
        // The event stays signalled until a thread waits, so no change since isSo() is missed.
        if (left.count() <= 0 || !m_came.wait(left.count())) return isSo();
    }
    return true;
}

}  // namespace orvane::standin::app
