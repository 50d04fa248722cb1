#pragma once

#include <windows.h>

#include <atomic>

#include "bench/samples.h"
#include "common/link/pipe_broadcaster.h"

namespace orvane::bench {

// The application's end of a pipe: reads and counts.
class ReadingEnd final : public PipeBroadcaster {
public:
    explicit ReadingEnd(const juce::String& name) : PipeBroadcaster(name) {
        require(initConnection(), "a pipe is taken; end the application first");
    }
    ~ReadingEnd() override { closeForGood(); }
    void messageReceived(std::span<const std::uint8_t>) override { ++m_count; }

    // One more message than at the last call.
    void waitForNext() {
        ++m_expected;
        for (int i = 0; m_count < m_expected; ++i) {
            require(i < 5000, "an event did not arrive");
            Sleep(1);
        }
    }

private:
    std::atomic<unsigned> m_count{0};
    unsigned m_expected = 0;
};

struct RunningApp {
    ReadingEnd events{"IpcOrvaneEventPipe"};
    ReadingEnd commands{"IpcOrvaneCommandPipe"};
};

}  // namespace orvane::bench
