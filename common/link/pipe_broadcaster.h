#pragma once

#include "common/link/pipe.h"

namespace orvane {

// The creating end, for the application's side: makes the pipe and serves one client. It counts as
// connected from then on; send() answers false until the client is there. After the client has gone
// (connectionLost) initConnection() makes the pipe anew.
class PipeBroadcaster : public Pipe {
public:
    using Pipe::Pipe;

    bool initConnection() override;
    void terminate() override;

    // On the reader thread, when the client has opened the pipe.
    virtual void clientConnected() {}

protected:
    bool prepareReading(PipeStream& stream) override;
};

}  // namespace orvane
