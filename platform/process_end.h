#pragma once

#include <atomic>

namespace orvane {

// Whether the process is ending. DllMain sets it on DLL_PROCESS_DETACH at process exit. All other
// threads have been terminated by then and may have held locks, so code that may still be called (a
// window procedure, Release) must neither wait nor take a lock.
inline constinit std::atomic<bool> processIsEnding{false};

}  // namespace orvane
