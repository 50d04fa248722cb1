#pragma once

// From a typed line to the parameters of a command.

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "standins/app/command_catalogue.h"
#include "standins/app/message.h"

namespace orvane::standin::app {

template <typename Value>
struct Parsed {
    Value value;
    std::string error;  // "" when it is good; else what to do about it
    explicit operator bool() const { return error.empty(); }
};

// Words parted by spaces; "..." keeps spaces, "" inside quotes is a quote. A backslash is only
// a backslash: most values are paths.
Parsed<std::vector<std::string>> splitWords(std::string_view line);

// Puts variables in: ${NAME}. A name nobody set is an error.
Parsed<std::string> substitute(std::string_view line,
                               const std::map<std::string, std::string, std::less<>>& variables);

// The parameters as they are sent, in the catalogue's order: lists as trackPaths0, trackPaths1...,
// fields as metadata.NAME.
Parsed<Parameters> commandParameters(const CommandForm& command,
                                     const std::vector<std::string>& words);

// KEY=VALUE words as they are, for what is sent unchecked and for expectations.
Parsed<Parameters> plainParameters(const std::vector<std::string>& words);

}  // namespace orvane::standin::app
