#pragma once

// What the application knows of the protocol: the pipes, the events, and the exact form in which
// the plug-in writes a document.

#include <cstdint>
#include <span>

#include "standins/app/arrivals.h"
#include "standins/app/text.h"

namespace orvane::standin::app {

enum class PipeId { event, command };

// The name that a person reads ("event pipe"), and the one that the pipe bears on the system.
const char* describe(PipeId pipe);
const char* systemName(PipeId pipe);

// The message, null when it is none. Adds to `problems` what is not as it should be, also when
// there is a message.
MessagePtr readPayload(PipeId pipe, std::span<const std::uint8_t> payload, StringArray& problems);

// A parameter's value; none when the message does not have it.
std::optional<String> valueIn(const OrvaneMessage& message, const String& key);

inline bool isEvent(const OrvaneMessage& message) { return message.getTagName() == "OrVaneIPC"; }

}  // namespace orvane::standin::app
