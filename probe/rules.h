#pragma once

// The rules themselves: one question each.

#include <span>

#include "probe/session.h"

namespace orvane::probe {

struct Seen {
    Answer answer = Answer::notAsked;
    std::string what;
};

struct Rule {
    const char* name;
    Seen (*ask)(Session&);
};

std::span<const Rule> rules();

}  // namespace orvane::probe
