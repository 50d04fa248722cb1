#include "standins/app/application.h"
#include "standins/app/command_catalogue.h"
#include "standins/app/wide_text.h"
#include "util/log.h"

#include <windows.h>

namespace app = orvane::standin::app;

namespace {

std::string environmentValue(const char* name) {
    const std::wstring wide = app::wideFrom(name);
    const DWORD size = GetEnvironmentVariableW(wide.c_str(), nullptr, 0);
    if (size == 0) return {};
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), size));
    return app::utf8From(value);
}

}  // namespace

extern "C" int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) arguments.push_back(app::utf8From(argv[i]));
    app::Options options = app::readOptions(arguments, environmentValue);
    if (!options.error.empty() || options.showHelp || options.showList) {
        app::Terminal terminal;
        if (!options.error.empty()) {
            terminal.print("error: " + options.error);
            return 2;
        }
        if (options.showHelp) {
            terminal.print(app::programHelp());
            return 0;
        }
        for (const app::CommandForm& command : app::commandCatalogue())
            if (command.sent) terminal.print(command.name);
        return 0;
    }
    orvane::openlog("OrVaneApp", orvane::LOG_PID, 0);
    orvane::setlogmask(63);
    const int result = app::Application(std::move(options)).run();
    orvane::closelog();
    return result;
}
