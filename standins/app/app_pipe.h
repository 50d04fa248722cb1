#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "common/link/pipe_broadcaster.h"
#include "standins/app/protocol.h"

namespace orvane::standin::app {

// One of the two pipes. Serves one client after another, each on a newly made pipe.
class StandInPipe final {
public:
    // Called on the pipe's reader thread, or on the one that drops or destroys the pipe.
    class Listener {
    public:
        // "connected", or "disconnected: " and why.
        virtual void clientChanged(PipeId pipe, const String& how) = 0;
        virtual void payloadCame(PipeId pipe, std::span<const std::uint8_t> payload) = 0;

    protected:
        ~Listener() = default;
    };

    StandInPipe(PipeId id, Listener& listener) : m_id(id), m_listener(listener) {}
    ~StandInPipe() { close("this program ends"); }
    StandInPipe(const StandInPipe&) = delete;
    StandInPipe& operator=(const StandInPipe&) = delete;

    // Creates the pipe if there is none, or its client has disconnected; false when that fails.
    bool keepOpen();

    [[nodiscard]] bool hasClient() const { return m_hasClient; }
    bool sendBytes(std::span<const std::uint8_t> bytes);
    bool send(const OrvaneMessage& message);
    void drop();                             // disconnects the client; the next one may come
    void hold(bool held) { m_held = held; }  // while held, the reader thread waits in a message

private:
    class Connection;
    void close(const char* why);
    [[nodiscard]] std::shared_ptr<Connection> connection() const;
    void replace(std::shared_ptr<Connection> connection);

    const PipeId m_id;
    Listener& m_listener;
    std::mutex m_owning;        // opening and closing come from two threads, one at a time
    mutable std::mutex m_lock;  // guards the next one
    std::shared_ptr<Connection> m_connection;
    std::atomic<bool> m_hasClient{false};
    std::atomic<bool> m_held{false};
    std::atomic<const char*> m_whyClosed{nullptr};  // null: not by us
};

}  // namespace orvane::standin::app
