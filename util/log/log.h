#pragma once

// The diagnostic log that all of the maker's processes on a machine share: one text file, a line a
// message. Any thread of any process may log; a message is in the file when the call returns.
// Nothing here reports failure: a message that cannot be written is dropped.

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

enum LogOption : unsigned {
    LOG_PID = 0x01,     // the process id on every line
    LOG_CONS = 0x02,    // the log's own troubles on standard output
    LOG_PERROR = 0x20,  // every line on standard error as well
};

// Sets the options and copies `ident` (may be null); `facility` is ignored. Opens nothing yet.
void openlog(const char* ident, unsigned option, int facility);

// Bit n lets priority n through. Returns the previous mask; 0 only reads it.
unsigned setlogmask(unsigned mask);

// Whether a message of this priority would be written: ask before preparing costly arguments.
[[nodiscard]] bool log_enabled(int priority);

// printf's directives in UTF-8, and two more: "%m" is errno's text, "%M" the English text of the
// calling thread's last Windows error. The calling thread's last error and errno are preserved.
void syslog(int priority, const char* format, ...);
void vsyslog(int priority, const char* format, va_list args);

// Forgets ident and options and closes the log's mutex; a later message opens it again.
void closelog();

// closelog for the module's exit list: from then on every message closes the log behind itself.
void closelog_on_exit();

}  // namespace orvane
