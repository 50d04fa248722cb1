#include "tests/util/captured_log.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <ostream>
#include <utility>

#include "util/log.h"
#include "util/log_format.h"

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

namespace test {

void PrintTo(const LogMessage& message, std::ostream* out) {
    *out << "<" << message.priority << "> " << message.text;
}

std::vector<LogMessage> takeLog() {
    const std::lock_guard guard(s_lock);
    return std::exchange(s_messages, {});
}

}  // namespace test

bool log_enabled(int) { return true; }

void vsyslog(int priority, const char* format, va_list args) {
    const std::string error = lastError();
    const std::string cause = "<" + std::to_string(errno) + ">";
    const OwnedText translated =
        replaceErrorDirectives(format, countErrorDirectives(format), cause, error);
    va_list measured;
    va_copy(measured, args);
    std::string text(
        static_cast<std::size_t>(std::vsnprintf(nullptr, 0, translated.get(), measured)), '\0');
    va_end(measured);
    std::vsnprintf(text.data(), text.size() + 1, translated.get(), args);
    const std::lock_guard guard(s_lock);
    s_messages.push_back({priority, std::move(text)});
}

void syslog(int priority, const char* format, ...) {
    va_list args;
    va_start(args, format);
    vsyslog(priority, format, args);
    va_end(args);
}

}  // namespace orvane
