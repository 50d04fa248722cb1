#pragma once

#include <string>
#include <vector>

#include "harness/process_state.h"
#include "soak/host.h"
#include "soak/log_check.h"

namespace orvane::soak {

// The measurements of one phase.
struct Row {
    std::string name, note;
    unsigned rounds = 0;
    unsigned kills = 0;
    unsigned messages = 0;    // that the application read
    unsigned unreadable = 0;  // that it could not read
    Longest call;
    double blockMs = 0;
    double blockLimitMs = 0;
    double handlesPerRound = 0;
    LogCheck::Tally log;
    test::ProcessState before{};
    test::ProcessState after{};
};

// The limits that the phase exceeded, as sentences of one line each.
std::vector<std::string> faultsOf(const Row& row);
void printTable(const std::vector<Row>& rows);

}  // namespace orvane::soak
