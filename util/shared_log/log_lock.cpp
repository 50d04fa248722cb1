#include "util/shared_log/log_lock.h"

#include "util/shared_log/log_diagnostics.h"
#include "util/shared_log/open_security.h"

namespace orvane {
namespace {

bool os_post_nt() noexcept {
    OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof version;
    if (GetVersionExA(&version) == 0) {
        diagnose("E: os_post_nt: failed to read os version with %d\n",
                 static_cast<int>(GetLastError()));
        return true;
    }
    return version.dwMajorVersion > 4;
}

}  // namespace

const char* logMutexName() noexcept { return os_post_nt() ? "Global\\OrVaneLog" : "OrVaneLog"; }

LogLock::~LogLock() {
    if (m_mutex != nullptr) CloseHandle(m_mutex);
}

bool LogLock::make() noexcept {
    if (m_mutex != nullptr) return true;
    const char* const name = logMutexName();
    OpenSecurity security("do_createlocksd");
    if (security.attributes() == nullptr) return false;
    m_mutex = CreateMutexA(security.attributes(), FALSE, name);
    if (m_mutex == nullptr) {
        const int error = static_cast<int>(GetLastError());
        diagnose("E: do_makelock: failed to create mutex %s\n", name);
        diagnose("E: do_makelock: error is %d\n", error);
        return false;
    }
    diagnose("I: do_makelock: mutex %s created\n", name);
    return true;
}

LogLock::Wait LogLock::acquire(const char* who, DWORD milliseconds) noexcept {
    switch (WaitForSingleObject(m_mutex, milliseconds)) {
        case WAIT_OBJECT_0:
            return Wait::owned;
        case WAIT_ABANDONED:
            diagnose("E: %s: failed to obtain mutex with WAIT_ABANDONED\n", who);
            return Wait::abandoned;
        case WAIT_TIMEOUT:
            diagnose("E: %s: failed to obtain mutex with WAIT_TIMEOUT\n", who);
            return Wait::timedOut;
        default:
            diagnose("E: %s: failed to obtain mutex with WAIT_FAILED with %d\n", who,
                     static_cast<int>(GetLastError()));
            return Wait::failed;
    }
}

void LogLock::release(const char* who) noexcept {
    if (ReleaseMutex(m_mutex) != 0) return;
    diagnose("E: %s: failed to release mutex with %d\n", who, static_cast<int>(GetLastError()));
}

void LogLock::forget(const char* who) noexcept {
    if (m_mutex != nullptr && CloseHandle(m_mutex) == 0) {
        diagnose("E: %s: failed to close lock handle with error %d\n", who,
                 static_cast<int>(GetLastError()));
    }
    m_mutex = nullptr;
}

}  // namespace orvane
