#pragma once

#include "common/link/pipe.h"

namespace orvane {

// The creating end, for the application's side: makes the pipe and serves one client. It counts as
// connected from then on; send() answers false until the client is there. For the next client,
// after connectionLost, make another object.
class PipeBroadcaster : public Pipe {
public:
    using Pipe::Pipe;

    bool initConnection() override;
    void terminate() override;

    // On the connection's thread, when the client has opened the pipe.
    virtual void clientConnected() {}

protected:
    bool prepareReading(PipeStream& stream) override;
};

}  // namespace orvane
