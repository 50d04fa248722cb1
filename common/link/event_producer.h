#pragma once

#include "common/link/pipe_listener.h"
#include "common/names/names.h"

namespace orvane {

// The event pipe's end in the plug-in. Nothing of use arrives on it; what does is read and dropped,
// so that whoever sends it is not held up.
class EventProducer final : public PipeListener {
public:
    explicit EventProducer(const juce::String& name = names::kEventPipe.narrow())
        : PipeListener(name) {}
    ~EventProducer() override { closeForGood(); }

    void messageReceived(std::span<const std::uint8_t>) override {}

protected:
    // Its reader uses nothing else.
    std::shared_ptr<void> keepForReader() override { return shared_from_this(); }
};

}  // namespace orvane
