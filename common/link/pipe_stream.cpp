#include "common/link/pipe_stream.h"

#include <array>
#include <utility>

#include "common/link/pipe_trust.h"
#include "platform/waiting.h"

namespace orvane {
namespace {

constexpr DWORD kBufferSize = 64;  // bytes; the system's advice, larger messages pass all the same

juce::String pathOf(const juce::String& pipeName) { return "\\\\.\\pipe\\" + pipeName; }

UniqueHandle manualResetEvent() {
    return UniqueHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
}

}  // namespace

PipeStream::Operation::Operation(PipeStream& stream, bool reads) : m_pipe(stream.m_pipe.get()) {
    m_overlapped.hEvent = reads ? stream.m_readEvent.get() : stream.m_writeEvent.get();
}

bool PipeStream::Operation::read(std::span<std::uint8_t> buffer) {
    return started(
        ReadFile(m_pipe, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr, &m_overlapped));
}

bool PipeStream::Operation::write(std::span<const std::uint8_t> bytes) {
    return started(
        WriteFile(m_pipe, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, &m_overlapped));
}

bool PipeStream::Operation::started(BOOL answer) {
    m_started = answer || GetLastError() == ERROR_IO_PENDING;
    return m_started;
}

bool PipeStream::Operation::finish() {
    if (!std::exchange(m_started, false)) return false;
    if (!isDone()) CancelIoEx(m_pipe, &m_overlapped);
    return GetOverlappedResult(m_pipe, &m_overlapped, &m_count, TRUE) != FALSE;
}

PipeStream::PipeStream(Key, UniqueFile pipe, bool connected)
    : m_pipe(std::move(pipe)),
      m_stop(manualResetEvent()),
      m_readEvent(manualResetEvent()),
      m_writeEvent(manualResetEvent()),
      m_connected(connected) {}

std::shared_ptr<PipeStream> PipeStream::wrap(UniqueFile pipe, bool connected) {
    if (!pipe) return nullptr;
    auto stream = std::make_shared<PipeStream>(Key{}, std::move(pipe), connected);
    return stream->m_stop && stream->m_readEvent && stream->m_writeEvent ? stream : nullptr;
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

bool PipeStream::isOffered(const juce::String& pipeName) {
    return WaitNamedPipeW(pathOf(pipeName).toWideCharPointer(), 1) != FALSE;
}

bool PipeStream::waitForClient() {
    if (!m_usable) return false;
    Operation connecting(*this, true);
    const BOOL answer = ConnectNamedPipe(m_pipe.get(), &connecting.m_overlapped);
    if (!answer && GetLastError() == ERROR_PIPE_CONNECTED) return m_connected = true;
    if (!connecting.started(answer)) return false;
    const std::array<HANDLE, 2> handles{m_stop.get(), connecting.event()};
    if (waitDispatchingMessages(handles, INFINITE) != WAIT_OBJECT_0 + 1) return false;
    return m_connected = connecting.finish();
}

bool PipeStream::hasOtherEnd() const {
    return !m_connected || PeekNamedPipe(m_pipe.get(), nullptr, 0, nullptr, nullptr, nullptr);
}

void PipeStream::shutDown() {
    m_usable = false;
    SetEvent(m_stop.get());
}

}  // namespace orvane
