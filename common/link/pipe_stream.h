#pragma once

#include <juce_core/juce_core.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/handles.h"

namespace orvane {

// One end of a named pipe. One thread reads and writes it; any thread may shut it down. Held by
// shared_ptr for as long as it is used, so the last user closes the handle.
class PipeStream {
    struct Key {};  // only this class makes one

public:
    // Opens a pipe that exists and is free; never waits for one. The server can identify this
    // process but cannot act as it. Null on failure, with the reason in GetLastError(), and when
    // the server is not trusted: `refusal` then says why (pipe_trust.h). CreateFileW.
    static std::shared_ptr<PipeStream> openExisting(const juce::String& pipeName,
                                                    const char** refusal);
    // Makes the pipe: one instance, byte stream, local clients only, and only when no other process
    // has made it before. Null on failure. CreateNamedPipeW.
    static std::shared_ptr<PipeStream> create(const juce::String& pipeName);

    // Whether such a pipe waits for a client now. Waits 1 ms at most. WaitNamedPipeW.
    [[nodiscard]] static bool isOffered(const juce::String& pipeName);

    // Made end only: waits until a client has opened the pipe or the stream is shut down.
    [[nodiscard]] bool waitForClient();

    // Ends what is in progress on any thread, at once; everything fails from then on.
    void shutDown();

    [[nodiscard]] bool isUsable() const { return m_usable; }
    [[nodiscard]] bool isConnected() const { return m_connected; }

    // Asks the system whether the other end is still open (PeekNamedPipe), for the time when no
    // read is there to notice. Unread data of an end that has closed counts as open.
    [[nodiscard]] bool hasOtherEnd() const;

    // Signalled by shutDown().
    [[nodiscard]] HANDLE stopped() const { return m_stop.get(); }

    // One overlapped read or write at a time, cancelled and waited for by the destructor: the
    // system writes into its memory until then. Used and destroyed on one thread.
    class Operation {
    public:
        explicit Operation(PipeStream& stream, bool reads);
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;
        ~Operation() { finish(); }

        // False when the system refuses. The memory stays where it is until finish(). ReadFile,
        // WriteFile.
        bool read(std::span<std::uint8_t> buffer);
        bool write(std::span<const std::uint8_t> bytes);

        [[nodiscard]] bool isStarted() const { return m_started; }
        // Whether it is complete, as most are when the call returns: a wait costs another call.
        [[nodiscard]] bool isDone() const { return HasOverlappedIoCompleted(&m_overlapped); }
        [[nodiscard]] HANDLE event() const { return m_overlapped.hEvent; }

        // Cancels what is not done and waits until the system has let go of the memory. True when
        // the operation succeeded, be it at the last moment; count() bytes were moved then.
        bool finish();
        [[nodiscard]] DWORD count() const { return m_count; }

    private:
        friend class PipeStream;
        bool started(BOOL answer);

        HANDLE m_pipe;
        OVERLAPPED m_overlapped{};
        DWORD m_count = 0;
        bool m_started = false;
    };

    PipeStream(Key, UniqueFile pipe, bool connected);

private:
    static std::shared_ptr<PipeStream> wrap(UniqueFile pipe, bool connected);

    UniqueFile m_pipe;
    UniqueHandle m_stop;
    UniqueHandle m_readEvent;
    UniqueHandle m_writeEvent;
    std::atomic<bool> m_usable{true};
    std::atomic<bool> m_connected;  // false only while a made end waits for its client
};

}  // namespace orvane
