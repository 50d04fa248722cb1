#pragma once

// From messages to the bytes of a frame's payload and back, with a person's reason for every
// payload that is not what it should be.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standins/app/message.h"

namespace orvane::standin::app {

std::string commandPayload(const std::string& name, const Parameters& parameters);

struct Reading {
    std::optional<Message> message;
    std::vector<std::string> problems;  // may come with a message: read, but not as it should be
};
Reading readPayload(PipeId pipe, std::string_view payload);

}  // namespace orvane::standin::app
