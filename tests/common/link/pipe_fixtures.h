#pragma once

#include <windows.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "common/link/pipe_listener.h"
#include "harness/raw_server.h"
#include "harness/waiting.h"
#include "platform/handles.h"

namespace orvane::test {

inline juce::String uniquePipeName() {
    static std::atomic<int> count{0};
    return "OrvaneTest." + juce::String(static_cast<int>(GetCurrentProcessId())) + "." +
           juce::String(++count);
}

inline long long millisecondsFor(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start)
        .count();
}

// Something that one thread brings about and others wait for.
class Signal {
public:
    void give() { SetEvent(m_event.get()); }
    bool await(DWORD timeoutMs = 10'000) {
        return WaitForSingleObject(m_event.get(), timeoutMs) == WAIT_OBJECT_0;
    }

private:
    UniqueHandle m_event{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

// Keeps what it hears.
class TestListener final : public PipeListener {
public:
    using PipeListener::PipeListener;

    void connectionMade() override {
        PipeListener::connectionMade();
        ++made;
    }
    void connectionLost() override {
        PipeListener::connectionLost();
        if (onLost) onLost();
        lostOn = GetCurrentThreadId();
        ++lost;
    }
    void messageReceived(std::span<const std::uint8_t> payload) override {
        {
            const std::lock_guard lock(m_lock);
            m_payloads.emplace_back(payload.begin(), payload.end());
        }
        if (onMessage) onMessage();
    }

    std::vector<std::string> payloads() const {
        const std::lock_guard lock(m_lock);
        return m_payloads;
    }

    std::function<void()> onMessage;
    std::function<void()> onLost;
    std::atomic<int> made{0};
    std::atomic<int> lost{0};
    std::atomic<DWORD> lostOn{0};

private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_payloads;
};

}  // namespace orvane::test
