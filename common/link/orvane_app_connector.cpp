#include "common/link/orvane_app_connector.h"

#include <exception>
#include <utility>

#include "common/link/command_listener.h"
#include "common/link/event_producer.h"
#include "common/messages/orvane_message.h"
#include "util/log/log.h"

namespace orvane {

OrvaneAppConnector::OrvaneAppConnector(IOrvanePluginMethods* methods, KeepAlive keepAlive)
    : AppConnector(methods), m_keepAlive(std::move(keepAlive)) {}

OrvaneAppConnector::~OrvaneAppConnector() {
    stopTimer();
    m_busy = true;
    // Commands first: a running one may still report events. Each is let go outside the lock, since
    // calls are served while it closes.
    const auto drop = [this](auto& held) {
        const auto pipe = [&] {
            const juce::ScopedLock lock(m_pipesLock);
            return std::exchange(held, nullptr);
        }();
        if (pipe != nullptr) pipe->closeForGood();
    };
    drop(m_cl);
    drop(m_ep);
    stopTimer();
}

template <typename PipeType>
std::shared_ptr<PipeType> OrvaneAppConnector::hold(const std::shared_ptr<PipeType>& held) const {
    const juce::ScopedLock lock(m_pipesLock);
    return held;
}

template <typename PipeType>
bool OrvaneAppConnector::isUp(const std::shared_ptr<PipeType>& held) const {
    const auto pipe = hold(held);
    return pipe != nullptr && pipe->isConnected();
}

template <typename PipeType>
bool OrvaneAppConnector::reopen(std::shared_ptr<PipeType>& held,
                                const std::shared_ptr<PipeType>& fresh, const char* failure) {
    auto old = fresh;
    {
        const juce::ScopedLock lock(m_pipesLock);
        old.swap(held);
    }
    // The application serves one client a pipe, so the old end closes before the new one opens.
    // When it went in the middle of a command, that one is not waited for here, on the player's
    // thread: the next attempt finds it done.
    if (old != nullptr && !old->letGo()) {
        const juce::ScopedLock lock(m_pipesLock);
        held = std::move(old);
        return false;
    }
    old.reset();
    if (fresh->initConnection()) return true;
    syslog(LOG_ERR, failure, "OrvaneAppConnector::connect");
    return false;
}

bool OrvaneAppConnector::connect() {
    // While an old pipe closes, calls into this thread are served, and one of them may be a
    // timer's.
    if (m_busy) return false;
    const juce::ScopedValueSetter<bool> busy(m_busy, true);
    try {
        bool up = true;
        if (!isUp(m_ep))
            up = reopen(m_ep, std::make_shared<EventProducer>(), "%s: m_ep->initConnection failed");
        if (!isUp(m_cl))
            up = reopen(m_cl, std::make_shared<CommandListener>(pluginMethods, m_keepAlive),
                        "%s: m_cl->initConnection failed") &&
                 up;
        return up;
    } catch (const std::exception& e) {
        syslog(LOG_ERR, "%s: %s", "OrvaneAppConnector::connect", e.what());
        return false;
    }
}

void OrvaneAppConnector::disconnect() {
    syslog(LOG_DEBUG, "%s: HERE", "OrvaneAppConnector::disconnect");
    if (const auto ep = hold(m_ep)) ep->terminate();
    if (const auto cl = hold(m_cl)) cl->terminate();
}

bool OrvaneAppConnector::isConnected() { return isUp(m_ep) && isUp(m_cl); }

bool OrvaneAppConnector::postEvent(const OrvaneEvent& event) {
    const Pipe::Sending sending = tryPostEvent(event);
    if (sending.oversize != 0)
        syslog(LOG_ERR, "%s: an event of %u bytes is too long for a frame",
               "OrvaneAppConnector::postEvent", static_cast<unsigned>(sending.oversize));
    return sending.sent;
}

Pipe::Sending OrvaneAppConnector::tryPostEvent(const OrvaneEvent& event) {
    const auto ep = hold(m_ep);
    return ep != nullptr ? ep->trySend(event) : Pipe::Sending{false, 0};
}

}  // namespace orvane
