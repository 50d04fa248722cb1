#pragma once

#include <juce_core/juce_core.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "common/link/frame_queue.h"
#include "common/link/pipe_stream.h"

namespace orvane {

class OrvaneMessage;
namespace frame {
class Reader;
}

// A message connection over a named pipe. It lives once: initConnection() opens it, a thread of its
// own reads and writes it, and it is closed; the next connection is another object. The thread is a
// single-threaded COM apartment that dispatches its messages while it waits.
//
// The thread shares ownership of the object until it ends. So objects are made by makePipe(), and
// the owner may drop one at any time: whoever drops the last share closes the connection.
//
// Opened and closed by its owner, one call at a time; send() and isConnected() may come from any
// thread.
class Pipe : public std::enable_shared_from_this<Pipe> {
public:
    explicit Pipe(const juce::String& pipeName);
    virtual ~Pipe() = default;
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    // The defaults log. `connectionLost` comes once for each connection made: on the thread after a
    // failed read or write, on the closing thread otherwise.
    virtual void connectionMade();
    virtual void connectionLost();
    // On the connection's thread. No further message is read until it returns; what it throws is
    // dropped.
    virtual void messageReceived(std::span<const std::uint8_t> payload) = 0;
    virtual bool initConnection() = 0;
    virtual void terminate() = 0;

    struct Sending {
        bool sent;
        std::size_t oversize;  // bytes of a payload that is too long for a frame; otherwise 0
    };
    // Puts the message as one frame into the queue that the thread writes; `sent` when the
    // connection is up and took it. On the connection's own thread the frame is written before the
    // call returns, and `sent` tells of that. A frame that is not taken within kWriteTimeoutMs
    // breaks the connection, and so does one that would go over FrameQueue::kLimit, with a line in
    // the log; the queue is empty then.
    Sending trySend(const OrvaneMessage& message);
    bool send(const OrvaneMessage& message) { return trySend(message).sent; }

    // send() for bytes that are a frame already, or none.
    bool put(FrameQueue::Frame&& frame);

    [[nodiscard]] bool isConnected() const;

    // Whether this object can be opened no more.
    [[nodiscard]] bool isUsedUp() const { return m_thread || m_closing; }

    // Closes the connection. What waits in the queue, and the answer to a message that is being
    // handled, has kAnswerMs; the thread has kClosePatienceMs in all to end. Calls into the waiting
    // thread are served meanwhile; posted messages stay in its queue. A thread that has not ended
    // is left behind with its share in this object. On the connection's own thread, and when it was
    // closed or abandoned before, nothing waits.
    void close();

    // Closes without waiting for anything. False while a message is handled that was not finished
    // when the connection went, for up to kClosePatienceMs from then on; later its thread is left
    // behind.
    [[nodiscard]] bool abandon();

    static constexpr DWORD kWriteTimeoutMs = 2000;
    static constexpr DWORD kAnswerMs = 500;
    static constexpr DWORD kClosePatienceMs = 4000;

protected:
    // Takes over an opened stream and starts the thread, once. `receiveTimeoutMs` is negative for
    // none. False when `stream` is null, when this object was opened before or the thread does not
    // start.
    bool open(std::shared_ptr<PipeStream> stream, int receiveTimeoutMs);

    // Runs on the thread before the first read; false ends the connection.
    virtual bool prepareReading(PipeStream& stream);

    const juce::String pipeName;
    // The name for the log. Made once: a String that several threads ask for UTF-8 is no one's.
    const std::string m_logName;

private:
    enum class Outcome { message, timedOut, ended };

    [[nodiscard]] bool canSend() const;
    void run();
    void readMessages();
    Outcome exchange(PipeStream& stream, frame::Reader& reader);
    bool takeAhead(frame::Reader& reader);
    bool drain();
    void deliver(std::span<const std::uint8_t> payload);
    void endStream();
    void lost();
    [[nodiscard]] std::shared_ptr<PipeStream> currentStream() const;
    [[nodiscard]] bool onOwnThread() const { return GetCurrentThreadId() == m_threadId; }
    [[nodiscard]] bool endsWithin(DWORD timeoutMs) const;
    void leaveBehind() const;

    juce::CriticalSection m_lock;  // guards the next one
    std::shared_ptr<PipeStream> m_stream;
    FrameQueue m_queue;
    UniqueHandle m_thread;  // kept after its end
    std::atomic<DWORD> m_threadId{0};
    std::atomic<bool> m_handling{false};  // a message
    std::atomic<bool> m_closing{false};
    std::atomic<bool> m_made{false};
    std::atomic<std::uint64_t> m_lostAt{0};  // GetTickCount64
    DWORD m_receiveTimeoutMs = INFINITE;

    // The thread's own: what was read beyond the last message.
    std::array<std::uint8_t, 4096> m_buffer{};
    std::span<std::uint8_t> m_ahead;
};

// The only way to make a connection: the last share that is dropped closes it.
template <typename PipeType, typename... Arguments>
[[nodiscard]] std::shared_ptr<PipeType> makePipe(Arguments&&... arguments) {
    auto pipe = std::make_shared<PipeType>(std::forward<Arguments>(arguments)...);
    PipeType* const object = pipe.get();
    return {object, [share = std::move(pipe)](PipeType* closed) { closed->close(); }};
}

}  // namespace orvane
