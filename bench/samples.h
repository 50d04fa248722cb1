#pragma once

// Rows of a table: one figure alone, or ours beside a peer's, taken in turns so that whatever else
// the machine does hits both alike. Needs no Windows.

#include <functional>

namespace orvane::bench {

using Work = std::function<void()>;

struct Side {
    const char* what;
    Work work;
    Work settle = [] {};  // after each sample, not timed
};

struct Turns {
    int blocks;       // turns of each side
    int samples = 1;  // in one turn
    int repeats = 1;  // of the work in one sample, for what is too short for the clock
};

void printHeading();

// Median, p5 and p95 of each side and the ratio of the medians; one turn of each warms up.
void compare(const Side& ours, const Side& peer, Turns turns);
void measure(const Side& ours, Turns turns);

// std::runtime_error with that sentence.
void require(bool holds, const char* what);

}  // namespace orvane::bench
