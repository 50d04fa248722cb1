#include "util/log/log.h"

#include <atomic>

namespace orvane {
namespace {

constinit std::atomic<unsigned> s_mask{0xFF};
constinit std::atomic<LogWriter> s_writer{nullptr};

}  // namespace

LogWriter setLogWriter(LogWriter writer) noexcept { return s_writer.exchange(writer); }

unsigned setlogmask(unsigned mask) noexcept {
    return mask == 0 ? s_mask.load() : s_mask.exchange(mask);
}

bool log_enabled(int priority) noexcept {
    const unsigned severity = static_cast<unsigned>(priority) & kSeverityBits;
    return (s_mask.load(std::memory_order_relaxed) >> severity & 1) != 0;
}

void syslog(int priority, const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    vsyslog(priority, format, args);
    va_end(args);
}

void vsyslog(int priority, const char* format, va_list args) noexcept {
    if (!log_enabled(priority)) return;
    if (const LogWriter writer = s_writer.load(); writer != nullptr) writer(priority, format, args);
}

}  // namespace orvane
