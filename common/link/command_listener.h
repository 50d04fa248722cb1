#pragma once

#include <utility>

#include "common/link/keep_alive.h"
#include "common/link/pipe_listener.h"
#include "common/names/names.h"

namespace orvane {

class IOrvanePluginMethods;

// The command pipe's end in the plug-in: runs each command on the reader thread and answers it
// before the next one is read.
class CommandListener final : public PipeListener {
public:
    // `methods` is not owned; it outlives the listener or is kept by what `keepAlive` answers.
    explicit CommandListener(IOrvanePluginMethods* methods, KeepAlive keepAlive = nullptr,
                             const juce::String& name = names::kCommandPipe.narrow())
        : PipeListener(name), pluginMethods(methods), m_keepAlive(std::move(keepAlive)) {}
    ~CommandListener() override { closeForGood(); }

    void messageReceived(std::span<const std::uint8_t> payload) override;

protected:
    std::shared_ptr<void> keepForReader() override { return m_keepAlive ? m_keepAlive() : nullptr; }

private:
    IOrvanePluginMethods* const pluginMethods;
    const KeepAlive m_keepAlive;
};

}  // namespace orvane
