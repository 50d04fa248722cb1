#pragma once

// Rows of a table: one figure alone, or ours beside a peer's, taken in turns so that whatever else
// the machine does hits both alike. Needs no Windows.

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

// Two sides whose samples come from several rounds, each with objects and threads of its own: on
// which processors a round's threads come to lie can double a figure, and stays so for the round.
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

// Ends the program with that sentence when it does not hold: threads that wait for one another
// would not let an exception out.
void require(bool holds, const char* what);

}  // namespace orvane::bench
