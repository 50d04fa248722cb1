#include "tests/common/messages/captured_log.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>
#include <utility>

#include "util/log/log.h"

namespace orvane {
namespace {

std::mutex linesLock;
std::vector<std::string> lines;

}  // namespace

bool log_enabled(int) { return true; }

void vsyslog(int priority, const char* format, va_list args) {
    std::array<char, 1024> text{};
    std::vsnprintf(text.data(), text.size(), format, args);
    const std::lock_guard lock(linesLock);
    lines.push_back("<" + std::to_string(priority) + "> " + text.data());
}

void syslog(int priority, const char* format, ...) {
    va_list args;
    va_start(args, format);
    vsyslog(priority, format, args);
    va_end(args);
}

namespace test {

std::vector<std::string> takeLogLines() {
    const std::lock_guard lock(linesLock);
    return std::exchange(lines, {});
}

bool logHolds(const std::string& line) {
    const std::lock_guard lock(linesLock);
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

}  // namespace test
}  // namespace orvane
