#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "platform/handles.h"

namespace orvane {

// The frames that wait for a connection's thread to write them, in the order of the calls. Any
// thread puts frames in, one thread takes them out. Frames are moved, never copied.
class FrameQueue {
public:
    using Frame = std::vector<std::uint8_t>;
    static constexpr std::size_t kLimit = 64U * 1024 * 1024;  // bytes of all that wait

    enum class Put { queued, full, closed };
    // `full`: the frame would go over the limit, and is dropped. std::bad_alloc.
    Put put(Frame&& frame);

    // The next one; false when there is none, and then the next put() signals the event.
    bool take(Frame& frame);

    // Drops what waits; everything is refused from now on.
    void close();

    // Wakes the thread that takes, whatever waits.
    void wake() const { SetEvent(m_event.get()); }
    // Reset by the wait that it ends.
    [[nodiscard]] HANDLE event() const { return m_event.get(); }
    [[nodiscard]] explicit operator bool() const { return static_cast<bool>(m_event); }

private:
    UniqueHandle m_event{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    juce::CriticalSection m_lock;  // guards what follows
    std::deque<Frame> m_frames;
    std::size_t m_bytes = 0;
    bool m_takerWaits = false;
    bool m_closed = false;
};

}  // namespace orvane
