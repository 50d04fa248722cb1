#pragma once

#include <juce_core/juce_core.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "platform/handles.h"

namespace orvane {

// The queue of the frames that a connection's thread has to write, first in, first out. Any thread
// may put frames in; one thread takes them out. Frames are moved, never copied.
class FrameQueue {
public:
    using Frame = std::vector<std::uint8_t>;
    static constexpr std::size_t kLimit = 64U * 1024 * 1024;  // bytes of all that wait

    enum class Put { queued, full, closed };
    // `full`: the frame would exceed kLimit and is dropped. May throw std::bad_alloc.
    Put put(Frame&& frame);

    // Takes the next frame. False when the queue is empty; then the next put() signals the event.
    bool take(Frame& frame);

    // Drops all frames; put() returns `closed` from now on.
    void close();

    // Wakes the thread that takes frames, also when the queue is empty.
    void wake() const { SetEvent(m_event.get()); }
    // An auto-reset event.
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
