#pragma once

#include <windows.h>

namespace orvane {

// The named mutex that all processes and sessions use to write the log one line at a time; every
// user may open it. The handle exists from the first make() to forget(). Not thread-safe: the log's
// in-process lock guards it. CreateMutexW.
class LogLock {
public:
    enum class Wait { owned, abandoned, timedOut, failed };

    constexpr LogLock() noexcept = default;
    ~LogLock();
    LogLock(const LogLock&) = delete;
    LogLock& operator=(const LogLock&) = delete;

    // Creates or opens the mutex, once; later calls return true.
    [[nodiscard]] bool make() noexcept;

    // Waits for the mutex; `who` names the caller in diagnostics. `abandoned` means that the caller
    // owns it and that the last owner ended without releasing it, perhaps in the middle of a line.
    [[nodiscard]] Wait acquire(const char* who, DWORD milliseconds) noexcept;
    void release(const char* who) noexcept;

    void forget(const char* who) noexcept;

private:
    HANDLE m_mutex = nullptr;
};

// "Global\OrVaneLog" on systems that have sessions: one mutex for all of them.
[[nodiscard]] const char* logMutexName() noexcept;

}  // namespace orvane
