#pragma once

#include "common/link/pipe.h"

namespace orvane {

// The connecting end: opens a pipe that the application has made. It never waits for a pipe that is
// absent or taken. To a stranger's pipe it makes no connection, and logs why.
class PipeListener : public Pipe {
public:
    using Pipe::Pipe;

    bool initConnection() override;  // reads wait as long as it takes
    virtual bool initConnection(int timeoutMs);
    void terminate() override;

private:
    bool openPipe(int timeoutMs);
};

}  // namespace orvane
