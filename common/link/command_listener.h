#pragma once

#include <memory>
#include <utility>

#include "common/link/pipe_listener.h"
#include "common/names/names.h"

namespace orvane {

class IOrvanePluginMethods;

// The plug-in's end of the command pipe. Runs each command on the connection's thread and sends its
// response before it reads the next one.
class CommandListener final : public PipeListener {
public:
    // `methods` is not owned; a running command shares its ownership. A command that arrives after
    // its end is dropped.
    explicit CommandListener(std::weak_ptr<IOrvanePluginMethods> methods,
                             ConnectionLost whenLost = nullptr,
                             const juce::String& name = names::kCommandPipe.narrow())
        : PipeListener(name, std::move(whenLost)), pluginMethods(std::move(methods)) {}

    void messageReceived(std::span<const std::uint8_t> payload) override;

private:
    const std::weak_ptr<IOrvanePluginMethods> pluginMethods;
};

}  // namespace orvane
