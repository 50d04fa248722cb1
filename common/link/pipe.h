#pragma once

#include <juce_core/juce_core.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "common/link/pipe_stream.h"

namespace orvane {

class OrvaneMessage;

// A message connection over a named pipe, with a reader thread of its own: a single-threaded COM
// apartment that dispatches its messages while it waits. Opened, closed and destroyed by its owner,
// one call at a time; send() and isConnected() may come from any thread while the object lives.
//
// Closing waits for the reader thread, and with it for a message being handled, while serving calls
// into the waiting thread; after kClosePatienceMs it dispatches that thread's posted messages too.
// On the reader thread itself (from messageReceived) terminate() does not wait; opening and
// destroying are not possible there.
class Pipe : private juce::Thread {
public:
    explicit Pipe(const juce::String& pipeName);
    // A subclass whose callbacks may run calls close() in its own destructor.
    ~Pipe() override;

    // The defaults log. `connectionLost` comes once for each connection made: on the reader thread
    // after a failed read, on the closing thread otherwise.
    virtual void connectionMade();
    virtual void connectionLost();
    // On the reader thread. No further message is read until it returns; what it throws is dropped.
    virtual void messageReceived(std::span<const std::uint8_t> payload) = 0;
    virtual bool initConnection() = 0;
    virtual void terminate() = 0;

    // Writes the message as one frame; true when all of it was taken. Returns within
    // kWriteTimeoutMs even when other threads are writing; after a failed write the connection is
    // down.
    bool send(const OrvaneMessage& message);

    [[nodiscard]] bool isConnected() const;

    // Closes without waiting for a message being handled; false while one is. Once it answers true
    // neither opening nor destroying this object waits.
    [[nodiscard]] bool letGo();

    static constexpr DWORD kWriteTimeoutMs = 2000;
    static constexpr DWORD kLetGoMs = 100;           // for a reader that handles nothing
    static constexpr DWORD kClosePatienceMs = 4000;  // then the log tells of the wait

protected:
    // Takes over an opened stream and starts the reader thread; the connection is closed before.
    // `receiveTimeoutMs` is negative for none. False when `stream` is null or the thread does not
    // start.
    bool open(std::shared_ptr<PipeStream> stream, int receiveTimeoutMs);
    void close();

    // Runs on the reader thread before the first read; false ends the connection.
    virtual bool prepareReading(PipeStream& stream);

    // Null while closed. Any thread; who keeps it keeps the pipe open.
    [[nodiscard]] std::shared_ptr<PipeStream> currentStream() const;

    const juce::String pipeName;

private:
    void run() override;
    void readFrames();
    void deliver(std::span<const std::uint8_t> payload);
    void endStream();
    void lost();
    void waitForReader();

    juce::CriticalSection m_streamLock;
    std::shared_ptr<PipeStream> m_stream;
    UniqueHandle m_readerDone;  // event, set while no reader thread runs our code
    DWORD m_receiveTimeoutMs = INFINITE;
    std::atomic<bool> m_made{false};
};

}  // namespace orvane
