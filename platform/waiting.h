#pragma once

#include <windows.h>

#include <span>

namespace orvane {

enum class WaitOutcome { signalled, timedOut, failed };

// Waits for `handle` on a thread that others may be calling into: messages sent by other threads
// and, in a single-threaded apartment, COM calls are served meanwhile, so that whoever signals the
// handle may still need this thread first (CoWaitForMultipleHandles there,
// MsgWaitForMultipleObjectsEx elsewhere), and so are the tasks of the thread's message windows
// (platform/message_window.h). Posted messages stay in the queue, but for those that COM's own wait
// lets through. `timeoutMs` may be INFINITE.
[[nodiscard]] WaitOutcome waitServingCalls(HANDLE handle, DWORD timeoutMs);

// Dispatches every message of the thread meanwhile, as a single-threaded apartment has to when it
// idles; WM_QUIT is handed on to the thread's own message loop afterwards. Which of at most 8
// handles was signalled (the first one that is), WAIT_TIMEOUT or WAIT_FAILED.
[[nodiscard]] DWORD waitDispatchingMessages(std::span<const HANDLE> handles, DWORD timeoutMs);

// The time left of a limit, for several waits in a row.
class Deadline {
public:
    explicit Deadline(DWORD timeoutMs) : m_timeoutMs(timeoutMs), m_start(GetTickCount64()) {}

    // Milliseconds; INFINITE when the limit is.
    [[nodiscard]] DWORD remaining() const {
        if (m_timeoutMs == INFINITE) return INFINITE;
        const ULONGLONG elapsed = GetTickCount64() - m_start;
        return elapsed >= m_timeoutMs ? 0 : m_timeoutMs - static_cast<DWORD>(elapsed);
    }

private:
    DWORD m_timeoutMs;
    ULONGLONG m_start;
};

}  // namespace orvane
