#pragma once

// What the two sides say to each other, as the application sees it: plain UTF-8 records.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::standin::app {

enum class PipeId { event, command };

// The name a person reads ("event pipe"), and the one the pipe bears on the system.
const char* describe(PipeId pipe);
const char* systemName(PipeId pipe);

using Parameter = std::pair<std::string, std::string>;
using Parameters = std::vector<Parameter>;

// The first parameter whose key matches ignoring case, or null.
const std::string* find(const Parameters& parameters, std::string_view key);
// The same, "" when it is absent.
const std::string& valueOf(const Parameters& parameters, std::string_view key);
// Replaces the value in place, or appends.
void set(Parameters& parameters, std::string_view key, std::string value);

struct Message {
    enum class Kind { event, command, response };
    Kind kind = Kind::event;
    std::string name;
    Parameters parameters;
};

}  // namespace orvane::standin::app
