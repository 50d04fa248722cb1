#pragma once

// The application as the plug-in sees it, in this process: the mutex that exists while it runs, and
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

// The application's end of one pipe. Records the messages that arrive, or passes them to a handler.
// Each client gets a new connection. Used by one thread.
class AppEnd {
public:
    // Called on the connection's thread, with null for a payload that is not a message.
    using Handler = std::function<void(const OrvaneMessage*)>;

    // With a handler, messages are not recorded.
    explicit AppEnd(const char* name, Handler handler = nullptr)
        : m_name(name), m_handler(std::move(handler)) {}
    AppEnd(const AppEnd&) = delete;
    AppEnd& operator=(const AppEnd&) = delete;

    // Creates the pipe for the next client; false when another program has created it.
    bool initConnection();
    void terminate() { m_connection.reset(); }
    // True from the pipe's creation until its client has disconnected.
    [[nodiscard]] bool isConnected() const {
        return m_connection != nullptr && m_connection->isConnected();
    }
    bool send(const OrvaneMessage& message) {
        return m_connection != nullptr && m_connection->send(message);
    }
    // Sends bytes unchanged.
    bool sendFrame(FrameQueue::Frame&& frame) {
        return m_connection != nullptr && m_connection->put(std::move(frame));
    }
    // Waits until the plug-in has opened the pipe, dispatching messages, then sends.
    bool deliver(const OrvaneMessage& message);
    // Waits until at least so many messages are recorded or the time is up, dispatching window
    // messages, and returns the recorded ones.
    std::vector<OrvaneMessage> messages(std::size_t atLeast = 0, DWORD timeoutMs = 5000) const;
    // The same, each converted with lineOf().
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
    // Creates the pipes, unless another program has created them.
    explicit RunningApp(AppEnd::Handler onEvent = nullptr, AppEnd::Handler onResponse = nullptr);

    // Creates each pipe that has no connected client; false when another program has created one.
    bool openPipes();
    void closePipes();
    // Waits until the plug-in has closed both pipes, then creates new ones.
    bool waitForDisconnectAndReopen();
    bool sendCommand(const char* name) { return commands.deliver(OrvaneCommand(name)); }
    void forget();

    UniqueHandle running{CreateMutexW(nullptr, FALSE, names::kRunningMutex.wide())};
    AppEnd events;
    AppEnd commands;
};

}  // namespace orvane::test
