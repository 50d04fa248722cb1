#pragma once

#include "common/link/pipe_listener.h"

namespace orvane {

class IOrvanePluginMethods;

// The command pipe's end in the plug-in: runs each command on the reader thread and answers it
// before the next one is read.
class CommandListener final : public PipeListener {
public:
    // `methods` is not owned and outlives the listener.
    explicit CommandListener(IOrvanePluginMethods* methods,
                             const juce::String& name = "IpcOrvaneCommandPipe")
        : PipeListener(name), pluginMethods(methods) {}
    ~CommandListener() override { close(); }

    void messageReceived(std::span<const std::uint8_t> payload) override;

private:
    IOrvanePluginMethods* const pluginMethods;
};

}  // namespace orvane
