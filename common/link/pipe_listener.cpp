#include "common/link/pipe_listener.h"

#include "util/log/log.h"

namespace orvane {

bool PipeListener::initConnection() {
    close();  // the application serves one client: the old connection has to go first
    if (!open(PipeStream::openExisting(pipeName), -1)) return false;
    syslog(LOG_DEBUG, "%s: connected to pipe %s", "PipeListener::initConnection",
           m_logName.c_str());
    return true;
}

bool PipeListener::initConnection(int timeoutMs) {
    close();
    const bool connected = open(PipeStream::openExisting(pipeName), timeoutMs);
    syslog(LOG_DEBUG, "%s: %sconnected to pipe %s", "PipeListener::initConnection",
           connected ? "" : "not ", m_logName.c_str());
    return connected;
}

void PipeListener::terminate() {
    close();
    syslog(LOG_DEBUG, "PipeListener: connection \"%s\" terminated", m_logName.c_str());
}

}  // namespace orvane
