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

// A message connection over a named pipe, for one use: initConnection() opens it, its own thread
// reads and writes it, and after it is closed the next connection is a new object. The thread is a
// single-threaded COM apartment that dispatches its messages while it waits.
//
// The thread shares ownership of the object until it ends. So create objects with makePipe(); the
// owner may release one at any time, and the last release closes the connection.
//
// The owner opens and closes it, one call at a time. Any thread may call send() and isConnected().
class Pipe : public std::enable_shared_from_this<Pipe> {
public:
    explicit Pipe(const juce::String& pipeName);
    virtual ~Pipe() = default;
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    // The defaults log. connectionLost() is called once for each connection made: on the
    // connection's thread after a failed read or write, otherwise on the thread that closes it.
    virtual void connectionMade();
    virtual void connectionLost();
    // Called on the connection's thread, which reads no further message until it returns. An
    // exception is dropped.
    virtual void messageReceived(std::span<const std::uint8_t> payload) = 0;
    virtual bool initConnection() = 0;
    virtual void terminate() = 0;

    struct Sending {
        bool sent;
        std::size_t oversize;  // bytes of a payload that is too long for a frame; otherwise 0
    };
    // Queues the message as one frame for the connection's thread; `sent` tells whether it was
    // queued. On the connection's own thread the call writes the frame, and `sent` tells whether it
    // was written. A write that takes longer than kWriteTimeoutMs, or a frame that would exceed
    // FrameQueue::kLimit, breaks the connection with a line in the log and empties the queue.
    Sending trySend(const OrvaneMessage& message);
    bool send(const OrvaneMessage& message) { return trySend(message).sent; }

    // send() for bytes that are already a frame. They are not checked.
    bool put(FrameQueue::Frame&& frame);

    [[nodiscard]] bool isConnected() const;

    // Whether this object was opened or closed before and cannot be opened again.
    [[nodiscard]] bool isUsedUp() const { return m_thread || m_closing; }

    // Closes the connection. Waits up to kAnswerMs for the queued frames and the response to the
    // running message, and up to kClosePatienceMs in all for the thread to end. Serves calls into
    // the waiting thread meanwhile; posted messages stay in its queue. A thread that does not end
    // in time keeps running and shares this object. Does not wait on the connection's own thread,
    // or when the connection was closed or abandoned before.
    void close();

    // Closes without waiting. False while the thread still handles a message, for up to
    // kClosePatienceMs after the connection was lost; then true, and the thread keeps running by
    // itself.
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
    // The name for the log. Converted once: juce::String::toUTF8() is not thread-safe.
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
