#include "util/shared_log/win_error_text.h"

#include <cstring>

#include "util/log/log.h"
#include "util/shared_log/log_diagnostics.h"
#include "util/shared_log/log_format.h"

namespace orvane {

bool win_err_str_intl(DWORD code, WinErrorText& text, int log) noexcept {
    constexpr DWORD kFlags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    text.reset();
    char* message = nullptr;
    // With the allocate flag the buffer argument is where the pointer to the new text goes.
    const DWORD length =
        FormatMessageA(kFlags, nullptr, code, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US),
                       reinterpret_cast<char*>(&message), 0, nullptr);
    if (length == 0 || message == nullptr) {
        const int error = static_cast<int>(GetLastError());
        if (log != 0) {
            syslog(LOG_ERR, "win_err_str_intl: FormatMessage failed (%d)", error);
        } else {
            diagnose("E: win_err_str_intl: FormatMessage failed (%d)\n", error);
        }
        return false;
    }
    text.reset(message);
    message[std::strcspn(message, "\r")] = '\0';
    if (!hasLonePercent(message)) return true;

    const OwnedText escaped = escapePercents(message);
    const std::size_t size = escaped ? std::strlen(escaped.get()) + 1 : 0;
    auto* const copy = escaped ? static_cast<char*>(LocalAlloc(LPTR, size)) : nullptr;
    if (copy == nullptr) {
        const int error = static_cast<int>(GetLastError());
        if (log != 0) {
            syslog(LOG_ERR, "%s: error allocating memory in FormatMessage result (%d)",
                   "win_err_str_intl", error);
        } else {
            diagnose("E: win_err_str_intl: error allocating memory in FormatMessage result(%d)\n",
                     error);
        }
        text.reset();
        return false;
    }
    std::memcpy(copy, escaped.get(), size);
    text.reset(copy);
    return true;
}

void win_err_str_cleanup(char*& text, int log) noexcept {
    char* const released = text;
    text = nullptr;
    if (released == nullptr || LocalFree(released) == nullptr) return;
    const int error = static_cast<int>(GetLastError());
    if (log != 0) {
        syslog(LOG_ERR, "win_err_str_cleanup: LocalFree failed (%d)", error);
    } else {
        diagnose("E: win_err_str_cleanup: LocalFree failed (%d)\n", error);
    }
}

}  // namespace orvane
