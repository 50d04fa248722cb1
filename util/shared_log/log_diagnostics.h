#pragma once

// Reports the log's own errors, which cannot go to the log itself.

namespace orvane {

// The options of openlog(), for all parts of the log.
void setLogOptions(unsigned options) noexcept;
[[nodiscard]] bool logOption(unsigned option) noexcept;

// Prints on standard output when LOG_CONS is set.
void diagnose(const char* format, ...) noexcept;

}  // namespace orvane
