#include "standins/app/options.h"

#include "standins/app/text.h"

namespace orvane::standin::app {

Options readOptions(const std::vector<std::string>& arguments,
                    const std::function<std::string(const char*)>& environment) {
    Options options;
    options.script = environment("ORVANE_APP_SCRIPT");
    options.transcript = environment("ORVANE_APP_TRANSCRIPT");
    for (const std::string& argument : arguments) {
        const auto equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const bool hasValue = equals != std::string::npos && equals + 1 < argument.size();
        const std::string value = hasValue ? argument.substr(equals + 1) : std::string();
        std::string* const target = name == "--launched-by"  ? &options.launchedBy
                                    : name == "--script"     ? &options.script
                                    : name == "--transcript" ? &options.transcript
                                                             : nullptr;
        bool* const flag = argument == "--quiet" ? &options.quiet
                           : argument == "--help" || argument == "-h" || argument == "/?"
                               ? &options.showHelp
                               : nullptr;
        if (flag) {
            *flag = true;
        } else if (!target) {
            options.error = "there is no option '" + onOneLine(argument, 80) +
                            "'; OrVaneApp --help tells which there are";
        } else if (!hasValue) {
            options.error = name + " needs a value: " + name +
                            (target == &options.launchedBy ? "=wmp" : "=FILE");
        } else {
            *target = value;
        }
    }
    return options;
}

std::string programHelp() {
    return "OrVaneApp: stands in for the desktop application at the other end of the plug-in's "
           "pipes.\n"
           "It shows every event and response, and sends commands typed at its prompt or read\n"
           "from a script.\n"
           "\n"
           "  OrVaneApp [OPTION]...\n"
           "\n"
           "  --script=FILE        run the lines of a file instead of a prompt; ends with 0 when\n"
           "                       all its checks were met, 1 when not\n"
           "  --transcript=FILE    write all that is printed into a file, too\n"
           "  --quiet              print checks, answers and what is wrong; not the traffic\n"
           "  --launched-by=NAME   given by the plug-in when it starts this program\n"
           "  --help               this text\n"
           "\n"
           "ORVANE_APP_SCRIPT and ORVANE_APP_TRANSCRIPT in the environment stand for --script and\n"
           "--transcript when the plug-in starts the program.\n"
           "\n"
           "It holds the mutex OrVaneApp_Process and makes the pipes IpcOrvaneEventPipe and\n"
           "IpcOrvaneCommandPipe; a second one says so and ends with 0. Start the player before\n"
           "or after it: the plug-in connects by itself within two seconds.\n"
           "\n"
           "Exit codes: 0 good, 1 a check was not met, 2 the command line is wrong, 3 the pipes\n"
           "could not be made.\n";
}

}  // namespace orvane::standin::app
