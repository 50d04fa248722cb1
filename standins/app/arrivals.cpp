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

void Arrivals::changed() {
    {
        const std::lock_guard lock(m_mutex);
        ++m_changes;
    }
    m_came.notify_all();
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
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::unique_lock lock(m_mutex);
    for (bool inTime = true;;) {
        const std::size_t seen = m_changes;
        lock.unlock();
        const bool so = isSo();
        if (so || !inTime) return so;
        lock.lock();
        inTime = m_came.wait_until(lock, deadline, [&] { return m_changes != seen; });
    }
}

}  // namespace orvane::standin::app
