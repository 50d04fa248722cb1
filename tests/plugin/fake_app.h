#pragma once

// The application as the plug-in sees it, in the test's own process: the mutex that says it is
// running and the two pipes, recording what arrives. And the player's main window.

#include <windows.h>

#include <mutex>
#include <string>
#include <vector>

#include "common/link/pipe_broadcaster.h"
#include "common/messages/orvane_message.h"
#include "harness/waiting.h"
#include "platform/handles.h"
#include "tests/support/test_window.h"

namespace orvane::test {

using Names = std::vector<std::string>;

// "Name key=value key=value".
inline std::string lineOf(const OrvaneMessage& message) {
    juce::String line = message.getName();
    for (const auto& [key, value] : message.getParameters()) line << " " << key << "=" << value;
    return line.toStdString();
}

// The application's end of one pipe: keeps every message.
class AppPipe final : public PipeBroadcaster {
public:
    using PipeBroadcaster::PipeBroadcaster;
    ~AppPipe() override { closeForGood(); }

    // Waits until the plug-in has opened the pipe, and pumps meanwhile.
    bool deliver(const OrvaneMessage& message) {
        return pumpUntil([&] { return send(message); });
    }
    // What arrived; pumps until there is so much.
    std::vector<OrvaneMessage> messages(std::size_t atLeast = 0, DWORD timeoutMs = 5000) const {
        pumpUntil([&] { return count() >= atLeast; }, timeoutMs);
        const std::scoped_lock lock(m_mutex);
        return m_messages;
    }
    // The same, each as its line.
    Names lines(std::size_t atLeast = 0, DWORD timeoutMs = 5000) const {
        Names lines;
        for (const auto& message : messages(atLeast, timeoutMs)) lines.push_back(lineOf(message));
        return lines;
    }
    void forget() {
        const std::scoped_lock lock(m_mutex);
        m_messages.clear();
    }
    void messageReceived(std::span<const std::uint8_t> payload) override {
        const auto message = OrvaneMessage::parsePayload(payload);
        const std::scoped_lock lock(m_mutex);
        m_messages.push_back(message ? *message : OrvaneMessage("none", "unreadable"));
    }

private:
    [[nodiscard]] std::size_t count() const {
        const std::scoped_lock lock(m_mutex);
        return m_messages.size();
    }

    mutable std::mutex m_mutex;
    std::vector<OrvaneMessage> m_messages;
};

struct FakeApp {
    FakeApp() { openPipes(); }

    // (Re)makes each pipe that has no client yet or whose client is gone.
    void openPipes() {
        for (AppPipe* pipe : {&events, &commands})
            if (!pipe->isConnected()) pipe->initConnection();
    }
    void closePipes() {
        events.terminate();
        commands.terminate();
    }
    // Waits until the plug-in has left both pipes, then makes them anew, with nothing in them.
    bool waitForDisconnectAndReopen() {
        const bool left =
            pumpUntil([&] { return !events.isConnected() && !commands.isConnected(); });
        forget();
        openPipes();
        return left;
    }
    bool sendCommand(const char* name) { return commands.deliver(OrvaneCommand(name)); }
    void forget() {
        events.forget();
        commands.forget();
    }

    UniqueHandle running{CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process")};
    AppPipe events{"IpcOrvaneEventPipe"};
    AppPipe commands{"IpcOrvaneCommandPipe"};
};

// Owned by the calling thread and not shown.
class PlayerWindow : public TestWindow {
public:
    PlayerWindow() : TestWindow(L"WMPlayerApp", L"Windows Media Player") {}
    [[nodiscard]] bool isHooked() const {
        return GetPropW(hwnd(), L"window_hook_this_ptr") != nullptr;
    }
    void moveTo(int left, int top) const {
        SetWindowPos(hwnd(), nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
};

}  // namespace orvane::test
