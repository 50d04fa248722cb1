#pragma once

#include <windows.h>

namespace orvane {

// Holds a slim lock in a scope (AcquireSRWLockExclusive). An SRWLOCK has no destructor, so a static
// one stays usable until the module is unloaded.
class ExclusiveLock {
public:
    explicit ExclusiveLock(SRWLOCK& lock) noexcept : m_lock(lock) {
        AcquireSRWLockExclusive(&m_lock);
    }
    ~ExclusiveLock() { ReleaseSRWLockExclusive(&m_lock); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;

private:
    SRWLOCK& m_lock;
};

}  // namespace orvane
