#include "tests/support/captured_log.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <utility>

#ifdef _WIN32
#include "platform/last_error.h"
#endif

namespace orvane::test {
namespace {

std::mutex s_turn;
std::vector<std::string> s_lines;

// The format with the errors' numbers in it.
std::string withNumbers(const char* format, int errnoValue, unsigned long lastError) {
    std::string text;
    for (; *format != '\0'; ++format) {
        if (*format != '%' || format[1] == '\0') {
            text += *format;
        } else if (*++format == 'm') {
            text += "<" + std::to_string(errnoValue) + ">";
        } else if (*format == 'M') {
            text += "<" + std::to_string(lastError) + ">";
        } else {
            text += {'%', *format};
        }
    }
    return text;
}

void capture(int priority, const char* format, va_list args) {
    const int errnoValue = errno;
    unsigned long lastError = 0;
#ifdef _WIN32
    const KeepLastError kept;
    lastError = kept.code();
#endif
    const std::string numbered = withNumbers(format, errnoValue, lastError);
    std::array<char, 16384> text{};
    std::vsnprintf(text.data(), text.size(), numbered.c_str(), args);
    const std::lock_guard turn(s_turn);
    s_lines.push_back("<" + std::to_string(priority) + "> " + text.data());
    errno = errnoValue;
}

}  // namespace

CapturedLog::CapturedLog() : m_oldWriter(setLogWriter(&capture)), m_oldMask(setlogmask(0xFF)) {
    lines();
}

CapturedLog::~CapturedLog() {
    setLogWriter(m_oldWriter);
    setlogmask(m_oldMask);
}

std::vector<std::string> CapturedLog::lines() {
    const std::lock_guard turn(s_turn);
    return std::exchange(s_lines, {});
}

std::string CapturedLog::take() {
    std::string text;
    for (const std::string& line : lines()) text += line + "\n";
    return text;
}

bool CapturedLog::holds(const std::string& line) const {
    const std::lock_guard turn(s_turn);
    return std::find(s_lines.begin(), s_lines.end(), line) != s_lines.end();
}

}  // namespace orvane::test
