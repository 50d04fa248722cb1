#pragma once

#include <windows.h>

#include <atomic>

#include "bench/samples.h"
#include "harness/running_app.h"

namespace orvane::bench {

// An application that counts the events it reads.
class CountingApp {
public:
    // One more event than at the last call.
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
    test::RunningApp m_app{[this](const OrvaneMessage*) { ++m_count; },
                           [](const OrvaneMessage*) {}};
};

}  // namespace orvane::bench
