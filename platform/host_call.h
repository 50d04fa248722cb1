#pragma once

#include <atomic>

#include "platform/module.h"

namespace orvane {

// Counts a call from the host process into this module while it is on a thread's stack: a window
// procedure, a timer callback or a COM method during which the host's own code may run. That code
// may free the module, and the call would return into unloaded code.
class HostCall {
public:
    HostCall() noexcept { ++s_inProgress; }
    ~HostCall() { --s_inProgress; }
    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;

    // Call this when the last object or hook ends and the host may free the module: pins the module
    // when a call is in progress on any thread.
    static void pinModuleIfAny() noexcept {
        if (s_inProgress > 0) pinThisModule();
    }

private:
    inline static constinit std::atomic<int> s_inProgress{0};
};

}  // namespace orvane
