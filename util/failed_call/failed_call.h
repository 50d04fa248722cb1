#pragma once

#include <windows.h>

#include "util/log/log.h"
#include "util/text/text.h"

namespace orvane {

// Logs a failed Windows call. Construct it right after the call: it saves GetLastError(). The
// destructor restores that error with SetLastError(), because logging may change it.
class FailedCall {
public:
    FailedCall() noexcept : m_error(GetLastError()) {}
    // For calls that return their error.
    explicit FailedCall(LSTATUS error) noexcept : m_error(static_cast<DWORD>(error)) {}
    ~FailedCall() { SetLastError(m_error); }
    FailedCall(const FailedCall&) = delete;
    FailedCall& operator=(const FailedCall&) = delete;

    [[nodiscard]] DWORD code() const noexcept { return m_error; }

    // The log priority: LOG_ERR, or LOG_INFO for a failure that the caller expects. A caller that
    // expects `error` passes `expected` (else null), which is set to whether the call failed so.
    [[nodiscard]] int priority(DWORD error, bool* expected) const noexcept {
        if (expected == nullptr) return LOG_ERR;
        *expected = m_error == error;
        return *expected ? LOG_INFO : LOG_ERR;
    }

    // Logs the call unless `log` is 0. `format` ends in " failed (%d) -- %M"; the number is added
    // here. Wide arguments are converted to UTF-8 and belong to a "%s".
    template <typename... Arguments>
    void log(int log, int priority, const char* format, Arguments... arguments) const noexcept {
        if (log == 0 || !log_enabled(priority)) return;
        write(priority, format, Printable<Arguments>(arguments, log).str()...);
    }

private:
    template <typename Argument>
    struct Printable {
        Printable(Argument argument, int /*log*/) noexcept : value(argument) {}
        [[nodiscard]] Argument str() const noexcept { return value; }
        Argument value;
    };

    // Called when all arguments are ready, because converting them may set another error.
    template <typename... Arguments>
    void write(int priority, const char* format, Arguments... arguments) const noexcept {
        SetLastError(m_error);
        syslog(priority, format, arguments..., static_cast<int>(m_error));
    }

    const DWORD m_error;
};

template <>
struct FailedCall::Printable<const wchar_t*> : UtlUTF8Str {
    using UtlUTF8Str::UtlUTF8Str;
};
template <>
struct FailedCall::Printable<wchar_t*> : UtlUTF8Str {
    using UtlUTF8Str::UtlUTF8Str;
};

}  // namespace orvane
