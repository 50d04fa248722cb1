#pragma once

// The application as the plug-in sees it, in this process: the mutex that says it is running and
// the two pipes.

#include <windows.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
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

// The application's end of one pipe. It keeps what arrives, or hands it on. Each client has a
// connection of its own. Used by one thread.
class AppEnd {
public:
    // On the connection's thread; null for a payload that is no message.
    using Handler = std::function<void(const OrvaneMessage*)>;

    // With a handler nothing is kept.
    explicit AppEnd(const char* name, Handler handler = nullptr)
        : m_name(name), m_handler(std::move(handler)) {}
    AppEnd(const AppEnd&) = delete;
    AppEnd& operator=(const AppEnd&) = delete;

    // Makes the pipe for the next client; false when another program has it.
    bool initConnection();
    void terminate() { m_connection.reset(); }
    // From the time that the pipe is there until its client has gone.
    [[nodiscard]] bool isConnected() const {
        return m_connection != nullptr && m_connection->isConnected();
    }
    bool send(const OrvaneMessage& message) {
        return m_connection != nullptr && m_connection->send(message);
    }
    // Bytes as they are.
    bool sendFrame(FrameQueue::Frame&& frame) {
        return m_connection != nullptr && m_connection->put(std::move(frame));
    }
    // Waits until the plug-in has opened the pipe, and dispatches messages meanwhile.
    bool deliver(const OrvaneMessage& message);
    // What has been kept, once there is so much or the time is up; dispatches messages meanwhile.
    std::vector<OrvaneMessage> messages(std::size_t atLeast = 0, DWORD timeoutMs = 5000) const;
    // The same, each as its line.
    Names lines(std::size_t atLeast = 0, DWORD timeoutMs = 5000) const;
    void forget();

private:
    class Connection;
    void take(std::span<const std::uint8_t> payload);

    const char* const m_name;
    const Handler m_handler;
    mutable std::mutex m_mutex;
    std::vector<OrvaneMessage> m_messages;
    std::shared_ptr<PipeBroadcaster> m_connection;  // last: its thread uses the others
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
