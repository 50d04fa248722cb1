#pragma once

#include <juce_core/juce_core.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/handles.h"

namespace orvane {

// One end of a named pipe. One thread reads and writes it; any thread may call shutDown(). All
// users hold it by shared_ptr, and the last one closes the handle.
class PipeStream {
    struct Key {};  // only this class makes one

public:
    // Opens an existing pipe that is free; does not wait for one. The server can identify this
    // process but not impersonate it. Null on failure, with the reason in GetLastError(), and when
    // the pipe's creator is not trusted: `refusal` then has the reason (pipe_trust.h). CreateFileW.
    static std::shared_ptr<PipeStream> openExisting(const juce::String& pipeName,
                                                    const char** refusal);
    // Creates the pipe: one instance, byte type, local clients only. Null on failure, also when
    // another process has created it before. CreateNamedPipeW.
    static std::shared_ptr<PipeStream> create(const juce::String& pipeName);

    // Whether a pipe of this name waits for a client. Waits 1 ms at most. WaitNamedPipeW.
    [[nodiscard]] static bool isOffered(const juce::String& pipeName);

    // Creating end only: waits until a client has opened the pipe or the stream is shut down.
    [[nodiscard]] bool waitForClient();

    // Cancels operations in progress on any thread; all operations fail from then on.
    void shutDown();

    [[nodiscard]] bool isUsable() const { return m_usable; }
    [[nodiscard]] bool isConnected() const { return m_connected; }

    // Whether the other end is still open, for use while no read is pending. A closed end with
    // unread data counts as open. PeekNamedPipe.
    [[nodiscard]] bool hasOtherEnd() const;

    // Signalled by shutDown().
    [[nodiscard]] HANDLE stopped() const { return m_stop.get(); }

    // One overlapped read or write at a time. The destructor cancels it and waits for its end,
    // because the system uses its memory until then. Used and destroyed on one thread.
    class Operation {
    public:
        explicit Operation(PipeStream& stream, bool reads);
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;
        ~Operation() { finish(); }

        // False on failure. The memory must stay valid until finish(). ReadFile, WriteFile.
        bool read(std::span<std::uint8_t> buffer);
        bool write(std::span<const std::uint8_t> bytes);

        [[nodiscard]] bool isStarted() const { return m_started; }
        // Whether the operation is complete. Most are when the call returns, which saves a wait.
        [[nodiscard]] bool isDone() const { return HasOverlappedIoCompleted(&m_overlapped); }
        [[nodiscard]] HANDLE event() const { return m_overlapped.hEvent; }

        // Cancels the operation if it is not complete, and waits until the system has released the
        // memory. True when the operation succeeded, also when it did so before the cancellation;
        // count() is then the number of bytes.
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
