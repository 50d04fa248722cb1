#pragma once

// What the log says about its own troubles. It must never log them.

namespace orvane {

// The option word of openlog, shared by all parts of the log.
void setLogOptions(unsigned options) noexcept;
[[nodiscard]] bool logOption(unsigned option) noexcept;

// Prints on standard output when LOG_CONS is set.
void diagnose(const char* format, ...) noexcept;

}  // namespace orvane
