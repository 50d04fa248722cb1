#pragma once

// The program's command line and environment.

#include <functional>
#include <string>
#include <vector>

namespace orvane::standin::app {

struct Options {
    std::string launchedBy;  // the player that started this program, "" when a person did
    std::string script;      // a file of lines to run
    std::string transcript;  // a file that receives everything printed
    bool quiet = false;      // leave the traffic out of what is printed (not of the transcript)
    bool showHelp = false;
    std::string error;  // what is wrong with the command line; "" when nothing is
};

// `environment` gives a variable's value, "" when it is not set. The command line wins.
Options readOptions(const std::vector<std::string>& arguments,
                    const std::function<std::string(const char*)>& environment);

std::string programHelp();

}  // namespace orvane::standin::app
