#include "standins/app/pipe_server.h"

#include <array>

#include "standins/support/wide_text.h"

namespace orvane::standin::app {
namespace {

UniqueHandle makeEvent(bool manualReset, bool set) {
    return UniqueHandle(CreateEventW(nullptr, manualReset, set, nullptr));
}

// An overlapped call on a pipe. Given up or not, it has ended before this object is gone: the
// system writes into it until then.
class PipeCall {
public:
    PipeCall(HANDLE pipe, HANDLE done) : m_pipe(pipe) {
        m_overlapped.hEvent = done;
        ResetEvent(done);
    }
    PipeCall(const PipeCall&) = delete;
    PipeCall& operator=(const PipeCall&) = delete;
    ~PipeCall() {
        if (m_pending) cancel();
    }

    OVERLAPPED* overlapped() { return &m_overlapped; }

    // What ReadFile and its like returned. False: it failed at once.
    bool begun(BOOL result) {
        m_error = result ? ERROR_SUCCESS : GetLastError();
        m_pending = result || m_error == ERROR_IO_PENDING;
        return m_pending;
    }

    // The bytes moved, once it is known to have ended; error() tells how.
    DWORD finish() {
        DWORD count = 0;
        m_error = GetOverlappedResult(m_pipe, &m_overlapped, &count, TRUE) ? ERROR_SUCCESS
                                                                           : GetLastError();
        m_pending = false;
        return count;
    }

    // The bytes moved until it could be stopped.
    DWORD cancel() {
        CancelIoEx(m_pipe, &m_overlapped);
        return finish();
    }

    [[nodiscard]] DWORD error() const { return m_error; }

private:
    HANDLE m_pipe;
    OVERLAPPED m_overlapped{};
    DWORD m_error = ERROR_SUCCESS;
    bool m_pending = false;
};

constexpr DWORD kPipeBufferSize = 64;
constexpr DWORD kQuietAfterMs = 1000;

}  // namespace

std::unique_ptr<PipeServer> PipeServer::create(const std::string& name, Listener& listener,
                                               std::string& error) {
    UniqueFile pipe(CreateNamedPipeW(
        toWide("\\\\.\\pipe\\" + name).c_str(),
        PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1,
        kPipeBufferSize, kPipeBufferSize, 0, nullptr));
    if (!pipe) {
        const DWORD code = GetLastError();
        error = "cannot make the pipe " + name + ": error " + systemError(code);
        if (code == ERROR_ACCESS_DENIED || code == ERROR_PIPE_BUSY)
            error += "; another program has made it: end that one first";
        return nullptr;
    }
    return std::unique_ptr<PipeServer>(new PipeServer(listener, std::move(pipe)));
}

PipeServer::PipeServer(Listener& listener, UniqueFile pipe)
    : m_listener(listener),
      m_pipe(std::move(pipe)),
      m_stop(makeEvent(true, false)),
      m_drop(makeEvent(false, false)),
      m_reading(makeEvent(true, true)),
      m_readDone(makeEvent(true, false)),
      m_writeDone(makeEvent(true, false)),
      m_thread([this] { run(); }) {}

PipeServer::~PipeServer() {
    SetEvent(m_stop.get());
    m_thread.join();
}

void PipeServer::run() {
    while (waitForClient()) {
        ResetEvent(m_drop.get());
        m_connected = true;
        m_listener.clientConnected();
        const std::string why = serveClient();
        releaseClient();
        m_listener.clientGone(why);
        if (WaitForSingleObject(m_stop.get(), 0) == WAIT_OBJECT_0) return;
    }
}

bool PipeServer::waitForClient() {
    PipeCall connect(m_pipe.get(), m_readDone.get());
    if (!connect.begun(ConnectNamedPipe(m_pipe.get(), connect.overlapped()))) {
        if (connect.error() == ERROR_PIPE_CONNECTED) return true;
        // A client that came and went before we looked: make room for the next.
        DisconnectNamedPipe(m_pipe.get());
        return WaitForSingleObject(m_stop.get(), 10) == WAIT_TIMEOUT;
    }
    const std::array<HANDLE, 2> events = {m_stop.get(), m_readDone.get()};
    if (WaitForMultipleObjects(events.size(), events.data(), FALSE, INFINITE) == WAIT_OBJECT_0)
        return false;
    connect.finish();
    return true;
}

std::string PipeServer::serveClient() {
    std::string buffer(65'536, '\0');
    for (;;) {
        const std::array<HANDLE, 3> gates = {m_stop.get(), m_drop.get(), m_reading.get()};
        const DWORD gate = WaitForMultipleObjects(gates.size(), gates.data(), FALSE, INFINITE);
        if (gate == WAIT_OBJECT_0) return "this program ends";
        if (gate == WAIT_OBJECT_0 + 1) return "dropped by this program";

        PipeCall read(m_pipe.get(), m_readDone.get());
        if (!read.begun(ReadFile(m_pipe.get(), buffer.data(), static_cast<DWORD>(buffer.size()),
                                 nullptr, read.overlapped())))
            return read.error() == ERROR_BROKEN_PIPE ? "the plug-in closed it"
                                                     : "error " + systemError(read.error());
        const std::array<HANDLE, 3> events = {m_readDone.get(), m_stop.get(), m_drop.get()};
        DWORD event = WAIT_TIMEOUT;
        for (;;) {
            event = WaitForMultipleObjects(events.size(), events.data(), FALSE, kQuietAfterMs);
            if (event != WAIT_TIMEOUT) break;
            m_listener.clientQuiet();
        }
        if (event == WAIT_OBJECT_0 + 1) return "this program ends";
        if (event == WAIT_OBJECT_0 + 2) return "dropped by this program";
        const DWORD count = read.finish();
        if (read.error() == ERROR_BROKEN_PIPE || read.error() == ERROR_PIPE_NOT_CONNECTED)
            return "the plug-in closed it";
        if (read.error() != ERROR_SUCCESS) return "error " + systemError(read.error());
        m_listener.bytesReceived(std::string_view(buffer).substr(0, count));
    }
}

void PipeServer::releaseClient() {
    m_connected = false;
    CancelIoEx(m_pipe.get(), nullptr);  // a write in progress ends, and its lock comes free
    const std::lock_guard lock(m_writing);
    DisconnectNamedPipe(m_pipe.get());
}

std::string PipeServer::write(std::string_view bytes, DWORD limitMs) {
    const std::lock_guard lock(m_writing);
    if (!m_connected) return "nobody is connected";
    PipeCall call(m_pipe.get(), m_writeDone.get());
    if (!call.begun(WriteFile(m_pipe.get(), bytes.data(), static_cast<DWORD>(bytes.size()), nullptr,
                              call.overlapped())))
        return "error " + systemError(call.error());
    const bool inTime = WaitForSingleObject(m_writeDone.get(), limitMs) == WAIT_OBJECT_0;
    const DWORD count = inTime ? call.finish() : call.cancel();
    if (count == bytes.size() && call.error() == ERROR_SUCCESS) return {};
    const std::string taken =
        std::to_string(count) + " of " + std::to_string(bytes.size()) + " bytes were taken";
    if (count > 0 || !inTime) drop();
    if (!inTime)
        return taken + " within " + std::to_string(limitMs) +
               " ms: the plug-in is not reading; the connection is dropped";
    return taken + ", then error " + systemError(call.error());
}

void PipeServer::drop() {
    if (m_connected) SetEvent(m_drop.get());
}

void PipeServer::hold(bool held) {
    if (held)
        ResetEvent(m_reading.get());
    else
        SetEvent(m_reading.get());
}

std::string systemError(DWORD code) {
    UniqueLocalMemory text;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(text.put()), 0, nullptr);
    std::wstring_view words(static_cast<const wchar_t*>(text.get()), length);
    while (!words.empty() &&
           (words.back() == L'\n' || words.back() == L'\r' || words.back() == L' '))
        words.remove_suffix(1);
    return std::to_string(code) + (words.empty() ? "" : " (" + toUtf8(words) + ")");
}

}  // namespace orvane::standin::app
