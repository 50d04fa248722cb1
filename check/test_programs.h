#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "check/report.h"

namespace orvane::check {

// One of the kit's test programs, as kit.txt names it: the program, what it needs, and the tests
// that the kit leaves out.
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

// Runs it in `folder`, where all programs are, and tells what came of it on both sides. `mark`
// stands behind its name.
[[nodiscard]] Count runTests(const TestProgram& program, const std::filesystem::path& folder,
                             const std::filesystem::path& work, const std::string& mark,
                             Report& report);

}  // namespace orvane::check
