#include "common/link/frame_queue.h"

#include <utility>

namespace orvane {

FrameQueue::Put FrameQueue::put(Frame&& frame) {
    bool mustWake = false;
    {
        const juce::ScopedLock lock(m_lock);
        if (m_closed) return Put::closed;
        if (frame.size() > kLimit - m_bytes) return Put::full;
        const std::size_t size = frame.size();
        m_frames.push_back(std::move(frame));
        m_bytes += size;
        mustWake = std::exchange(m_takerWaits, false);
    }
    // A thread that is writing looks here again by itself: a burst of events costs one call.
    if (mustWake) wake();
    return Put::queued;
}

bool FrameQueue::take(Frame& frame) {
    const juce::ScopedLock lock(m_lock);
    m_takerWaits = m_frames.empty();
    if (m_takerWaits) return false;
    frame = std::move(m_frames.front());
    m_frames.pop_front();
    m_bytes -= frame.size();
    return true;
}

void FrameQueue::close() {
    std::deque<Frame> dropped;  // freed outside the lock
    const juce::ScopedLock lock(m_lock);
    m_closed = true;
    m_bytes = 0;
    dropped.swap(m_frames);
}

}  // namespace orvane
