#pragma once

#include <atomic>

#include "platform/module.h"

namespace orvane {

// A call into this module by whoever loaded it, while it is on some thread's stack: a window
// procedure, a timer's or an object's method that may let the host's own code run meanwhile. What
// runs then may free the module, and the call would come back to code that is gone.
class HostCall {
public:
    HostCall() noexcept { ++s_inProgress; }
    ~HostCall() { --s_inProgress; }
    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;

    // To be asked when the last thing goes that the host keeps the module for: pins it when a call
    // is in progress, on whichever thread.
    static void pinModuleIfAny() noexcept {
        if (s_inProgress > 0) pinThisModule();
    }

private:
    inline static constinit std::atomic<int> s_inProgress{0};
};

}  // namespace orvane
