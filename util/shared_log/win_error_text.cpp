#include "util/shared_log/win_error_text.h"

#include <cstring>
#include <cwchar>

#include "platform/handles.h"
#include "util/log/log.h"
#include "util/shared_log/log_diagnostics.h"
#include "util/shared_log/log_format.h"
#include "util/text/text.h"

namespace orvane {

namespace {

// What a failed step is told by: through syslog, or by the log's own diagnostics.
void report(int log, const char* logged, const char* diagnosed, DWORD error) noexcept {
    if (log != 0) {
        syslog(LOG_ERR, logged, static_cast<int>(error));
    } else {
        diagnose(diagnosed, static_cast<int>(error));
    }
}

// The system's text in that language, or none (the last error tells why). LocalAlloc.
UniqueLocalMemory systemText(DWORD code, DWORD language) noexcept {
    constexpr DWORD kFlags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    wchar_t* text = nullptr;
    // With the allocate flag the buffer argument is where the pointer to the new text goes.
    FormatMessageW(kFlags, nullptr, code, language, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    return UniqueLocalMemory(text);
}

}  // namespace

bool win_err_str_intl(DWORD code, WinErrorText& text, int log) noexcept {
    constexpr DWORD kSystemsOwn = 0;
    text.reset();
    UniqueLocalMemory message = systemText(code, MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
    // Asked for a language, the system answers in that one only, and not each has English.
    if (!message) message = systemText(code, kSystemsOwn);
    if (!message) {
        report(log, "win_err_str_intl: FormatMessage failed (%d)",
               "E: win_err_str_intl: FormatMessage failed (%d)\n", GetLastError());
        return false;
    }
    auto* const line = static_cast<wchar_t*>(message.get());
    line[std::wcscspn(line, L"\r")] = L'\0';
    const OwnedText utf8 = utl_wide_to_utf8_nolog(line);
    const OwnedText escaped = utf8 ? escapePercents(utf8.get()) : nullptr;
    const std::size_t size = escaped ? std::strlen(escaped.get()) + 1 : 0;
    auto* const copy = escaped ? static_cast<char*>(LocalAlloc(LPTR, size)) : nullptr;
    if (copy == nullptr) {
        report(log, "win_err_str_intl: error allocating memory in FormatMessage result (%d)",
               "E: win_err_str_intl: error allocating memory in FormatMessage result(%d)\n",
               GetLastError());
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
    report(log, "win_err_str_cleanup: LocalFree failed (%d)",
           "E: win_err_str_cleanup: LocalFree failed (%d)\n", GetLastError());
}

}  // namespace orvane
