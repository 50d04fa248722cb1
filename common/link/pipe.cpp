#include "common/link/pipe.h"

#include <objbase.h>

#include <utility>

#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "platform/waiting.h"
#include "util/log/log.h"

namespace orvane {
namespace {

// The reader thread runs commands against the player's objects, some of which make windows and
// timers on the thread that calls them; a single-threaded apartment whose messages are dispatched
// is the kind of thread that they expect.
class SingleThreadedApartment {
public:
    SingleThreadedApartment() : m_result(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    SingleThreadedApartment(const SingleThreadedApartment&) = delete;
    SingleThreadedApartment& operator=(const SingleThreadedApartment&) = delete;
    ~SingleThreadedApartment() {
        if (SUCCEEDED(m_result)) CoUninitialize();
    }

private:
    HRESULT m_result;
};

// For debuggers and dumps; Windows knows thread names from Windows 10 on.
void nameThisThread(const juce::String& name) {
    using SetThreadDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    const auto set = reinterpret_cast<SetThreadDescription>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (set != nullptr) set(GetCurrentThread(), name.toWideCharPointer());
}

}  // namespace

Pipe::Pipe(const juce::String& name) : juce::Thread("OrVane " + name), pipeName(name) {}

Pipe::~Pipe() {
    jassert(m_stream == nullptr);  // a callback into this class alone cannot be answered
    close();
}

void Pipe::connectionMade() {
    if (log_enabled(LOG_DEBUG))
        syslog(LOG_DEBUG, "Pipe \"%s\": connection made", pipeName.toRawUTF8());
}

void Pipe::connectionLost() {
    if (log_enabled(LOG_DEBUG))
        syslog(LOG_DEBUG, "Pipe \"%s\": connection lost", pipeName.toRawUTF8());
}

bool Pipe::send(const OrvaneMessage& message) {
    const auto stream = currentStream();
    if (stream == nullptr || !stream->isUsable()) return false;
    auto bytes = frame::begin();
    message.appendPayload(bytes);
    return frame::finish(bytes) && stream->write(bytes, kWriteTimeoutMs);
}

bool Pipe::isConnected() const {
    const auto stream = currentStream();
    // While a message is handled nobody reads, and the other end may have gone.
    return stream != nullptr && stream->isUsable() && stream->hasOtherEnd();
}

bool Pipe::open(std::shared_ptr<PipeStream> stream, int receiveTimeoutMs) {
    if (stream == nullptr || juce::Thread::getCurrentThreadId() == getThreadId()) return false;
    if (!m_readerDone) m_readerDone.reset(CreateEventW(nullptr, TRUE, TRUE, nullptr));
    if (!m_readerDone) return false;

    m_receiveTimeoutMs = receiveTimeoutMs < 0 ? INFINITE : static_cast<DWORD>(receiveTimeoutMs);
    {
        const juce::ScopedLock lock(m_streamLock);
        m_stream = std::move(stream);
    }
    m_made = true;
    connectionMade();
    ResetEvent(m_readerDone.get());
    if (startThread()) return true;
    SetEvent(m_readerDone.get());
    close();
    return false;
}

bool Pipe::letGo() {
    endStream();
    lost();
    return !m_readerDone ||
           waitServingCalls(m_readerDone.get(), kLetGoMs) == WaitOutcome::signalled;
}

void Pipe::endStream() {
    std::shared_ptr<PipeStream> stream;
    {
        const juce::ScopedLock lock(m_streamLock);
        stream = std::exchange(m_stream, nullptr);
    }
    // The reader leaves the stream by itself; the last one out closes the handle.
    if (stream != nullptr) stream->shutDown();
}

void Pipe::close() {
    endStream();
    if (m_readerDone && juce::Thread::getCurrentThreadId() != getThreadId()) waitForReader();
    lost();
}

void Pipe::waitForReader() {
    // The thread uses what the closing thread is about to free, so there is no giving up here; how
    // long it can take is bounded by the command that runs.
    if (waitServingCalls(m_readerDone.get(), kClosePatienceMs) == WaitOutcome::timedOut) {
        syslog(LOG_ERR, "Pipe \"%s\": still waiting for a message to be handled",
               pipeName.toRawUTF8());
        // It may need what only this thread's own message loop does. Better a loop within a call
        // than a window that never answers again.
        const HANDLE done = m_readerDone.get();
        while (isThreadRunning() &&
               waitDispatchingMessages({&done, 1}, kClosePatienceMs) == WAIT_TIMEOUT) {
        }
    }
    // From here it is a few instructions until the thread has left this object.
    waitForThreadToExit(-1);
}

void Pipe::lost() {
    if (m_made.exchange(false)) connectionLost();
}

std::shared_ptr<PipeStream> Pipe::currentStream() const {
    const juce::ScopedLock lock(m_streamLock);
    return m_stream;
}

bool Pipe::prepareReading(PipeStream&) { return true; }

void Pipe::run() {
    {
        const SingleThreadedApartment apartment;
        try {
            nameThisThread(getThreadName());
            readFrames();
        } catch (...) {
            // Out of memory for the next payload: this connection ends, as after a failed read.
        }
        std::shared_ptr<PipeStream> stream;
        {
            const juce::ScopedLock lock(m_streamLock);
            stream.swap(m_stream);
        }
        if (stream != nullptr) {
            stream->shutDown();
            // The pipe lives as long as either end is open, and there is one of its name: until
            // this one is closed an application that starts anew cannot make it.
            stream.reset();
            try {
                lost();
            } catch (...) {
                // A subclass's trouble must not end the player.
            }
        }
    }
    SetEvent(m_readerDone.get());
}

void Pipe::readFrames() {
    if (const auto stream = currentStream(); stream == nullptr || !prepareReading(*stream)) return;

    frame::Reader reader;
    for (;;) {
        PipeStream::ReadResult result{PipeStream::ReadStatus::failed, 0};
        // Held for one read only, so that a closed pipe is really closed while a message is still
        // being handled.
        if (const auto stream = currentStream())
            result = stream->read(reader.room(), m_receiveTimeoutMs);
        else
            return;

        bool whole = false;
        if (result.status == PipeStream::ReadStatus::data)
            whole = reader.advance(result.count);
        else
            whole = currentStream() != nullptr && reader.cut();
        if (whole) deliver(reader.payload());
        if (result.status == PipeStream::ReadStatus::failed) return;
    }
}

void Pipe::deliver(std::span<const std::uint8_t> payload) {
    try {
        messageReceived(payload);
    } catch (...) {
        syslog(LOG_ERR, "Pipe \"%s\": a message could not be handled", pipeName.toRawUTF8());
    }
}

}  // namespace orvane
