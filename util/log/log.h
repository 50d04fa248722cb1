#pragma once

// The logging functions that all code uses. A writer that is installed with setLogWriter() writes
// the messages: util/shared_log writes the log file, a test collects them in a list. Without a
// writer they are dropped. Any thread may log. No function reports an error.

#include <cstdarg>

namespace orvane {

enum LogPriority : int {
    LOG_EMERG = 0,
    LOG_ALERT = 1,
    LOG_CRIT = 2,
    LOG_ERR = 3,
    LOG_WARNING = 4,
    LOG_NOTICE = 5,
    LOG_INFO = 6,
    LOG_DEBUG = 7,
};

// The bits of a priority that are used; higher bits are ignored.
constexpr unsigned kSeverityBits = 7;

// Writes one message that the mask allows. Runs on the thread that logs, and finds errno and the
// thread's last error as the caller left them. It must preserve both.
using LogWriter = void (*)(int priority, const char* format, va_list args);

// Installs a writer, or none with null. Returns the previous one.
LogWriter setLogWriter(LogWriter writer) noexcept;

// Sets the mask: bit n enables priority n. All are enabled at first. Returns the previous mask; a
// mask of 0 changes nothing.
unsigned setlogmask(unsigned mask) noexcept;

// Whether a message of this priority would be written. Call it before preparing costly arguments.
[[nodiscard]] bool log_enabled(int priority) noexcept;

// Logs a message. `format` is UTF-8 with printf's directives and two more: "%m" is the text of
// errno, "%M" the English text of the thread's last Windows error. Both errors are preserved.
void syslog(int priority, const char* format, ...) noexcept;
void vsyslog(int priority, const char* format, va_list args) noexcept;

// syslog for functions with a trailing `log` switch: silent when it is 0, as it is whenever the
// shared log itself is the caller.
template <typename... Arguments>
void log_if(int log, int priority, const char* format, Arguments... arguments) noexcept {
    if (log != 0) syslog(priority, format, arguments...);
}

}  // namespace orvane
