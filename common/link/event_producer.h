#pragma once

#include <utility>

#include "common/link/pipe_listener.h"
#include "common/names/names.h"

namespace orvane {

// The plug-in's end of the event pipe. Reads and drops incoming data, so that a program that writes
// to this pipe does not block.
class EventProducer final : public PipeListener {
public:
    explicit EventProducer(ConnectionLost whenLost = nullptr,
                           const juce::String& name = names::kEventPipe.narrow())
        : PipeListener(name, std::move(whenLost)) {}

    void messageReceived(std::span<const std::uint8_t>) override {}
};

}  // namespace orvane
