#pragma once

// Measures the rows of a table: one value alone, or two sides for comparison. The sides are
// measured in turns, so that other load on the machine affects both equally. Portable code.

#include <functional>
#include <string>
#include <vector>

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

class Samples {
public:
    void block(const Side& side, Turns turns);
    void forget() { m_taken.clear(); }
    // Nanoseconds.
    [[nodiscard]] double at(std::size_t percent);
    // The table's: the median, and p5 to p95.
    [[nodiscard]] std::string cells();

private:
    std::vector<double> m_taken;
};

// Compares two sides over several rounds with new objects and threads each: the processors on which
// a round's threads run can double a value, and do not change during a round.
class Comparison {
public:
    void round(const Side& ours, const Side& peer, Turns turns);
    void print();

private:
    Samples m_own;
    Samples m_other;
    const char* m_what = "";
    const char* m_otherWhat = "";
};

void printHeading();

// One round, printed: median, p5 and p95 of each side and the ratio of the medians; one turn of
// each warms up.
void compare(const Side& ours, const Side& peer, Turns turns);
void measure(const Side& ours, Turns turns);

// Ends the program with that sentence when the condition is false. It does not throw, because
// threads that wait for each other would block the unwinding.
void require(bool holds, const char* what);

}  // namespace orvane::bench
