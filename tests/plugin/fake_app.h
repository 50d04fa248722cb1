#pragma once

// The application as the plug-in sees it, in the test's own process: the mutex that says it is
// running and the two pipes, recording what arrives.

#include <windows.h>

#include <mutex>
#include <string>
#include <vector>

#include "common/link/pipe_broadcaster.h"
#include "common/messages/orvane_message.h"
#include "platform/handles.h"
#include "tests/support/test_window.h"
#include "tests/support/waiting.h"

namespace orvane::test {

// "Name key=value key=value".
std::string lineOf(const OrvaneMessage& message);

using Names = std::vector<std::string>;

// The application's end of one pipe: keeps every message.
class AppPipe final : public PipeBroadcaster {
public:
    using PipeBroadcaster::PipeBroadcaster;
    ~AppPipe() override { closeForGood(); }

    // Waits until the plug-in has opened the pipe, and pumps meanwhile.
    bool deliver(const OrvaneMessage& message);
    // What arrived; pumps until there is so much.
    std::vector<OrvaneMessage> messages(std::size_t atLeast = 0, DWORD timeoutMs = 5000) const;
    // The same, each as its line.
    Names lines(std::size_t atLeast = 0) const;
    void forget();
    void messageReceived(std::span<const std::uint8_t> payload) override;

private:
    mutable std::mutex m_mutex;
    std::vector<OrvaneMessage> m_messages;
};

struct FakeApp {
    FakeApp() { openPipes(); }

    // (Re)makes each pipe that has no client yet or whose client is gone.
    void openPipes();
    void closePipes();
    // Waits until the plug-in has left both pipes, then makes them anew.
    bool waitForDisconnectAndReopen();

    bool sendCommand(const char* name) { return commands.deliver(OrvaneCommand(name)); }
    // Names of the events in the order of arrival, and responses as "name=return value".
    Names waitForEvents(std::size_t count, DWORD timeoutMs = 5000) const;
    Names waitForResponses(std::size_t count) const;
    void forget();

    UniqueHandle running{CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process")};
    AppPipe events{"IpcOrvaneEventPipe"};
    AppPipe commands{"IpcOrvaneCommandPipe"};
};

// The player's main window, owned by the calling thread and not shown.
class PlayerWindow : public TestWindow {
public:
    PlayerWindow() : TestWindow(L"WMPlayerApp", L"Windows Media Player") {}
    [[nodiscard]] HWND handle() const { return hwnd(); }
    [[nodiscard]] bool isHooked() const {
        return GetPropW(hwnd(), L"window_hook_this_ptr") != nullptr;
    }
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
