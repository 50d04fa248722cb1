#pragma once

// What a person can type: the protocol's commands with their parameters, and the application's
// own. One table serves help, completion, the parameter parser and the spelling hints.

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::standin::app {

struct ParameterForm {
    enum class Kind { text, path, number, list, map, yesNo };
    const char* name;
    Kind kind;
    bool needed;
    const char* what;
};

struct CommandForm {
    const char* name;
    bool sent;            // to the plug-in; the rest are the application's own
    const char* usage;    // what follows the name
    const char* summary;  // one line
    const char* more;     // further lines for "help NAME", each ending in a line feed
    std::vector<ParameterForm> parameters;  // of a sent one, in the order they are sent
};

std::span<const CommandForm> commandCatalogue();

// The metadata fields that set commands may name without "metadata." before them.
std::span<const char* const> metadataFields();

// A name or the beginning of one, ignoring case. An exact name wins over longer ones.
struct Lookup {
    const CommandForm* command = nullptr;
    std::vector<std::string> candidates;  // when it is none: what it may have meant
    bool ambiguous = false;
};
Lookup findCommand(std::string_view typed);

// "" when the lookup found one, else what is wrong and what to type instead.
std::string lookupProblem(std::string_view typed, const Lookup& lookup);

// What may stand at the end of this unfinished line: command names, or a command's parameters.
struct Completion {
    std::string line;                     // the line with what all candidates share filled in
    std::vector<std::string> candidates;  // more than one when it is still open
};
Completion complete(std::string_view line);

std::string helpOverview();
std::string helpFor(const CommandForm& command);

}  // namespace orvane::standin::app
