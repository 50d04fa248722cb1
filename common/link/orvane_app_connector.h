#pragma once

#include <memory>
#include <string>

#include "common/link/app_connector.h"
#include "common/link/command_listener.h"
#include "common/link/event_producer.h"

namespace orvane {

// The connector over the two named pipes. It holds the present connection of each pipe and makes a
// new one after a loss. The destructor and disconnect() wait with time-outs for queued events and
// for the running command's response (Pipe::close), and serve calls into the waiting thread
// meanwhile. A command that does not end in time keeps its thread and connection.
class OrvaneAppConnector final : public AppConnector {
public:
    // `whenLost` is called for each connection that is lost or closed.
    explicit OrvaneAppConnector(std::weak_ptr<IOrvanePluginMethods> methods,
                                ConnectionLost whenLost = nullptr)
        : AppConnector(std::move(methods)), m_whenLost(std::move(whenLost)) {}
    ~OrvaneAppConnector() override;

    // Whether both pipes exist and wait for a client. Waits 2 ms at most. Any thread.
    [[nodiscard]] static bool canConnect();

    bool connect() override;
    void disconnect() override;
    bool isConnected() override;
    bool postEvent(const OrvaneEvent& event) override;
    Pipe::Sending tryPostEvent(const OrvaneEvent& event) override;

private:
    template <typename PipeType, typename Make>
    bool reopen(std::shared_ptr<PipeType>& held, std::string& lastFailure, const char* text,
                const Make& make);
    template <typename PipeType>
    std::shared_ptr<PipeType> hold(const std::shared_ptr<PipeType>& held) const;
    template <typename PipeType>
    bool isUp(const std::shared_ptr<PipeType>& held) const;

    const ConnectionLost m_whenLost;
    // Events come from other threads too: each call holds its own shared_ptr.
    juce::CriticalSection m_pipesLock;
    std::shared_ptr<EventProducer> m_ep;
    std::shared_ptr<CommandListener> m_cl;
    std::string m_eventFailure;  // as last logged
    std::string m_commandFailure;
};

}  // namespace orvane
