#include "common/link/pipe_broadcaster.h"

#include "util/log/log.h"

namespace orvane {

bool PipeBroadcaster::initConnection() {
    const bool created = open(PipeStream::create(pipeName), -1);
    syslog(LOG_DEBUG, "%s: \"%s\" %s", "PipeBroadcaster::initConnection", m_logName.c_str(),
           created ? "created" : "not created");
    return created;
}

void PipeBroadcaster::terminate() {
    close();
    syslog(LOG_DEBUG, "PipeBroadcaster: connection \"%s\" terminated", m_logName.c_str());
}

bool PipeBroadcaster::prepareReading(PipeStream& stream) {
    if (!stream.waitForClient()) return false;
    clientConnected();
    return true;
}

}  // namespace orvane
