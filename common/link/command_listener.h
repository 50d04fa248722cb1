#pragma once

#include <memory>
#include <utility>

#include "common/link/pipe_listener.h"
#include "common/names/names.h"

namespace orvane {

class IOrvanePluginMethods;

// The command pipe's end in the plug-in: runs each command on the connection's thread and answers
// it before the next one is read.
class CommandListener final : public PipeListener {
public:
    // `methods` is shared while a command runs, and not owned otherwise: a command that finds it
    // gone is dropped.
    explicit CommandListener(std::weak_ptr<IOrvanePluginMethods> methods,
                             ConnectionLost whenLost = nullptr,
                             const juce::String& name = names::kCommandPipe.narrow())
        : PipeListener(name, std::move(whenLost)), pluginMethods(std::move(methods)) {}

    void messageReceived(std::span<const std::uint8_t> payload) override;

private:
    const std::weak_ptr<IOrvanePluginMethods> pluginMethods;
};

}  // namespace orvane
