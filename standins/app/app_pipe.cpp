#include "standins/app/app_pipe.h"

namespace orvane::standin::app {

StandInPipe::StandInPipe(PipeId id, Listener& listener)
    : PipeBroadcaster(systemName(id)), m_id(id), m_listener(listener) {}

StandInPipe::~StandInPipe() {
    m_whyClosed = "this program ends";
    closeForGood();
}

bool StandInPipe::keepOpen() {
    const std::lock_guard lock(m_owning);
    // Not isConnected(): the reader may still deliver messages after the client has disconnected.
    if (m_open) return true;
    return initConnection();
}

bool StandInPipe::sendBytes(std::span<const std::uint8_t> bytes) {
    constexpr DWORD limitMs = 30'000;  // for thousands of frames, each answered before the next
    const auto stream = currentStream();
    return stream != nullptr && stream->write(bytes, limitMs);
}

void StandInPipe::drop() {
    const std::lock_guard lock(m_owning);
    m_whyClosed = "dropped by this program";
    initConnection();
    m_whyClosed = nullptr;
}

void StandInPipe::clientConnected() {
    m_hasClient = true;
    m_listener.clientChanged(m_id, "connected");
}

void StandInPipe::connectionLost() {
    const char* const why = m_whyClosed;
    if (m_hasClient.exchange(false))
        m_listener.clientChanged(
            m_id, String("disconnected: ") + (why != nullptr ? why : "the plug-in closed it"));
    m_open = false;
}

void StandInPipe::messageReceived(std::span<const std::uint8_t> payload) {
    while (m_held && isConnected()) juce::Thread::sleep(5);
    m_listener.payloadCame(m_id, payload);
}

}  // namespace orvane::standin::app
