#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "check/report.h"

namespace orvane::check {

// One of the kit's test programs, as kit.txt names it: the program, what it needs, and the tests
// that the kit leaves out.
struct TestProgram {
    std::string name;
    bool needsRights = false;     // writes where only an administrator may
    bool needsRuntime = false;    // the Format runtime, or its stand-in
    bool needsNoRuntime = false;  // that there is none at all
    bool measuresTime = false;    // between processes: a busy machine may need a second try
    std::string leftOut;          // GoogleTest's filter, empty for none
};
[[nodiscard]] std::vector<TestProgram> readTestPrograms(const std::filesystem::path& list);

struct Count {
    unsigned passed = 0;
    unsigned failed = 0;
    unsigned notRun = 0;  // programs
};

// Runs it in `folder`, where all programs are, and tells what came of it on both sides. `mark`
// stands behind its name.
void runTests(const TestProgram& program, const std::filesystem::path& folder,
              const std::filesystem::path& work, const std::string& mark, Report& report,
              Count& count);

}  // namespace orvane::check
