#include <windows.h>

#include "standins/app/application.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace {

using namespace orvane::standin::app;

constexpr const char* kHelp =
    R"(OrVaneApp stands in for the desktop application at the other end of the plug-in's pipes.
It shows every event and response, with what is wrong about them, and sends commands that are
typed at its prompt or read from a script. 'help' at the prompt lists all of them.

  OrVaneApp [OPTION]...

  --script=FILE        run the lines of a file instead of a prompt
  --transcript=FILE    write all that is printed into a file, too
  --record=FOLDER      append the bytes that go over the pipes to files there, with their times
  --launched-by=NAME   given by the plug-in when it starts this program
  --help               this text

ORVANE_APP_SCRIPT and ORVANE_APP_TRANSCRIPT in the environment stand for --script and --transcript
when the plug-in starts the program.

It holds the mutex OrVaneApp_Process and makes the pipes IpcOrvaneEventPipe and
IpcOrvaneCommandPipe. Start the player before or after it: the plug-in connects within two seconds.
A script to begin with:

  expect event PlayerHello within 20000
  getMediaInfoFromIndex 0
  expect return true
  keep track metadataOut.Filename
  setMediaInfoToPath "${track}" TrackTitle="My Song" Year=1999
  expect return true

It ends with 0 when all was good or another one is running, 1 when a check was not met or something
came that is not as it should be, 2 when the command line is wrong, 3 without pipes.)";

juce::File fileAt(const String& path) {
    return path.isEmpty() ? juce::File()
                          : juce::File::getCurrentWorkingDirectory().getChildFile(path);
}

}  // namespace

extern "C" int wmain(int argc, wchar_t** argv) {
    Options options;
    const auto& environment = juce::SystemStats::getEnvironmentVariable;
    options.script = fileAt(environment("ORVANE_APP_SCRIPT", {}));
    options.transcript = fileAt(environment("ORVANE_APP_TRANSCRIPT", {}));
    for (const String& argument : StringArray(argv + 1, argc - 1)) {
        const auto [name, value] = split(argument, "=");
        if (name == "--script" && value.isNotEmpty()) {
            options.script = fileAt(value);
        } else if (name == "--transcript" && value.isNotEmpty()) {
            options.transcript = fileAt(value);
        } else if (name == "--record" && value.isNotEmpty()) {
            options.record = fileAt(value);
        } else if (name == "--launched-by" && value.isNotEmpty()) {
            options.launchedBy = value;
        } else {
            const bool asked = argument == "--help" || argument == "-h" || argument == "/?";
            Terminal().print(asked ? String(kHelp)
                                   : "error: there is no option '" + onOneLine(argument, 80) +
                                         "', or it needs a value; OrVaneApp --help tells");
            return asked ? 0 : 2;
        }
    }
    orvane::openlog("OrVaneApp", orvane::LOG_PID, 0);
    orvane::setlogmask(63);
    const int result = StandInApplication(std::move(options)).run();
    orvane::closelog();
    return result;
}
