#include <windows.h>

#include "standins/app/application.h"
#include "standins/support/wide_text.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace app = orvane::standin::app;

namespace {

std::string environmentValue(const char* name) {
    const std::wstring wide = orvane::standin::toWide(name);
    const DWORD size = GetEnvironmentVariableW(wide.c_str(), nullptr, 0);
    if (size == 0) return {};
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), size));
    return orvane::standin::toUtf8(value);
}

}  // namespace

extern "C" int wmain(int argc, wchar_t** argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) arguments.push_back(orvane::standin::toUtf8(argv[i]));
    app::Options options = app::readOptions(arguments, environmentValue);
    if (!options.error.empty() || options.showHelp) {
        app::Terminal terminal;
        if (!options.error.empty()) {
            terminal.print("error: " + options.error);
            return 2;
        }
        terminal.print(app::programHelp());
        return 0;
    }
    orvane::openlog("OrVaneApp", orvane::LOG_PID, 0);
    orvane::setlogmask(63);
    const int result = app::Application(std::move(options)).run();
    orvane::closelog();
    return result;
}
