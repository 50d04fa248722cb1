#include "tests/util/text/captured_log.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

#include "util/log/log.h"
#include "util/log/log_format.h"

namespace orvane {
namespace {

std::mutex s_lock;
std::vector<test::LogMessage> s_messages;

std::string lastError() {
#ifdef _WIN32
    return "<" + std::to_string(GetLastError()) + ">";
#else
    return "<none>";
#endif
}

}  // namespace

std::vector<test::LogMessage> test::takeLog() {
    const std::lock_guard guard(s_lock);
    return std::exchange(s_messages, {});
}

bool log_enabled(int) { return true; }

void vsyslog(int priority, const char* format, va_list args) {
    const OwnedText translated =
        replaceErrorDirectives(format, countErrorDirectives(format), "<errno>", lastError());
    std::string text(200'000, '\0');
    text.resize(
        static_cast<std::size_t>(std::vsnprintf(text.data(), text.size(), translated.get(), args)));
    const std::lock_guard guard(s_lock);
    s_messages.push_back("<" + std::to_string(priority) + "> " + text);
}

void syslog(int priority, const char* format, ...) {
    va_list args;
    va_start(args, format);
    vsyslog(priority, format, args);
    va_end(args);
}

}  // namespace orvane
