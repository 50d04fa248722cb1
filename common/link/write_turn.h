#pragma once

#include <array>
#include <atomic>

#include "platform/handles.h"
#include "platform/waiting.h"

namespace orvane {

// One writer at a time. Without another writer a turn is taken and given back without a call into
// the system; with one it is waited for, for a limited time or until `stop` is signalled.
class WriteTurn {
public:
    [[nodiscard]] bool isWhole() const { return static_cast<bool>(m_givenBack); }

    // False when it did not come in time.
    [[nodiscard]] bool take(const Deadline& deadline, HANDLE stop) {
        if (!m_taken.exchange(true)) return true;
        // Counted before the next look: whoever gives the turn back after that look sees the count.
        ++m_waiting;
        bool taken = !m_taken.exchange(true);
        const std::array<HANDLE, 2> handles{stop, m_givenBack.get()};
        while (!taken && WaitForMultipleObjects(2, handles.data(), FALSE, deadline.remaining()) ==
                             WAIT_OBJECT_0 + 1)
            taken = !m_taken.exchange(true);
        --m_waiting;
        return taken;
    }

    void giveBack() {
        m_taken = false;
        if (m_waiting > 0) SetEvent(m_givenBack.get());
    }

private:
    std::atomic<bool> m_taken{false};
    std::atomic<int> m_waiting{0};
    UniqueHandle m_givenBack{CreateEventW(nullptr, FALSE, FALSE, nullptr)};  // wakes one
};

}  // namespace orvane
