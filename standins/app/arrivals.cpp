#include "standins/app/arrivals.h"

#include <algorithm>

namespace orvane::standin::app {

void Arrivals::add(Arrival arrival) {
    {
        const std::lock_guard lock(m_mutex);
        m_kept.push_back(std::move(arrival));
        if (m_kept.size() > kKeptAtMost) {
            m_kept.pop_front();
            ++m_forgotten;
        }
    }
    m_came.notify_all();
}

std::size_t Arrivals::count() const {
    const std::lock_guard lock(m_mutex);
    return m_forgotten + m_kept.size();
}

std::optional<Arrival> Arrivals::waitFor(std::size_t& place, std::chrono::milliseconds limit,
                                         const Test& test) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    std::unique_lock lock(m_mutex);
    std::size_t next = place;
    for (;;) {
        next = std::max(next, m_forgotten);
        for (; next < m_forgotten + m_kept.size(); ++next) {
            const Arrival& arrival = m_kept[next - m_forgotten];
            if (!test(arrival)) continue;
            place = next + 1;
            return arrival;
        }
        if (m_stopped) return {};
        if (m_came.wait_until(lock, deadline) == std::cv_status::timeout &&
            next == m_forgotten + m_kept.size())
            return {};
    }
}

void Arrivals::forEach(std::size_t place, const std::function<void(const Arrival&)>& each) const {
    const std::lock_guard lock(m_mutex);
    for (std::size_t next = std::max(place, m_forgotten); next < m_forgotten + m_kept.size();
         ++next)
        each(m_kept[next - m_forgotten]);
}

void Arrivals::stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
    }
    m_came.notify_all();
}

}  // namespace orvane::standin::app
