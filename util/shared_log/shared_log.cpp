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

constexpr DWORD kWaitTime = INFINITE;

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
// thread no longer exists, and waiting for it would never end.
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
        constexpr int kAttempts = 20;
        if (!s_exiting.load()) {
            AcquireSRWLockExclusive(&m_state.turn);
            return true;
        }
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            if (TryAcquireSRWLockExclusive(&m_state.turn) != 0) return true;
            Sleep(1);
        }
        return false;
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

void closeState(LogState& state) noexcept {
    constexpr const char* self = "closelog";
    setLogOptions(0);
    state.ident.reset();
    if (!state.lock.make()) return;
    const LogLock::Wait wait = state.lock.acquire(self, kWaitTime);
    if (wait == LogLock::Wait::timedOut || wait == LogLock::Wait::failed) return;
    state.lock.release(self);
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
    if (!turn || !state.lock.make()) return;
    const LogLock::Wait wait = state.lock.acquire(self, kWaitTime);
    if (wait == LogLock::Wait::timedOut || wait == LogLock::Wait::failed) return;

    LogFile file;
    if (!file.do_openlog()) {
        state.lock.release(self);
        return;
    }
    if (wait == LogLock::Wait::abandoned) file.append("\n");
    if (time.length > 0) file.append("%s : ", time.text);
    file.append("<%d> ", static_cast<int>(static_cast<unsigned>(priority) & kSeverityBits));
    file.append("%s : ", state.ident ? state.ident.get() : "unknown");
    if (logOption(LOG_PID)) file.append("[%d] ", _getpid());
    file.log_msg_va(translated ? translated.get() : format, args);
    file.append("\n");
    file.do_closelog();
    state.lock.release(self);
    if (s_exiting.load()) closeState(state);
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
    s_exiting.store(true);
    closelog();
}

}  // namespace orvane
