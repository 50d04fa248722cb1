#pragma once

// What goes wrong between processes, and what shows how the player fares then.

#include <windows.h>

#include <atomic>
#include <thread>
#include <vector>

#include "tests/common/link/pipe_fixtures.h"

namespace orvane::test {

// Asks a window every 50 ms whether its thread still answers.
class StallMeter {
public:
    explicit StallMeter(HWND window) : m_thread([this, window] { run(window); }) {}
    ~StallMeter() { stop(); }
    StallMeter(const StallMeter&) = delete;
    StallMeter& operator=(const StallMeter&) = delete;

    // How long each answer took, in ms; 10,000 stands for none at all.
    std::vector<unsigned> stop() {
        m_stop = true;
        if (m_thread.joinable()) m_thread.join();
        return m_answers;
    }

private:
    void run(HWND window) {
        constexpr unsigned limitMs = 10'000;
        for (; !m_stop; Sleep(50)) {
            DWORD_PTR answer = 0;
            const ULONGLONG begin = GetTickCount64();
            const bool answered =
                SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, limitMs, &answer) != 0;
            m_answers.push_back(answered ? static_cast<unsigned>(GetTickCount64() - begin)
                                         : limitMs);
        }
    }

    std::vector<unsigned> m_answers;
    std::atomic<bool> m_stop{false};
    std::thread m_thread;
};

// A stranger that serves the event pipe in the application's place, again and again.
class Squatter {
public:
    enum class Way { neverReads, writesGarbage, closesAtOnce };

    explicit Squatter(Way way) : m_thread([this, way] { run(way); }) {}
    ~Squatter() {
        // It may be waiting for a client: one comes from here.
        for (m_stop = true; !m_stopped; Sleep(10))
            const UniqueFile client(CreateFileW(L"\\\\.\\pipe\\IpcOrvaneEventPipe", GENERIC_READ, 0,
                                                nullptr, OPEN_EXISTING, 0, nullptr));
        m_thread.join();
    }
    Squatter(const Squatter&) = delete;
    Squatter& operator=(const Squatter&) = delete;

    [[nodiscard]] unsigned clients() const { return m_clients; }

private:
    void run(Way way) {
        RawServer server("IpcOrvaneEventPipe");
        for (; !m_stop; server.reopen()) {
            if (!server.accept() || m_stop) continue;
            ++m_clients;
            // Until the client has gone.
            while (way != Way::closesAtOnce && !m_stop && server.hasClient()) {
                Sleep(5);
                if (way == Way::writesGarbage) server.write(Bytes(4001, 0x9E));
            }
        }
        server.close();
        m_stopped = true;
    }

    std::atomic<unsigned> m_clients{0};
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_stopped{false};
    std::thread m_thread;
};

}  // namespace orvane::test
