#pragma once

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace orvane::test {

// Measures how long a window's thread does not handle messages, by sending it WM_NULL repeatedly. A
// wait that serves sent messages does not count as a stall.
class StallMeter {
public:
    explicit StallMeter(HWND window) : m_thread([this, window] { run(window); }) {}
    ~StallMeter() { stop(); }
    StallMeter(const StallMeter&) = delete;
    StallMeter& operator=(const StallMeter&) = delete;

    // A stall of this length is visible to a user.
    static constexpr double kSeenMs = 500;

    // Stops and returns the longest stall in milliseconds. Do not call it on the window's thread:
    // it waits for that thread.
    double stop() {
        m_stop = true;
        if (m_thread.joinable()) m_thread.join();
        return m_longest;
    }

private:
    void run(HWND window) {
        constexpr UINT kNoAnswerMs = 20'000;
        for (; !m_stop; Sleep(20)) {
            DWORD_PTR answer = 0;
            const auto start = std::chrono::steady_clock::now();
            SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, kNoAnswerMs, &answer);
            const std::chrono::duration<double, std::milli> took =
                std::chrono::steady_clock::now() - start;
            m_longest = std::max(m_longest, took.count());
        }
    }

    double m_longest = 0;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

}  // namespace orvane::test
