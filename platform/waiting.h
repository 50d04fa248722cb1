#pragma once

#include <windows.h>

#include <span>

namespace orvane {

enum class WaitOutcome { signalled, timedOut, failed };

// Waits for `handle` and serves meanwhile messages sent by other threads, the tasks of this
// thread's message windows (platform/message_window.h) and, in a single-threaded apartment, COM
// calls. This avoids a deadlock when the thread that signals the handle needs this one first.
// Posted messages stay in the queue, except those that COM's own wait dispatches. `timeoutMs` may
// be INFINITE. CoWaitForMultipleHandles in an apartment, else MsgWaitForMultipleObjectsEx.
[[nodiscard]] WaitOutcome waitServingCalls(HANDLE handle, DWORD timeoutMs);

// Waits for one of at most 8 handles and dispatches all messages of the thread meanwhile, as an
// idle single-threaded apartment has to. Posts WM_QUIT again for the thread's own message loop.
// Returns the index of the first signalled handle, WAIT_TIMEOUT or WAIT_FAILED.
[[nodiscard]] DWORD waitDispatchingMessages(std::span<const HANDLE> handles, DWORD timeoutMs);

// The remaining time of a time-out that several waits share.
class Deadline {
public:
    explicit Deadline(DWORD timeoutMs) : m_timeoutMs(timeoutMs), m_start(GetTickCount64()) {}

    // Milliseconds; INFINITE for an infinite time-out.
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
