#pragma once

#include <windows.h>

#include "util/log/log.h"
#include "util/text/text.h"

namespace orvane {

// A system call that has just failed. Made right after the call, it keeps the call's error for the
// log and for the caller: the thread's last error is that one again when this goes.
class FailedCall {
public:
    FailedCall() noexcept : m_error(GetLastError()) {}
    // For calls that return their error.
    explicit FailedCall(LSTATUS error) noexcept : m_error(static_cast<DWORD>(error)) {}
    ~FailedCall() { SetLastError(m_error); }
    FailedCall(const FailedCall&) = delete;
    FailedCall& operator=(const FailedCall&) = delete;

    [[nodiscard]] DWORD code() const noexcept { return m_error; }

    // The priority for the log: a caller that asks through `expected` (may be null) whether it is
    // this error counts with it, and then it is information only.
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
