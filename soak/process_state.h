#pragma once

namespace orvane::soak {

// What this process holds of the system.
struct ProcessState {
    int threads;
    int handles;
    double megabytes;  // private and committed, by a walk over the address space

    static ProcessState now();
};

}  // namespace orvane::soak
