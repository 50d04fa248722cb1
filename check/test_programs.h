#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "check/report.h"

namespace orvane::check {

// A test program as listed in kit.txt: its name, its needs, and the tests that are not run.
struct TestProgram {
    std::string name;
    std::set<std::string> needs;  // words of kit.txt
    std::string leftOut;          // GoogleTest's filter, empty for none
};
[[nodiscard]] std::vector<TestProgram> readTestPrograms(const std::filesystem::path& list);

struct Count {
    unsigned passed = 0;
    unsigned failed = 0;
    unsigned notRun = 0;  // programs
};

// Runs the program in `folder`, which contains all programs, and writes the results to screen and
// report. `mark` is printed after its name.
[[nodiscard]] Count runTests(const TestProgram& program, const std::filesystem::path& folder,
                             const std::filesystem::path& work, const std::string& mark,
                             Report& report);

}  // namespace orvane::check
