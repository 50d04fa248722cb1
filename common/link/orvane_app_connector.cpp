#include "common/link/orvane_app_connector.h"

#include <exception>
#include <utility>

#include "common/messages/orvane_message.h"
#include "common/names/names.h"
#include "util/log/log.h"

namespace orvane {

OrvaneAppConnector::~OrvaneAppConnector() {
    // Each is closed outside the lock, since calls are served meanwhile.
    const auto take = [this](auto& held) {
        const juce::ScopedLock lock(m_pipesLock);
        return std::exchange(held, nullptr);
    };
    // Commands first: a running one may still report events.
    if (const auto cl = take(m_cl)) cl->close();
    if (const auto ep = take(m_ep)) ep->close();
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

template <typename PipeType, typename Make>
bool OrvaneAppConnector::reopen(std::shared_ptr<PipeType>& held, std::string& lastFailure,
                                const char* text, const Make& make) {
    auto fresh = hold(held);
    if (fresh == nullptr || fresh->isUsedUp()) {
        if (fresh != nullptr && fresh->isConnected()) return true;
        // The application serves one client a pipe, so the old end closes before the new one opens.
        // A command that runs on without its link has the same time to end as when closing.
        if (fresh != nullptr && !fresh->abandon()) return false;
        fresh = make();
        const juce::ScopedLock lock(m_pipesLock);
        held = fresh;
    }
    if (fresh->initConnection()) {
        lastFailure.clear();
        return true;
    }
    syslog(LOG_ERR, text, "OrvaneAppConnector::connect");
    if (fresh->failure() != lastFailure) {
        lastFailure = fresh->failure();
        if (!lastFailure.empty()) fresh->logFailure();
    }
    return false;
}

bool OrvaneAppConnector::canConnect() {
    return PipeStream::isOffered(names::kEventPipe.narrow()) &&
           PipeStream::isOffered(names::kCommandPipe.narrow());
}

bool OrvaneAppConnector::connect() {
    try {
        const bool events = reopen(m_ep, m_eventFailure, "%s: m_ep->initConnection failed",
                                   [this] { return makePipe<EventProducer>(m_whenLost); });
        const bool commands =
            reopen(m_cl, m_commandFailure, "%s: m_cl->initConnection failed",
                   [this] { return makePipe<CommandListener>(pluginMethods, m_whenLost); });
        return events && commands;
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
