#pragma once

#include <juce_core/juce_core.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "common/link/pipe_stream.h"

namespace orvane {

class OrvaneMessage;
namespace frame {
class Reader;
}

// A message connection over a named pipe, with a reader thread of its own: a single-threaded COM
// apartment that dispatches its messages while it waits. Opened, closed and destroyed by its owner,
// one call at a time; send() and isConnected() may come from any thread while the object lives.
//
// Closing closes the pipe's handle at once; a message being handled first has kAnswerMs to be
// answered, while nothing else is sent or received. Closing waits for the reader thread, and with
// it for that message, for kClosePatienceMs in all, and serves calls into the waiting thread
// meanwhile; posted messages stay in that thread's queue. On the reader thread itself (from
// messageReceived) nothing waits; opening and destroying are not possible there.
//
// The reader thread has a share in a pipe that is held by shared_ptr, until its last instruction in
// this object. So the owner of such a pipe says closeForGood() before it lets the pipe go, and a
// reader that does not end can be left behind. Any other pipe waits for its reader, however long
// that takes, when it is destroyed.
class Pipe : public std::enable_shared_from_this<Pipe> {
public:
    explicit Pipe(const juce::String& pipeName);
    // A subclass calls closeForGood() in its own destructor, so that its callbacks are there.
    virtual ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    // The defaults log. `connectionLost` comes once for each connection made: on the reader thread
    // after a failed read, on the closing thread otherwise.
    virtual void connectionMade();
    virtual void connectionLost();
    // On the reader thread. No further message is read until it returns; what it throws is dropped.
    virtual void messageReceived(std::span<const std::uint8_t> payload) = 0;
    virtual bool initConnection() = 0;
    virtual void terminate() = 0;

    struct Sending {
        bool sent;
        std::size_t oversize;  // bytes of a payload that is too long for a frame; otherwise 0
    };
    // Writes the message as one frame; `sent` when all of it was taken. Returns within
    // kWriteTimeoutMs even when other threads are writing; after a failed write the connection is
    // down. Logs nothing.
    Sending trySend(const OrvaneMessage& message);
    bool send(const OrvaneMessage& message) { return trySend(message).sent; }

    [[nodiscard]] bool isConnected() const;

    // Closes without waiting for a message being handled; false while one is. Once it answers true
    // neither opening nor destroying this object waits.
    [[nodiscard]] bool letGo();

    // Closes a pipe that is not opened again. A reader that has not ended in time is left behind,
    // with its share in this object and with what keepForReader() answers; where that is not
    // possible it is waited for.
    void closeForGood();

    static constexpr DWORD kWriteTimeoutMs = 2000;
    static constexpr DWORD kAnswerMs = 500;
    static constexpr DWORD kLetGoMs = 100;  // for a reader that handles nothing
    static constexpr DWORD kClosePatienceMs = 4000;

protected:
    // Takes over an opened stream and starts the reader thread; the connection is closed before.
    // `receiveTimeoutMs` is negative for none. False when `stream` is null, when the former reader
    // has not ended or the thread does not start.
    bool open(std::shared_ptr<PipeStream> stream, int receiveTimeoutMs);
    void close();

    // Runs on the reader thread before the first read; false ends the connection.
    virtual bool prepareReading(PipeStream& stream);

    // Null while closed. Any thread; who keeps it keeps the pipe open.
    [[nodiscard]] std::shared_ptr<PipeStream> currentStream() const;

    // Asked on the closing thread before the reader is left behind: what its callbacks use besides
    // this object. The reader lets go of it as its last act in its apartment. Null: it cannot be
    // left behind.
    virtual std::shared_ptr<void> keepForReader() { return nullptr; }

    const juce::String pipeName;
    // The name for the log. Made once: a String that several threads ask for UTF-8 is no one's.
    const std::string m_logName;

private:
    void run();
    void readFrames();
    void take(frame::Reader& reader, std::span<const std::uint8_t> bytes);
    void deliver(std::span<const std::uint8_t> payload);
    void endStream();
    void lost();
    void letAnswer() const;
    void waitForReader(DWORD timeoutMs);
    [[nodiscard]] bool onReader() const;
    [[nodiscard]] bool readerEnds(DWORD timeoutMs) const;
    [[nodiscard]] bool leaveReaderBehind();

    juce::CriticalSection m_lock;  // guards the next three
    std::shared_ptr<PipeStream> m_stream;
    bool m_readerAtWork = false;
    std::shared_ptr<void> m_kept;  // for a reader that was left behind
    UniqueHandle m_reader;         // the thread; kept after its end until the next one
    std::atomic<DWORD> m_readerId{0};
    std::atomic<bool> m_handling{false};  // a message, on the reader thread
    std::atomic<bool> m_closing{false};   // until it is opened again
    bool m_gaveUp = false;                // on the present reader
    DWORD m_receiveTimeoutMs = INFINITE;
    std::atomic<bool> m_made{false};
};

}  // namespace orvane
