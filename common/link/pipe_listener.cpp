#include "common/link/pipe_listener.h"

#include <utility>

#include "util/log/log.h"

namespace orvane {

bool PipeListener::initConnection() {
    close();  // the application serves one client: the old connection has to go first
    if (!openPipe(-1)) return false;
    syslog(LOG_DEBUG, "%s: connected to pipe %s", "PipeListener::initConnection",
           m_logName.c_str());
    return true;
}

bool PipeListener::initConnection(int timeoutMs) {
    close();
    const bool connected = openPipe(timeoutMs);
    syslog(LOG_DEBUG, "%s: %sconnected to pipe %s", "PipeListener::initConnection",
           connected ? "" : "not ", m_logName.c_str());
    return connected;
}

bool PipeListener::openPipe(int timeoutMs) {
    const char* refusal = nullptr;
    auto stream = PipeStream::openExisting(pipeName, &refusal);
    if (refusal != nullptr)
        syslog(LOG_ERR, "PipeListener: pipe \"%s\" is not linked to: %s", m_logName.c_str(),
               refusal);
    return open(std::move(stream), timeoutMs);
}

void PipeListener::terminate() {
    close();
    syslog(LOG_DEBUG, "PipeListener: connection \"%s\" terminated", m_logName.c_str());
}

}  // namespace orvane
