#pragma once

// The application as the plug-in sees it, in this process: the mutex that says it is running and
// the two pipes.

#include <windows.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "common/link/pipe_broadcaster.h"
#include "common/messages/orvane_message.h"
#include "common/names/names.h"
#include "platform/handles.h"

namespace orvane::test {

using Names = std::vector<std::string>;

// "Name key=value key=value".
[[nodiscard]] std::string lineOf(const OrvaneMessage& message);

// The application's end of one pipe. It keeps what arrives, or hands it on. Used by one thread.
class AppEnd final : public PipeBroadcaster {
public:
    // On the reader thread; null for a payload that is no message.
    using Handler = std::function<void(const OrvaneMessage*)>;

    // With a handler nothing is kept.
    explicit AppEnd(const char* name, Handler handler = nullptr)
        : PipeBroadcaster(name), m_handler(std::move(handler)) {}
    ~AppEnd() override { closeForGood(); }

    // Waits until the plug-in has opened the pipe, and dispatches messages meanwhile.
    bool deliver(const OrvaneMessage& message);
    // What has been kept, once there is so much or the time is up; dispatches messages meanwhile.
    std::vector<OrvaneMessage> messages(std::size_t atLeast = 0, DWORD timeoutMs = 5000) const;
    // The same, each as its line.
    Names lines(std::size_t atLeast = 0, DWORD timeoutMs = 5000) const;
    void forget();

    void messageReceived(std::span<const std::uint8_t> payload) override;

private:
    const Handler m_handler;
    mutable std::mutex m_mutex;
    std::vector<OrvaneMessage> m_messages;
};

struct RunningApp {
    // The pipes are there afterwards, unless another program has them.
    explicit RunningApp(AppEnd::Handler onEvent = nullptr, AppEnd::Handler onResponse = nullptr);

    // Makes each pipe that has no client yet, or whose client is gone; false when one is taken.
    bool openPipes();
    void closePipes();
    // Waits until the plug-in has left both pipes, then makes them anew, with nothing in them.
    bool waitForDisconnectAndReopen();
    bool sendCommand(const char* name) { return commands.deliver(OrvaneCommand(name)); }
    void forget();

    UniqueHandle running{CreateMutexW(nullptr, FALSE, names::kRunningMutex.wide())};
    AppEnd events;
    AppEnd commands;
};

}  // namespace orvane::test
