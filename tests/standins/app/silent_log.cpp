// The shared log is a Windows one; natively nothing is written.

#include "util/log/log.h"

namespace orvane {

void syslog(int, const char*, ...) {}
void vsyslog(int, const char*, va_list) {}
bool log_enabled(int) { return false; }

}  // namespace orvane
