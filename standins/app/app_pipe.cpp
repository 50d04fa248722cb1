#include "standins/app/app_pipe.h"

#include <algorithm>

namespace orvane::standin::app {

class StandInPipe::Connection final : public PipeBroadcaster {
public:
    explicit Connection(StandInPipe& owner)
        : PipeBroadcaster(systemName(owner.m_id)), m_owner(owner) {}

    // Not isConnected(): the thread may still deliver messages after the client has disconnected.
    [[nodiscard]] bool isOpen() const { return m_open; }

    bool sendBytes(std::span<const std::uint8_t> bytes) {
        // In pieces: each has a time-out of its own, and thousands of frames may be answered one by
        // one before the next is read.
        constexpr std::size_t kPiece = 4096;
        bool sent = true;
        for (std::size_t at = 0; sent && at < bytes.size(); at += kPiece) {
            const auto piece = bytes.subspan(at, std::min(kPiece, bytes.size() - at));
            sent = put(FrameQueue::Frame(piece.begin(), piece.end()));
        }
        return sent;
    }

private:
    void clientConnected() override {
        m_owner.m_hasClient = true;
        m_owner.m_listener.clientChanged(m_owner.m_id, "connected");
    }
    void connectionMade() override { m_open = true; }
    void connectionLost() override {
        const char* const why = m_owner.m_whyClosed;
        if (m_owner.m_hasClient.exchange(false))
            m_owner.m_listener.clientChanged(
                m_owner.m_id,
                String("disconnected: ") + (why != nullptr ? why : "the plug-in closed it"));
        m_open = false;
    }
    void messageReceived(std::span<const std::uint8_t> payload) override {
        while (m_owner.m_held && isConnected()) juce::Thread::sleep(5);
        m_owner.m_listener.payloadCame(m_owner.m_id, payload);
    }

    StandInPipe& m_owner;
    std::atomic<bool> m_open{false};
};

bool StandInPipe::keepOpen() {
    const std::lock_guard owning(m_owning);
    if (const auto present = connection(); present != nullptr && present->isOpen()) return true;
    replace(nullptr);  // there is one instance of the pipe
    const auto next = makePipe<Connection>(*this);
    replace(next);
    return next->initConnection();
}

std::shared_ptr<StandInPipe::Connection> StandInPipe::connection() const {
    const std::lock_guard lock(m_lock);
    return m_connection;
}

// What it replaces is closed outside the lock: its thread may be sending.
void StandInPipe::replace(std::shared_ptr<Connection> connection) {
    const std::lock_guard lock(m_lock);
    m_connection.swap(connection);
}

bool StandInPipe::sendBytes(std::span<const std::uint8_t> bytes) {
    const auto present = connection();
    return present != nullptr && present->sendBytes(bytes);
}

bool StandInPipe::send(const OrvaneMessage& message) {
    const auto present = connection();
    return present != nullptr && present->send(message);
}

void StandInPipe::close(const char* why) {
    const std::lock_guard owning(m_owning);
    m_whyClosed = why;
    replace(nullptr);
    m_whyClosed = nullptr;
}

void StandInPipe::drop() {
    close("dropped by this program");
    keepOpen();
}

}  // namespace orvane::standin::app
