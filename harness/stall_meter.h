#pragma once

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace orvane::test {

// Asks a window again and again whether its thread still answers. A wait of the plug-in's that lets
// such questions in is no block.
class StallMeter {
public:
    explicit StallMeter(HWND window) : m_thread([this, window] { run(window); }) {}
    ~StallMeter() { stop(); }
    StallMeter(const StallMeter&) = delete;
    StallMeter& operator=(const StallMeter&) = delete;

    // Somebody would see a stall of so long.
    static constexpr double kSeenMs = 500;

    // The longest time without an answer, in milliseconds. Not on the window's thread, whose last
    // answer it waits for.
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
