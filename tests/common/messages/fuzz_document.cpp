// Any bytes that may come as a command's payload: decoded, parsed, read and written again.

#include <cstdlib>

#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"

using namespace orvane;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto message = OrvaneMessage::parsePayload({data, size});
    if (message == nullptr) return 0;
    juce::StringArray list;
    juce::StringPairArray map;
    message->getList("trackPaths", list);
    message->getMap("metadata", map);
    for (const auto& parameter : message->getParameters()) {
        // Whatever was read is found again under its own name.
        if (message->getValue(parameter.key) != parameter.value) std::abort();
    }
    const auto again = OrvaneMessage::parsePayload(message->toPayload());
    // Names are the sender's and not escaped; those that the parser took once it takes again.
    if (again == nullptr || again->getTagName() != message->getTagName()) std::abort();
    return 0;
}
