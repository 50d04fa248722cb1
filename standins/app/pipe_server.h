#pragma once

// One of the two pipes, as its only server: one instance, made by nobody else, serving one client
// after another until it is destroyed.

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "platform/handles.h"

namespace orvane::standin::app {

class PipeServer {
public:
    // Called on the pipe's own thread, one at a time.
    class Listener {
    public:
        virtual void clientConnected() = 0;
        virtual void bytesReceived(std::string_view bytes) = 0;
        // The client has sent nothing for a second.
        virtual void clientQuiet() = 0;
        virtual void clientGone(const std::string& why) = 0;

    protected:
        ~Listener() = default;
    };

    // CreateNamedPipe for "\\.\pipe\NAME"; null when it cannot be made, with the reason in `error`.
    // The listener must outlive the server.
    static std::unique_ptr<PipeServer> create(const std::string& name, Listener& listener,
                                              std::string& error);
    ~PipeServer();

    [[nodiscard]] bool isConnected() const { return m_connected; }

    // All of it within the time, or what went wrong. A write of which only part was taken ends the
    // connection: the client could not find the next frame's beginning.
    std::string write(std::string_view bytes, DWORD limitMs);

    void drop();           // ends the connection with the client of the moment; the next may come
    void hold(bool held);  // while held, nothing is read

private:
    PipeServer(Listener& listener, UniqueFile pipe);
    void run();
    bool waitForClient();
    std::string serveClient();
    void releaseClient();

    Listener& m_listener;
    UniqueFile m_pipe;
    UniqueHandle m_stop;      // manual reset
    UniqueHandle m_drop;      // auto reset
    UniqueHandle m_reading;   // manual reset; not set while held
    UniqueHandle m_readDone;  // manual reset, for the reader's and the connector's overlapped calls
    UniqueHandle m_writeDone;  // manual reset, for the writer's
    std::mutex m_writing;
    std::atomic<bool> m_connected{false};
    std::thread m_thread;
};

// "5 (Access is denied.)"
std::string systemError(DWORD code);

}  // namespace orvane::standin::app
