#pragma once

#include <juce_core/juce_core.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "common/link/write_turn.h"
#include "platform/handles.h"

namespace orvane {

// One end of a named pipe, as a stream of bytes (overlapped ReadFile and WriteFile). One thread
// reads, any thread writes, any thread may shut it down. Held by shared_ptr for as long as a call
// is in it, so the handle is closed by the last one to leave. An operation that is given up is
// cancelled and waited for before its memory goes.
class PipeStream {
    struct Key {};  // only this class makes one

public:
    // Opens a pipe that exists and is free; never waits for one. Whoever made the pipe can identify
    // this process but not act as it. Null on failure, with the reason in GetLastError(), and when
    // the server is not one to link to: `refusal` then says why (pipe_server.h).
    static std::shared_ptr<PipeStream> openExisting(const juce::String& pipeName,
                                                    const char** refusal);
    // Makes the pipe: one instance, byte stream, local clients only, and only when no other process
    // has made it before. Null on failure.
    static std::shared_ptr<PipeStream> create(const juce::String& pipeName);

    enum class ReadStatus { data, timedOut, failed };
    struct ReadResult {
        ReadStatus status;
        std::size_t count;  // bytes; may be 0 also with `data`
    };

    // Made end only: waits until a client has opened the pipe or the stream is shut down.
    [[nodiscard]] bool waitForClient();

    // Waits for the first bytes and takes what is there. Dispatches the calling thread's messages
    // meanwhile. A failure other than a time-out shuts the stream down.
    [[nodiscard]] ReadResult read(std::span<std::uint8_t> buffer, DWORD timeoutMs);

    // All of `bytes` in one write; false when that did not happen within the time, which includes
    // waiting for other writers. A write that failed shuts the stream down: part of it may have
    // been taken, and a reader that has stopped would cost every later writer the whole time again.
    bool write(std::span<const std::uint8_t> bytes, DWORD timeoutMs);

    // Ends what is in progress on any thread, at once; everything fails from then on.
    void shutDown();

    [[nodiscard]] bool isUsable() const { return m_usable; }

    // Asks the system whether the other end is still open (PeekNamedPipe); for the time when no
    // read is there to notice. What has come before its end counts as a sign of life.
    [[nodiscard]] bool hasOtherEnd() const;

    PipeStream(Key, UniqueFile pipe, bool connected);

private:
    class Operation;
    static std::shared_ptr<PipeStream> wrap(UniqueFile pipe, bool connected);

    UniqueFile m_pipe;
    UniqueHandle m_stop;
    UniqueHandle m_readEvent;
    UniqueHandle m_writeEvent;
    WriteTurn m_turn;
    std::atomic<bool> m_usable{true};
    std::atomic<bool> m_connected;  // false only while a made end waits for its client
};

}  // namespace orvane
