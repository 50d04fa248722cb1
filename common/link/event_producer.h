#pragma once

#include <utility>

#include "common/link/pipe_listener.h"
#include "common/names/names.h"

namespace orvane {

// The event pipe's end in the plug-in. Nothing of use arrives on it; what does is read and dropped,
// so that whoever sends it is not held up.
class EventProducer final : public PipeListener {
public:
    explicit EventProducer(ConnectionLost whenLost = nullptr,
                           const juce::String& name = names::kEventPipe.narrow())
        : PipeListener(name, std::move(whenLost)) {}

    void messageReceived(std::span<const std::uint8_t>) override {}
};

}  // namespace orvane
