#pragma once

// Where every part of the house sends its diagnostics. Who writes them is set elsewhere: the log
// file in util/shared_log where that is linked, a test's own list; nobody at first, and then they
// are dropped. Any thread may log. Nothing here reports failure.

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

// Bits of a priority that count; what is above them is ignored.
constexpr unsigned kSeverityBits = 7;

// Takes one message that the mask lets through, on the thread that logs it and as the caller left
// errno and the thread's last error; it leaves both as they are.
using LogWriter = void (*)(int priority, const char* format, va_list args);

// Sets who writes from now on, or with null nobody. Returns who did before.
LogWriter setLogWriter(LogWriter writer) noexcept;

// Bit n lets priority n through; all do at first. Returns the previous mask; 0 only reads it.
unsigned setlogmask(unsigned mask) noexcept;

// Whether a message of this priority would be written: ask before preparing costly arguments.
[[nodiscard]] bool log_enabled(int priority) noexcept;

// printf's directives in UTF-8, and two more: "%m" is errno's text, "%M" the English text of the
// calling thread's last Windows error. The calling thread's last error and errno are preserved.
void syslog(int priority, const char* format, ...) noexcept;
void vsyslog(int priority, const char* format, va_list args) noexcept;

// syslog for functions with a trailing `log` switch: silent when it is 0, as it is whenever the
// shared log itself is the caller.
template <typename... Arguments>
void log_if(int log, int priority, const char* format, Arguments... arguments) noexcept {
    if (log != 0) syslog(priority, format, arguments...);
}

}  // namespace orvane
