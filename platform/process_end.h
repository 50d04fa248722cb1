#pragma once

#include <atomic>

namespace orvane {

// Whether the process is ending: set by the module's entry point when the system detaches it for
// that. All other threads are dead by then, with whatever locks they held, so code that may still
// be called (a window procedure, Release) must neither wait nor take a lock.
inline constinit std::atomic<bool> processIsEnding{false};

}  // namespace orvane
