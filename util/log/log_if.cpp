#include "util/log/log_if.h"

#include <cstdarg>

#include "util/log/log.h"

namespace orvane {

void log_if(int log, int priority, const char* format, ...) {
    if (log == 0 || !log_enabled(priority)) return;
    va_list args;
    va_start(args, format);
    vsyslog(priority, format, args);
    va_end(args);
}

}  // namespace orvane
