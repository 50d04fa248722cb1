#pragma once

#include <windows.h>

#include "util/log/log.h"
#include "util/text/text.h"

namespace orvane {

// Saves GetLastError() right after a Windows call has failed, to log it. The destructor restores it
// for the caller with SetLastError(), because logging may change it. Shared by util/files and
// util/registry; it is here because it converts their wide texts to UTF-8 for the log.
class FailedCall {
public:
    FailedCall() noexcept : m_error(GetLastError()) {}
    // For calls that return their error.
    explicit FailedCall(LSTATUS error) noexcept : m_error(static_cast<DWORD>(error)) {}
    ~FailedCall() { SetLastError(m_error); }
    FailedCall(const FailedCall&) = delete;
    FailedCall& operator=(const FailedCall&) = delete;

    [[nodiscard]] DWORD code() const noexcept { return m_error; }

    // The log priority. A caller for which `error` is no fault passes `expected` (else null), which
    // is set to whether the call failed with `error`; if so, the priority is LOG_INFO.
    [[nodiscard]] int priority(DWORD error, bool* expected) const noexcept {
        if (expected == nullptr) return LOG_ERR;
        *expected = m_error == error;
        return *expected ? LOG_INFO : LOG_ERR;
    }

    // Logs the call unless `log` is 0. The format ends in " failed (%d) -- %M", whose number is
    // added here; wide texts are for a "%s" in it.
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

    // Once all arguments are ready: making them may have set another error.
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
