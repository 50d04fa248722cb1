#pragma once

#include <memory>

#include "common/link/app_connector.h"

namespace orvane {

class CommandListener;
class EventProducer;

// The connector over the two named pipes. While it waits for a running command (disconnect and
// destruction), calls into the waiting thread are served, and those may report events.
class OrvaneAppConnector final : public AppConnector {
public:
    explicit OrvaneAppConnector(IOrvanePluginMethods* methods);
    ~OrvaneAppConnector() override;

    bool connect() override;
    void disconnect() override;
    bool isConnected() override;
    bool postEvent(const OrvaneEvent& event) override;

private:
    template <typename PipeType>
    bool reopen(std::shared_ptr<PipeType>& held, const std::shared_ptr<PipeType>& fresh,
                const char* failure);
    template <typename PipeType>
    std::shared_ptr<PipeType> hold(const std::shared_ptr<PipeType>& held) const;
    template <typename PipeType>
    bool isUp(const std::shared_ptr<PipeType>& held) const;

    // Events come from other threads too: each call works on its own reference.
    juce::CriticalSection m_pipesLock;
    std::shared_ptr<EventProducer> m_ep;
    std::shared_ptr<CommandListener> m_cl;
    bool m_busy = false;  // connecting or being destroyed: a nested connect() is refused
};

}  // namespace orvane
