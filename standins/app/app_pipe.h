#pragma once

#include <atomic>
#include <mutex>

#include "common/link/pipe_broadcaster.h"
#include "standins/app/protocol.h"

namespace orvane::standin::app {

// One of the two pipes. Serves one client after another, each on a newly made pipe.
class StandInPipe final : public PipeBroadcaster {
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

    StandInPipe(PipeId id, Listener& listener);
    ~StandInPipe() override;

    // Creates the pipe if there is none, or its client has disconnected; false when that fails.
    bool keepOpen();

    [[nodiscard]] bool hasClient() const { return m_hasClient; }
    bool sendBytes(std::span<const std::uint8_t> bytes);
    void drop();                             // disconnects the client; the next one may come
    void hold(bool held) { m_held = held; }  // while held, the reader thread waits in a message

private:
    void clientConnected() override;
    void connectionMade() override { m_open = true; }
    void connectionLost() override;
    void messageReceived(std::span<const std::uint8_t> payload) override;

    const PipeId m_id;
    Listener& m_listener;
    std::mutex m_owning;  // opening and closing come from two threads, one at a time
    std::atomic<bool> m_open{false};
    std::atomic<bool> m_hasClient{false};
    std::atomic<bool> m_held{false};
    std::atomic<const char*> m_whyClosed{nullptr};  // null: not by us
};

}  // namespace orvane::standin::app
