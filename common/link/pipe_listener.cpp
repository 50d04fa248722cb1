#include "common/link/pipe_listener.h"

#include "util/log/log.h"

namespace orvane {

bool PipeListener::initConnection() {
    close();  // the application serves one client: the old connection has to go first
    if (!open(PipeStream::openExisting(pipeName), -1)) return false;
    if (log_enabled(LOG_DEBUG))
        syslog(LOG_DEBUG, "%s: connected to pipe %s", "PipeListener::initConnection",
               pipeName.toRawUTF8());
    return true;
}

bool PipeListener::initConnection(int timeoutMs) {
    close();
    const bool connected = open(PipeStream::openExisting(pipeName), timeoutMs);
    if (log_enabled(LOG_DEBUG))
        syslog(LOG_DEBUG, "%s: %sconnected to pipe %s", "PipeListener::initConnection",
               connected ? "" : "not ", pipeName.toRawUTF8());
    return connected;
}

void PipeListener::terminate() {
    close();
    if (log_enabled(LOG_DEBUG))
        syslog(LOG_DEBUG, "PipeListener: connection \"%s\" terminated", pipeName.toRawUTF8());
}

}  // namespace orvane
