#pragma once

#include <memory>

#include "common/link/app_connector.h"
#include "common/link/keep_alive.h"

namespace orvane {

class CommandListener;
class EventProducer;

// The connector over the two named pipes. While it waits for a running command (disconnect and
// destruction, Pipe::kClosePatienceMs at most), calls into the waiting thread are served, and those
// may report events. Its destructor leaves a command behind that has not ended by then, when
// `keepAlive` allows it (common/link/keep_alive.h), and waits for it otherwise.
class OrvaneAppConnector final : public AppConnector {
public:
    explicit OrvaneAppConnector(IOrvanePluginMethods* methods, KeepAlive keepAlive = nullptr);
    ~OrvaneAppConnector() override;

    bool connect() override;
    void disconnect() override;
    bool isConnected() override;
    bool postEvent(const OrvaneEvent& event) override;
    Pipe::Sending tryPostEvent(const OrvaneEvent& event) override;

private:
    template <typename PipeType>
    bool reopen(std::shared_ptr<PipeType>& held, const std::shared_ptr<PipeType>& fresh,
                const char* failure);
    template <typename PipeType>
    std::shared_ptr<PipeType> hold(const std::shared_ptr<PipeType>& held) const;
    template <typename PipeType>
    bool isUp(const std::shared_ptr<PipeType>& held) const;

    const KeepAlive m_keepAlive;
    // Events come from other threads too: each call works on its own reference.
    juce::CriticalSection m_pipesLock;
    std::shared_ptr<EventProducer> m_ep;
    std::shared_ptr<CommandListener> m_cl;
    bool m_busy = false;  // connecting or being destroyed: a nested connect() is refused
};

}  // namespace orvane
