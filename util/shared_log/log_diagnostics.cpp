#include "util/shared_log/log_diagnostics.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

#include "util/shared_log/shared_log.h"

namespace orvane {
namespace {

constinit std::atomic<unsigned> s_options{0};

}  // namespace

void setLogOptions(unsigned options) noexcept {
    s_options.store(options, std::memory_order_relaxed);
}

bool logOption(unsigned option) noexcept {
    return (s_options.load(std::memory_order_relaxed) & option) != 0;
}

void diagnose(const char* format, ...) noexcept {
    if (!logOption(LOG_CONS)) return;
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
    std::fflush(stdout);
}

}  // namespace orvane
