#pragma once

#include <windows.h>

namespace orvane {

// Saves the thread's last error and restores it in the destructor, so that clean-up after a failed
// call, such as closing a handle, does not hide the reason from the caller.
class KeepLastError {
public:
    KeepLastError() noexcept : m_error(GetLastError()) {}
    ~KeepLastError() { SetLastError(m_error); }
    KeepLastError(const KeepLastError&) = delete;
    KeepLastError& operator=(const KeepLastError&) = delete;

    [[nodiscard]] DWORD code() const noexcept { return m_error; }

private:
    const DWORD m_error;
};

}  // namespace orvane
