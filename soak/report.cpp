#include "soak/report.h"

#include <cstdio>

namespace orvane::soak {
namespace {

// Closing waits 4 s for a command that runs; the rest is for a machine that is busy.
constexpr double kReturnLimitMs = 4500;
// Heaps of a process keep what they have for the next time; a leak of a message a round is more.
constexpr double kGrowthMegabytes = 2;
// What the system keeps once, however many rounds there are.
constexpr double kFewHandles = 4;

std::string span(const char* format, double before, double after) {
    char text[64];
    std::snprintf(text, sizeof(text), format, before, after);
    return text;
}

}  // namespace

std::vector<std::string> faultsOf(const Row& row) {
    std::vector<std::string> faults;
    const auto fault = [&](bool is, const std::string& what) {
        if (is) faults.push_back(row.name + ": " + what);
    };
    fault(row.call.ms > kReturnLimitMs,
          row.call.what + " returned after " + std::to_string(row.call.ms) + " ms");
    fault(row.blockMs > row.blockLimitMs,
          "the player's thread gave no answer for " + std::to_string(row.blockMs) + " ms");
    fault(row.unreadable > 0,
          std::to_string(row.unreadable) + " messages arrived that were not whole");
    fault(row.log.torn > 0,
          std::to_string(row.log.torn) + " torn lines in the log; the first: " + row.log.firstTorn);
    fault(row.log.cut > row.kills, std::to_string(row.log.cut) + " lines were cut short by " +
                                       std::to_string(row.kills) + " kills");
    fault(row.log.lost > 0,
          "lines of the log are missing at " + std::to_string(row.log.lost) + " places");
    fault(row.after.threads > row.before.threads, "threads are left");
    fault(row.after.handles - row.before.handles > kFewHandles + row.handlesPerRound * row.rounds,
          "handles are left");
    fault(row.after.megabytes - row.before.megabytes > kGrowthMegabytes, "memory is left");
    return faults;
}

void printTable(const std::vector<Row>& rows) {
    std::puts(
        "| | rounds | kills | messages read | worst return, ms | longest block, ms | log lines | "
        "cut by a kill | "
        "torn or lost | threads | handles | memory, MB | |\n"
        "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---:|---|");
    for (const Row& row : rows) {
        std::printf("| %s | %u | %u | %u | %.0f (%s) | %.0f | %u | %u | %u | %s | %s | %s | %s |\n",
                    row.name.c_str(), row.rounds, row.kills, row.messages, row.call.ms,
                    row.call.what.c_str(), row.blockMs, row.log.lines, row.log.cut,
                    row.log.torn + row.log.lost,
                    span("%.0f, %.0f", row.before.threads, row.after.threads).c_str(),
                    span("%.0f, %.0f", row.before.handles, row.after.handles).c_str(),
                    span("%.1f, %.1f", row.before.megabytes, row.after.megabytes).c_str(),
                    row.note.c_str());
    }
    std::puts("(threads, handles and memory of the player: before, after)");
    std::fflush(stdout);
}

}  // namespace orvane::soak
