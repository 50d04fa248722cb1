#include "common/link/pipe_listener.h"

#include <utility>

#include "util/log/log.h"

namespace orvane {

void PipeListener::connectionLost() {
    Pipe::connectionLost();
    if (m_whenLost) m_whenLost();
}

bool PipeListener::initConnection() {
    if (!openPipe(-1)) return false;
    syslog(LOG_DEBUG, "%s: connected to pipe %s", "PipeListener::initConnection",
           m_logName.c_str());
    return true;
}

bool PipeListener::initConnection(int timeoutMs) {
    const bool connected = openPipe(timeoutMs);
    syslog(LOG_DEBUG, "%s: %sconnected to pipe %s", "PipeListener::initConnection",
           connected ? "" : "not ", m_logName.c_str());
    return connected;
}

bool PipeListener::openPipe(int timeoutMs) {
    const char* refusal = nullptr;
    auto stream = PipeStream::openExisting(pipeName, &refusal);
    const DWORD error = GetLastError();
    m_failure.clear();
    if (refusal != nullptr)
        m_failure = std::string("is not linked to: ") + refusal;
    else if (stream == nullptr && error != ERROR_FILE_NOT_FOUND)
        m_failure = "cannot be opened: error " + std::to_string(error);
    return open(std::move(stream), timeoutMs);
}

void PipeListener::logFailure() const {
    syslog(LOG_ERR, "PipeListener: pipe \"%s\" %s", m_logName.c_str(), m_failure.c_str());
}

void PipeListener::terminate() {
    close();
    syslog(LOG_DEBUG, "PipeListener: connection \"%s\" terminated", m_logName.c_str());
}

}  // namespace orvane
