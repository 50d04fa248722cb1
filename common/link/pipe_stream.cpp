#include "common/link/pipe_stream.h"

#include <array>
#include <utility>

#include "common/link/pipe_server.h"
#include "platform/waiting.h"

namespace orvane {
namespace {

constexpr DWORD kBufferSize = 64;  // bytes; the system's advice, larger messages pass all the same

juce::String pathOf(const juce::String& pipeName) { return "\\\\.\\pipe\\" + pipeName; }

UniqueHandle manualResetEvent() {
    return UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

class TakenTurn {
public:
    explicit TakenTurn(WriteTurn& turn) : m_turn(turn) {}
    TakenTurn(const TakenTurn&) = delete;
    TakenTurn& operator=(const TakenTurn&) = delete;
    ~TakenTurn() { m_turn.giveBack(); }

private:
    WriteTurn& m_turn;
};

}  // namespace

// One overlapped operation in progress. It lives on the stack, so however it is left, the system
// is done with it and with the buffer by then.
class PipeStream::Operation {
public:
    Operation(HANDLE pipe, HANDLE event) : m_pipe(pipe) { m_overlapped.hEvent = event; }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation() { finish(); }

    OVERLAPPED* get() { return &m_overlapped; }
    [[nodiscard]] HANDLE event() const { return m_overlapped.hEvent; }

    // Takes the call's own answer; false when the system has refused the operation.
    bool started(BOOL answer) {
        m_started = answer || GetLastError() == ERROR_IO_PENDING;
        return m_started;
    }

    // Whether it is complete, as most are when the call returns: a wait would cost another call.
    [[nodiscard]] bool isDone() const { return HasOverlappedIoCompleted(&m_overlapped); }

    // Cancels what is not done yet and waits until the system has let go. True when the operation
    // succeeded, be it at the last moment.
    bool finish() {
        if (!m_started) return m_succeeded;
        m_started = false;
        if (!isDone()) CancelIoEx(m_pipe, &m_overlapped);
        m_succeeded = GetOverlappedResult(m_pipe, &m_overlapped, &m_count, TRUE);
        return m_succeeded;
    }

    [[nodiscard]] DWORD count() const { return m_count; }

private:
    HANDLE m_pipe;
    OVERLAPPED m_overlapped{};
    DWORD m_count = 0;
    bool m_started = false;
    bool m_succeeded = false;
};

PipeStream::PipeStream(Key, UniqueFile pipe, bool connected)
    : m_pipe(std::move(pipe)),
      m_stop(manualResetEvent()),
      m_readEvent(manualResetEvent()),
      m_writeEvent(manualResetEvent()),
      m_connected(connected) {}

std::shared_ptr<PipeStream> PipeStream::wrap(UniqueFile pipe, bool connected) {
    if (!pipe) return nullptr;
    auto stream = std::make_shared<PipeStream>(Key{}, std::move(pipe), connected);
    const bool whole =
        stream->m_stop && stream->m_readEvent && stream->m_writeEvent && stream->m_turn.isWhole();
    return whole ? stream : nullptr;
}

std::shared_ptr<PipeStream> PipeStream::openExisting(const juce::String& pipeName,
                                                     const char** refusal) {
    // Any program can make a pipe of this name. It may learn who we are, and no more.
    constexpr DWORD flags = FILE_FLAG_OVERLAPPED | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
    UniqueFile pipe(CreateFileW(pathOf(pipeName).toWideCharPointer(), GENERIC_READ | GENERIC_WRITE,
                                0, nullptr, OPEN_EXISTING, flags, nullptr));
    *refusal = pipe ? whyNotTrusted(pipe.get()) : nullptr;
    if (*refusal != nullptr) return nullptr;
    return wrap(std::move(pipe), true);
}

std::shared_ptr<PipeStream> PipeStream::create(const juce::String& pipeName) {
    constexpr DWORD openMode =
        PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE;
    constexpr DWORD pipeMode =
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS;
    return wrap(UniqueFile(CreateNamedPipeW(pathOf(pipeName).toWideCharPointer(), openMode,
                                            pipeMode, 1, kBufferSize, kBufferSize, 0, nullptr)),
                false);
}

bool PipeStream::waitForClient() {
    if (!m_usable) return false;
    Operation connecting(m_pipe.get(), m_readEvent.get());
    const BOOL answer = ConnectNamedPipe(m_pipe.get(), connecting.get());
    if (!answer && GetLastError() == ERROR_PIPE_CONNECTED) return m_connected = true;
    if (!connecting.started(answer)) return false;
    const std::array<HANDLE, 2> handles{m_stop.get(), connecting.event()};
    if (waitDispatchingMessages(handles, INFINITE) != WAIT_OBJECT_0 + 1) return false;
    return m_connected = connecting.finish();
}

PipeStream::ReadResult PipeStream::read(std::span<std::uint8_t> buffer, DWORD timeoutMs) {
    if (!m_usable) return {ReadStatus::failed, 0};
    Operation reading(m_pipe.get(), m_readEvent.get());
    const BOOL answer = ReadFile(m_pipe.get(), buffer.data(), static_cast<DWORD>(buffer.size()),
                                 nullptr, reading.get());
    if (reading.started(answer)) {
        const std::array<HANDLE, 2> handles{m_stop.get(), reading.event()};
        const DWORD waited =
            reading.isDone() ? WAIT_OBJECT_0 + 1 : waitDispatchingMessages(handles, timeoutMs);
        const bool done = reading.finish();
        if (waited != WAIT_OBJECT_0 && m_usable) {
            if (done) return {ReadStatus::data, reading.count()};
            if (waited == WAIT_TIMEOUT) return {ReadStatus::timedOut, 0};
        }
    }
    shutDown();
    return {ReadStatus::failed, 0};
}

bool PipeStream::write(std::span<const std::uint8_t> bytes, DWORD timeoutMs) {
    if (!m_usable || !m_connected) return false;
    const Deadline deadline(timeoutMs);
    if (!m_turn.take(deadline, m_stop.get())) return false;
    const TakenTurn turn(m_turn);
    if (!m_usable) return false;

    Operation writing(m_pipe.get(), m_writeEvent.get());
    const BOOL answer = WriteFile(m_pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                                  nullptr, writing.get());
    if (writing.started(answer)) {
        if (!writing.isDone()) {
            const std::array<HANDLE, 2> handles{m_stop.get(), writing.event()};
            WaitForMultipleObjects(2, handles.data(), FALSE, deadline.remaining());
        }
        if (writing.finish() && writing.count() == bytes.size()) return true;
    }
    shutDown();
    return false;
}

bool PipeStream::hasOtherEnd() const {
    return !m_connected || PeekNamedPipe(m_pipe.get(), nullptr, 0, nullptr, nullptr, nullptr);
}

void PipeStream::shutDown() {
    m_usable = false;
    SetEvent(m_stop.get());
}

}  // namespace orvane
