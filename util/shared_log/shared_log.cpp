#include "util/shared_log/shared_log.h"

#include <windows.h>

#include <process.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "platform/last_error.h"
#include "util/log/log.h"
#include "util/shared_log/log_diagnostics.h"
#include "util/shared_log/log_file.h"
#include "util/shared_log/log_format.h"
#include "util/shared_log/log_lock.h"
#include "util/shared_log/win_error_text.h"
#include "util/text/owned.h"

namespace orvane {
namespace {

constinit std::atomic<bool> s_exiting{false};

// Everything that needs this process's threads to take turns.
struct LogState {
    constexpr LogState() noexcept = default;

    SRWLOCK turn = SRWLOCK_INIT;
    std::atomic<DWORD> writer{0};  // the thread that has its turn
    OwnedText ident;
    LogLock lock;
};

// Never destroyed: destructors that run after the exit list may still log.
union Everlasting {
    constexpr Everlasting() noexcept : state() {}
    ~Everlasting() {}
    LogState state;
};
constinit Everlasting s_log;

// One thread's turn at the state. There is none for a thread that has it already (a helper of the
// log that logs), and none on the way out while another thread holds it: at process exit that
// thread no longer exists, and a wait for it would never end.
class Turn {
public:
    explicit Turn(LogState& state) noexcept : m_state(state) {
        if (state.writer.load(std::memory_order_relaxed) == GetCurrentThreadId()) return;
        m_taken = take();
        if (m_taken) state.writer.store(GetCurrentThreadId(), std::memory_order_relaxed);
    }
    ~Turn() {
        if (!m_taken) return;
        m_state.writer.store(0, std::memory_order_relaxed);
        ReleaseSRWLockExclusive(&m_state.turn);
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    [[nodiscard]] explicit operator bool() const noexcept { return m_taken; }

private:
    [[nodiscard]] bool take() noexcept {
        if (s_exiting) return TryAcquireSRWLockExclusive(&m_state.turn) != 0;
        AcquireSRWLockExclusive(&m_state.turn);
        return true;
    }

    LogState& m_state;
    bool m_taken = false;
};

class KeepErrno {
public:
    KeepErrno() noexcept : m_errno(errno) {}
    ~KeepErrno() { errno = m_errno; }
    KeepErrno(const KeepErrno&) = delete;
    KeepErrno& operator=(const KeepErrno&) = delete;

    [[nodiscard]] int code() const noexcept { return m_errno; }

private:
    const int m_errno;
};

struct TimeText {
    char text[25] = {};
    std::size_t length = 0;
};

bool currentTime(TimeText& time) noexcept {
    const __time64_t now = _time64(nullptr);
    std::tm local{};
    if (_localtime64_s(&local, &now) != 0) {
        diagnose("E: vsyslog: localtime failed (%d)\n", errno);
        return false;
    }
    time.length = std::strftime(time.text, sizeof time.text, "%Y-%m-%d %H:%M:%S", &local);
    return true;
}

// Gives no new format when there is nothing to translate; false when the message must be dropped.
bool translate_err_strings(int savedErrno, DWORD savedError, const char* format,
                           OwnedText& translated) noexcept {
    constexpr const char* self = "translate_err_strings";
    const ErrorDirectives count = countErrorDirectives(format);
    if (count.errnoTexts == 0 && count.windowsTexts == 0) return true;

    OwnedText errnoText;
    if (count.errnoTexts > 0) {
        char text[128] = {};
        strerror_s(text, sizeof text, savedErrno);
        errnoText = escapePercents(text);
        if (!errnoText) {
            diagnose("E: %s: error allocating memory for escaped strerror copy\n", self);
            return false;
        }
    }
    WinErrorText windowsText;
    if (count.windowsTexts > 0 && !win_err_str_intl(savedError, windowsText, 0)) {
        diagnose("E: %s: error allocating win_err_str\n", self);
        return false;
    }
    translated = replaceErrorDirectives(format, count, errnoText ? errnoText.get() : "",
                                        windowsText ? windowsText.get() : "");
    if (!translated) {
        diagnose("E: %s: failed to allocate memory for new format string\n", self);
        return false;
    }
    return true;
}

// On the way out nobody is waited for: the mutex's owner may be a process that does not run on.
bool acquire(LogState& state, const char* who, LogLock::Wait& wait) noexcept {
    if (!state.lock.make()) return false;
    wait = state.lock.acquire(who, s_exiting ? 0 : INFINITE);
    return wait == LogLock::Wait::owned || wait == LogLock::Wait::abandoned;
}

void closeState(LogState& state) noexcept {
    constexpr const char* self = "closelog";
    setLogOptions(0);
    state.ident.reset();
    if (!s_exiting) {
        LogLock::Wait wait;
        if (!acquire(state, self, wait)) return;
        state.lock.release(self);
    }
    state.lock.forget(self);
}

void writeLine(int priority, const char* format, va_list args) {
    constexpr const char* self = "vsyslog";
    const KeepErrno savedErrno;
    const KeepLastError savedError;
    TimeText time;
    if (!currentTime(time)) return;
    OwnedText translated;
    if (!translate_err_strings(savedErrno.code(), savedError.code(), format, translated)) return;

    LogState& state = s_log.state;
    const Turn turn(state);
    if (!turn) return;
    const char severity =
        static_cast<char>('0' + (static_cast<unsigned>(priority) & kSeverityBits));
    char process[16] = "";
    if (logOption(LOG_PID)) std::snprintf(process, sizeof process, "[%d] ", _getpid());
    // Its first character is for the end of a line that an abandoned wait has left behind.
    const OwnedText front = joinTexts({"\n",
                                       time.text,
                                       time.length > 0 ? " : <" : "<",
                                       {&severity, 1},
                                       "> ",
                                       state.ident ? state.ident.get() : "unknown",
                                       " : ",
                                       process});
    LogLock::Wait wait;
    if (!front || !acquire(state, self, wait)) return;
    if (LogFile file; file.do_openlog()) {
        const int skipped = wait == LogLock::Wait::abandoned ? 0 : 1;
        file.log_msg_va(front.get() + skipped, translated ? translated.get() : format, args);
    }
    state.lock.release(self);
    if (s_exiting) closeState(state);
}

// In place before anything logs, in whatever links this.
[[maybe_unused]] const LogWriter kFormerWriter = setLogWriter(&writeLine);

}  // namespace

void openlog(const char* ident, unsigned option, int /*facility*/) {
    setLogOptions(option);
    LogState& state = s_log.state;
    const Turn turn(state);
    if (!turn) return;
    state.ident = ident != nullptr ? duplicateText(ident) : nullptr;
    if (ident != nullptr && !state.ident) {
        std::fputs("E: openlog can't duplicate s_ident\n", stdout);
    }
}

void closelog() {
    LogState& state = s_log.state;
    const Turn turn(state);
    if (turn) closeState(state);
}

void closelog_on_exit() {
    s_exiting = true;
    closelog();
}

}  // namespace orvane
