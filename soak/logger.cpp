// One of the programs that write the shared log at once: lines of all lengths, numbered, so that
// one that is lost or spoilt shows.

#include <string>

#include "soak/shared_counts.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane::soak {

int runLogger(unsigned number) {
    openlog("soak_logger", LOG_PID, 0);
    for (unsigned line = 0;; ++line) {
        const std::string filler(1 + line * 37 % 600, static_cast<char>('a' + number % 26));
        syslog(LOG_ERR, "%u %u %s.", number, line, filler.c_str());
        Sleep(line % 4);
    }
}

}  // namespace orvane::soak
