#pragma once

#include <functional>
#include <string>
#include <utility>

#include "common/link/pipe.h"

namespace orvane {

// Called once when a connection is lost or closed: on any thread, possibly after the connector's
// end. Must not throw.
using ConnectionLost = std::function<void()>;

// The plug-in's end of a pipe: opens a pipe that the application has created. It does not wait for
// a pipe that is missing or in use, and refuses a pipe whose creator is not trusted.
class PipeListener : public Pipe {
public:
    explicit PipeListener(const juce::String& name, ConnectionLost whenLost = nullptr)
        : Pipe(name), m_whenLost(std::move(whenLost)) {}

    void connectionLost() override;
    bool initConnection() override;  // reads wait as long as it takes
    virtual bool initConnection(int timeoutMs);
    void terminate() override;

    // Why initConnection() failed, as the end of a sentence about the pipe. Empty when the pipe
    // does not exist, which is normal while the application does not run.
    [[nodiscard]] const std::string& failure() const { return m_failure; }
    void logFailure() const;

private:
    bool openPipe(int timeoutMs);

    const ConnectionLost m_whenLost;
    std::string m_failure;
};

}  // namespace orvane
