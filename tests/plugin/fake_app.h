#pragma once

// The application as the plug-in sees it, in the test's own process: the mutex that says it is
// running and the two pipes, recording what arrives.

#include <windows.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/pipe_broadcaster.h"
#include "platform/handles.h"

namespace orvane::test {

// Dispatches this thread's messages until `done` answers true; false after the time-out.
bool pumpUntil(const std::function<bool()>& done, DWORD timeoutMs = 5000);
// Dispatches this thread's messages for so long.
void pumpFor(DWORD milliseconds);

class FakeApp {
public:
    FakeApp();  // running, both pipes open
    ~FakeApp();

    // (Re)makes each pipe that has no client yet or whose client is gone.
    void openPipes();
    void closePipes();
    // Waits until the plug-in has left both pipes, then makes them anew.
    bool waitForDisconnectAndReopen();

    bool sendCommand(const char* name);

    // Names of the events in the order of arrival.
    [[nodiscard]] std::vector<std::string> events() const;
    // As "name=return value"; pumps until there are so many.
    std::vector<std::string> waitForEvents(std::size_t count, DWORD timeoutMs = 5000);
    std::vector<std::string> waitForResponses(std::size_t count, DWORD timeoutMs = 5000);
    void forget();

private:
    class RecordingPipe;
    struct Record {
        mutable std::mutex mutex;
        std::vector<std::string> events;
        std::vector<std::string> responses;
    };

    UniqueHandle m_running;
    Record m_record;
    std::unique_ptr<RecordingPipe> m_events;
    std::unique_ptr<RecordingPipe> m_commands;
};

// The player's main window, owned by the calling thread and not shown.
class PlayerWindow {
public:
    PlayerWindow();
    ~PlayerWindow();
    PlayerWindow(const PlayerWindow&) = delete;
    PlayerWindow& operator=(const PlayerWindow&) = delete;
    [[nodiscard]] HWND handle() const { return m_window; }
    [[nodiscard]] bool isHooked() const;

private:
    HWND m_window;
};

// What the shared log gets while this lives.
class LogWatch {
public:
    LogWatch();
    [[nodiscard]] std::string added() const;

private:
    static std::string read();
    std::size_t m_start;
};

}  // namespace orvane::test
