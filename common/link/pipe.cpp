#include "common/link/pipe.h"

#include <objbase.h>

#include <algorithm>
#include <new>
#include <optional>

#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "platform/module_thread.h"
#include "platform/waiting.h"
#include "util/log/log.h"

namespace orvane {
namespace {

// The thread runs commands against the player's objects, some of which make windows and timers on
// the thread that calls them; a single-threaded apartment whose messages are dispatched is the kind
// of thread that they expect.
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

Pipe::Pipe(const juce::String& name) : pipeName(name), m_logName(name.toStdString()) {}

void Pipe::connectionMade() {
    syslog(LOG_DEBUG, "Pipe \"%s\": connection made", m_logName.c_str());
}

void Pipe::connectionLost() {
    syslog(LOG_DEBUG, "Pipe \"%s\": connection lost", m_logName.c_str());
}

Pipe::Sending Pipe::trySend(const OrvaneMessage& message) {
    if (!canSend()) return {false, 0};
    auto bytes = frame::begin();
    message.appendPayload(bytes);
    if (!frame::finish(bytes)) return {false, bytes.size() - frame::kHeaderSize};
    return {put(std::move(bytes)), 0};
}

bool Pipe::canSend() const {
    const auto stream = currentStream();
    return stream != nullptr && stream->isUsable() && stream->isConnected() &&
           (!m_closing || onOwnThread());
}

bool Pipe::put(FrameQueue::Frame&& frame) {
    if (!canSend()) return false;
    switch (m_queue.put(std::move(frame))) {
        case FrameQueue::Put::queued:
            return !onOwnThread() || drain();
        case FrameQueue::Put::full:
            syslog(LOG_ERR, "Pipe \"%s\": too much waits to be sent; the connection is broken",
                   m_logName.c_str());
            m_queue.close();
            if (const auto stream = currentStream()) stream->shutDown();
            return false;
        default:
            return false;
    }
}

bool Pipe::isConnected() const {
    const auto stream = currentStream();
    // While a message is handled nobody reads, and the other end may have gone.
    return stream != nullptr && !m_closing && stream->isUsable() && stream->hasOtherEnd();
}

bool Pipe::open(std::shared_ptr<PipeStream> stream, int receiveTimeoutMs) {
    if (stream == nullptr || m_thread || m_closing || !m_queue) return false;

    m_receiveTimeoutMs = receiveTimeoutMs < 0 ? INFINITE : static_cast<DWORD>(receiveTimeoutMs);
    {
        const juce::ScopedLock lock(m_lock);
        m_stream = std::move(stream);
    }
    m_made = true;
    connectionMade();
    try {
        m_thread = startModuleThread([self = shared_from_this()] { self->run(); });
    } catch (const std::bad_alloc&) {
        m_thread.reset();
    }
    if (m_thread) return true;
    close();
    return false;
}

std::shared_ptr<PipeStream> Pipe::currentStream() const {
    const juce::ScopedLock lock(m_lock);
    return m_stream;
}

void Pipe::endStream() {
    std::shared_ptr<PipeStream> stream;
    {
        const juce::ScopedLock lock(m_lock);
        stream.swap(m_stream);
    }
    // The thread leaves the stream by itself; the last one out closes the handle.
    if (stream != nullptr) stream->shutDown();
    m_queue.close();
}

void Pipe::lost() {
    if (!m_made.exchange(false)) return;
    m_lostAt = GetTickCount64();
    connectionLost();
}

void Pipe::close() {
    if (m_closing.exchange(true)) return;
    const Deadline patience(kClosePatienceMs);
    if (!onOwnThread()) {
        // Whoever has asked the player to close is still owed the answer when the player does so at
        // once, and the last event is the goodbye.
        const auto stream = currentStream();
        m_queue.wake();
        if (stream != nullptr && stream->isUsable() && stream->isConnected() &&
            stream->hasOtherEnd())
            static_cast<void>(endsWithin(kAnswerMs));
    }
    endStream();
    if (!onOwnThread() && !endsWithin(patience.remaining())) leaveBehind();
    lost();
}

bool Pipe::abandon() {
    m_closing = true;
    endStream();
    lost();
    if (!m_handling || endsWithin(0)) return true;
    if (GetTickCount64() - m_lostAt < kClosePatienceMs) return false;
    leaveBehind();
    return true;
}

bool Pipe::endsWithin(DWORD timeoutMs) const {
    if (!m_thread || WaitForSingleObject(m_thread.get(), 0) == WAIT_OBJECT_0) return true;
    return timeoutMs > 0 && waitServingCalls(m_thread.get(), timeoutMs) == WaitOutcome::signalled;
}

void Pipe::leaveBehind() const {
    syslog(LOG_ERR, "Pipe \"%s\": a message is still being handled; its thread stays until it ends",
           m_logName.c_str());
}

bool Pipe::prepareReading(PipeStream&) { return true; }

void Pipe::run() {
    m_threadId = GetCurrentThreadId();
    const SingleThreadedApartment apartment;
    try {
        nameThisThread("OrVane " + pipeName);
        readMessages();
    } catch (...) {
        // Out of memory for the next payload: this connection ends, as after a failed read.
    }
    if (m_closing) return;  // whoever closes does the rest
    // The pipe lives as long as either end is open, and there is one of its name: until this one is
    // closed an application that starts anew cannot make it.
    endStream();
    try {
        lost();
    } catch (...) {
        // A subclass's trouble must not end the player.
    }
}

void Pipe::readMessages() {
    if (const auto stream = currentStream(); stream == nullptr || !prepareReading(*stream)) return;

    frame::Reader reader;
    for (Outcome outcome = Outcome::message; outcome != Outcome::ended;) {
        {
            // Not held while a message is handled, so that a closed pipe is really closed then.
            const auto stream = currentStream();
            if (stream == nullptr) return;
            outcome = exchange(*stream, reader);
            if (outcome == Outcome::ended) stream->shutDown();
        }
        if (outcome == Outcome::message || (!m_closing && reader.cut())) deliver(reader.payload());
    }
}

// Reads until a message is whole, and writes meanwhile what is queued.
Pipe::Outcome Pipe::exchange(PipeStream& stream, frame::Reader& reader) {
    FrameQueue::Frame frame;  // outlives its writing
    PipeStream::Operation reading(stream, true);
    PipeStream::Operation writing(stream, false);
    std::optional<Deadline> writeLimit;
    bool direct = false;
    const auto arrived = [&] {
        if (direct) return reader.advance(reading.count());
        m_ahead = std::span(m_buffer).first(reading.count());
        return takeAhead(reader);
    };
    for (bool whole = takeAhead(reader);;) {
        if (!stream.isUsable()) return Outcome::ended;
        if (!writing.isStarted()) {
            if (whole && !m_closing) return Outcome::message;
            if (m_queue.take(frame)) {
                if (!writing.write(frame)) return Outcome::ended;
                writeLimit.emplace(kWriteTimeoutMs);
            } else if (m_closing) {
                return Outcome::ended;
            }
        }
        if (!whole && !m_closing && !reading.isStarted()) {
            // Usually a frame comes with one read; the most of a long one goes where it belongs at
            // once.
            const auto room = reader.room();
            direct = room.size() > m_buffer.size();
            if (!reading.read(direct ? room : std::span(m_buffer))) return Outcome::ended;
        }

        const bool writes = writing.isStarted();
        const bool reads = reading.isStarted();
        bool timedOut = false;
        if (!(reads && reading.isDone()) && !(writes && writing.isDone())) {
            std::array<HANDLE, 4> handles{stream.stopped(), m_queue.event()};
            std::size_t count = 2;
            if (reads) handles[count++] = reading.event();
            if (writes) handles[count++] = writing.event();
            const DWORD waited =
                waitDispatchingMessages(std::span(handles).first(count),
                                        writes ? writeLimit->remaining() : m_receiveTimeoutMs);
            timedOut = waited == WAIT_TIMEOUT;
            if (waited == WAIT_FAILED || (timedOut && writes)) return Outcome::ended;
        }
        if (writes && writing.isDone() && !(writing.finish() && writing.count() == frame.size()))
            return Outcome::ended;
        if (reads && (timedOut || reading.isDone())) {
            if (reading.finish())
                whole = arrived();
            else
                return timedOut ? Outcome::timedOut : Outcome::ended;
        }
    }
}

// Hands on what was read already, up to the end of a message; true when one is whole.
bool Pipe::takeAhead(frame::Reader& reader) {
    while (!m_ahead.empty()) {
        const auto room = reader.room();
        const std::size_t count = std::min(room.size(), m_ahead.size());
        std::copy_n(m_ahead.begin(), count, room.begin());
        m_ahead = m_ahead.subspan(count);
        if (reader.advance(count)) return true;
    }
    return false;
}

// On the own thread, while a message is handled: writes what is queued, and waits for that.
bool Pipe::drain() {
    const auto stream = currentStream();
    FrameQueue::Frame frame;
    while (stream != nullptr && stream->isUsable() && m_queue.take(frame)) {
        PipeStream::Operation writing(*stream, false);
        if (writing.write(frame) && !writing.isDone()) {
            const std::array<HANDLE, 2> handles{stream->stopped(), writing.event()};
            WaitForMultipleObjects(2, handles.data(), FALSE, kWriteTimeoutMs);
        }
        if (!writing.finish() || writing.count() != frame.size()) stream->shutDown();
    }
    return stream != nullptr && stream->isUsable();
}

void Pipe::deliver(std::span<const std::uint8_t> payload) {
    m_handling = true;
    try {
        messageReceived(payload);
    } catch (...) {
        syslog(LOG_ERR, "Pipe \"%s\": a message could not be handled", m_logName.c_str());
    }
    m_handling = false;
}

}  // namespace orvane
