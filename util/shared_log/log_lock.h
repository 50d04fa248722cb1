#pragma once

#include <windows.h>

namespace orvane {

// The lock that the log's writers in all processes and sessions share: a named mutex that everyone
// may open. The handle exists from the first `make` to `forget`. Used under the log's own lock.
class LogLock {
public:
    enum class Wait { owned, abandoned, timedOut, failed };

    constexpr LogLock() noexcept = default;
    ~LogLock();
    LogLock(const LogLock&) = delete;
    LogLock& operator=(const LogLock&) = delete;

    // Creates or opens the mutex unless that is done already.
    [[nodiscard]] bool make() noexcept;

    // Waits for the mutex: `who` names the caller in messages. `abandoned` owns it, too: its last
    // owner died, and what it was writing may be cut short.
    [[nodiscard]] Wait acquire(const char* who, DWORD milliseconds) noexcept;
    void release(const char* who) noexcept;

    void forget(const char* who) noexcept;

private:
    HANDLE m_mutex = nullptr;
};

// "Global\OrVaneLog", one for all sessions, where the system knows sessions.
[[nodiscard]] const char* logMutexName() noexcept;

}  // namespace orvane
