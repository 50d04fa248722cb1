#pragma once

namespace orvane::test {

// The threads, handles and memory that this process uses.
struct ProcessState {
    int threads;
    int handles;
    double megabytes;  // private and committed, by a walk over the address space

    static ProcessState now();
};

}  // namespace orvane::test
