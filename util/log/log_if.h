#pragma once

namespace orvane {

// syslog for functions with a trailing `log` switch: silent when it is 0, as it is whenever the
// log itself is the caller.
void log_if(int log, int priority, const char* format, ...);

}  // namespace orvane
