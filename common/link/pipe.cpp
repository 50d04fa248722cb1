#include "common/link/pipe.h"

#include <objbase.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "platform/module_thread.h"
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

constexpr std::size_t kReadAhead = 4096;  // bytes

// For debuggers and dumps; Windows knows thread names from Windows 10 on.
void nameThisThread(const juce::String& name) {
    using SetThreadDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    const auto set = reinterpret_cast<SetThreadDescription>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
    if (set != nullptr) set(GetCurrentThread(), name.toWideCharPointer());
}

}  // namespace

Pipe::Pipe(const juce::String& name) : pipeName(name), m_logName(name.toStdString()) {}

Pipe::~Pipe() {
    jassert(m_stream == nullptr);  // a callback into this class alone cannot be answered
    closeForGood();
}

void Pipe::connectionMade() {
    syslog(LOG_DEBUG, "Pipe \"%s\": connection made", m_logName.c_str());
}

void Pipe::connectionLost() {
    syslog(LOG_DEBUG, "Pipe \"%s\": connection lost", m_logName.c_str());
}

Pipe::Sending Pipe::trySend(const OrvaneMessage& message) {
    const auto stream = currentStream();
    if (stream == nullptr || !stream->isUsable()) return {false, 0};
    if (m_closing && GetCurrentThreadId() != m_readerId) return {false, 0};
    auto bytes = frame::begin();
    message.appendPayload(bytes);
    if (!frame::finish(bytes)) return {false, bytes.size() - frame::kHeaderSize};
    return {stream->write(bytes, kWriteTimeoutMs), 0};
}

bool Pipe::isConnected() const {
    const auto stream = currentStream();
    // While a message is handled nobody reads, and the other end may have gone.
    return stream != nullptr && !m_closing && stream->isUsable() && stream->hasOtherEnd();
}

bool Pipe::open(std::shared_ptr<PipeStream> stream, int receiveTimeoutMs) {
    if (stream == nullptr || !readerEnds(0)) return false;

    m_receiveTimeoutMs = receiveTimeoutMs < 0 ? INFINITE : static_cast<DWORD>(receiveTimeoutMs);
    {
        const juce::ScopedLock lock(m_lock);
        m_stream = std::move(stream);
        m_readerAtWork = true;
    }
    m_gaveUp = false;
    m_closing = false;
    m_made = true;
    connectionMade();
    try {
        m_reader = startModuleThread([this, share = weak_from_this().lock()] { run(); });
    } catch (const std::bad_alloc&) {
        m_reader.reset();
    }
    if (m_reader) return true;
    close();
    return false;
}

bool Pipe::letGo() {
    endStream();
    lost();
    return readerEnds(kLetGoMs);
}

void Pipe::endStream() {
    std::shared_ptr<PipeStream> stream;
    {
        const juce::ScopedLock lock(m_lock);
        stream = std::exchange(m_stream, nullptr);
    }
    // The reader leaves the stream by itself; the last one out closes the handle.
    if (stream != nullptr) stream->shutDown();
}

void Pipe::close() {
    const Deadline deadline(kClosePatienceMs);
    m_closing = true;
    letAnswer();
    endStream();
    waitForReader(deadline.remaining());
    lost();
}

// Whoever has asked the player to close is still owed the answer when the player does so at once.
void Pipe::letAnswer() const {
    const auto stream = currentStream();
    if (stream == nullptr || !m_handling || onReader()) return;
    if (stream->isUsable() && stream->hasOtherEnd()) static_cast<void>(readerEnds(kAnswerMs));
}

void Pipe::closeForGood() {
    close();
    if (onReader() || readerEnds(0) || leaveReaderBehind()) return;
    // It uses what the closing thread is about to free.
    static_cast<void>(readerEnds(INFINITE));
}

// Also true on the thread that comes after one that has ended, by chance with the same id: there is
// nothing to wait for either then.
bool Pipe::onReader() const { return m_reader && GetCurrentThreadId() == m_readerId; }

bool Pipe::readerEnds(DWORD timeoutMs) const {
    return !m_reader || waitServingCalls(m_reader.get(), timeoutMs) == WaitOutcome::signalled;
}

void Pipe::waitForReader(DWORD timeoutMs) {
    if (m_gaveUp || onReader() || readerEnds(timeoutMs)) return;
    m_gaveUp = true;
    syslog(LOG_ERR, "Pipe \"%s\": a message is still being handled; its thread stays until it ends",
           m_logName.c_str());
}

bool Pipe::leaveReaderBehind() {
    // Nobody else keeps an object that its reader has no share in.
    if (weak_from_this().expired()) return false;
    std::shared_ptr<void> kept = keepForReader();
    if (kept == nullptr) return false;
    const juce::ScopedLock lock(m_lock);
    if (m_readerAtWork) m_kept.swap(kept);
    return true;
}

void Pipe::lost() {
    if (m_made.exchange(false)) connectionLost();
}

std::shared_ptr<PipeStream> Pipe::currentStream() const {
    const juce::ScopedLock lock(m_lock);
    return m_stream;
}

bool Pipe::prepareReading(PipeStream&) { return true; }

void Pipe::run() {
    m_readerId = GetCurrentThreadId();
    const SingleThreadedApartment apartment;
    try {
        nameThisThread("OrVane " + pipeName);
        readFrames();
    } catch (...) {
        // Out of memory for the next payload: this connection ends, as after a failed read.
    }
    std::shared_ptr<PipeStream> stream;
    if (!m_closing) {
        const juce::ScopedLock lock(m_lock);
        stream.swap(m_stream);
    }
    if (stream != nullptr) {
        stream->shutDown();
        // The pipe lives as long as either end is open, and there is one of its name: until this
        // one is closed an application that starts anew cannot make it.
        stream.reset();
        try {
            lost();
        } catch (...) {
            // A subclass's trouble must not end the player.
        }
    }
    std::shared_ptr<void> kept;
    {
        const juce::ScopedLock lock(m_lock);
        m_readerAtWork = false;
        kept.swap(m_kept);
    }
}

void Pipe::readFrames() {
    if (const auto stream = currentStream(); stream == nullptr || !prepareReading(*stream)) return;

    frame::Reader reader;
    std::array<std::uint8_t, kReadAhead> ahead{};
    for (;;) {
        PipeStream::ReadResult result{PipeStream::ReadStatus::failed, 0};
        // Usually a frame comes with one read; the most of a long one goes where it belongs at
        // once.
        const auto room = reader.room();
        const bool direct = room.size() > ahead.size();
        // Held for one read only, so that a closed pipe is really closed while a message is still
        // being handled.
        if (const auto stream = currentStream())
            result = stream->read(direct ? room : std::span(ahead), m_receiveTimeoutMs);
        else
            return;

        if (result.status != PipeStream::ReadStatus::data) {
            if (currentStream() != nullptr && reader.cut()) deliver(reader.payload());
        } else if (direct) {
            if (reader.advance(result.count)) deliver(reader.payload());
        } else {
            take(reader, std::span(ahead).first(result.count));
        }
        if (m_closing || result.status == PipeStream::ReadStatus::failed) return;
    }
}

void Pipe::take(frame::Reader& reader, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto room = reader.room();
        const std::size_t count = std::min(room.size(), bytes.size());
        std::copy_n(bytes.begin(), count, room.begin());
        bytes = bytes.subspan(count);
        if (!reader.advance(count)) continue;
        deliver(reader.payload());
        // Closed while the message was handled: what came after it is not for us any more.
        if (m_closing || currentStream() == nullptr) return;
    }
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
