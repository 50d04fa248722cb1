#pragma once

#include "common/link/pipe.h"

namespace orvane {

// The application's end of a pipe: creates the pipe and serves one client. isConnected() is true
// from the creation on; send() returns false until a client has connected. For the next client,
// after connectionLost(), create a new object.
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
