#include "bench/samples.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace orvane::bench {
namespace {

using Clock = std::chrono::steady_clock;

std::string inUnits(double nanoseconds) {
    char text[32];
    if (nanoseconds < 1e3)
        std::snprintf(text, sizeof(text), "%.1f ns", nanoseconds);
    else if (nanoseconds < 1e6)
        std::snprintf(text, sizeof(text), "%.1f us", nanoseconds / 1e3);
    else
        std::snprintf(text, sizeof(text), "%.2f ms", nanoseconds / 1e6);
    return text;
}

}  // namespace

void Samples::block(const Side& side, Turns turns) {
    for (int i = 0; i < turns.samples; ++i) {
        const auto start = Clock::now();
        for (int r = 0; r < turns.repeats; ++r) side.work();
        const std::chrono::duration<double, std::nano> took = Clock::now() - start;
        side.settle();
        m_taken.push_back(took.count() / turns.repeats);
    }
}

double Samples::at(std::size_t percent) {
    std::sort(m_taken.begin(), m_taken.end());
    return m_taken[(m_taken.size() - 1) * percent / 100];
}

std::string Samples::cells() {
    return inUnits(at(50)) + " | " + inUnits(at(5)) + " to " + inUnits(at(95));
}

void printHeading() {
    std::puts("| ours | median | p5 to p95 | beside it | median | p5 to p95 | ratio |");
    std::puts("|---|---:|---:|---|---:|---:|---:|");
}

void Comparison::round(const Side& ours, const Side& peer, Turns turns) {
    m_what = ours.what;
    m_otherWhat = peer.what;
    Samples warmUp;
    warmUp.block(ours, turns);
    warmUp.block(peer, turns);
    for (int i = 0; i < turns.blocks; ++i) {
        m_own.block(ours, turns);
        m_other.block(peer, turns);
    }
}

void Comparison::print() {
    std::printf("| %s | %s | %s | %s | %.2f |\n", m_what, m_own.cells().c_str(), m_otherWhat,
                m_other.cells().c_str(), m_own.at(50) / m_other.at(50));
    std::fflush(stdout);
}

void compare(const Side& ours, const Side& peer, Turns turns) {
    Comparison comparison;
    comparison.round(ours, peer, turns);
    comparison.print();
}

void measure(const Side& ours, Turns turns) {
    Samples own;
    for (int i = -1; i < turns.blocks; ++i) {
        own.block(ours, turns);
        if (i < 0) own.forget();
    }
    std::printf("| %s | %s | | | | |\n", ours.what, own.cells().c_str());
    std::fflush(stdout);
}

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "error: %s\n", what);
    std::fflush(stderr);
    std::_Exit(1);
}

}  // namespace orvane::bench
