#pragma once

namespace orvane::test {

// What this process holds of the system.
struct ProcessState {
    int threads;
    int handles;
    double megabytes;  // private and committed, by a walk over the address space

    static ProcessState now();
};

}  // namespace orvane::test
