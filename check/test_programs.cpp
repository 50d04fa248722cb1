#include "check/test_programs.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <system_error>

#include "harness/child.h"
#include "harness/files.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

constexpr DWORD kTimeLimitMs = 240'000;
constexpr std::size_t kLongestDetail = 6000;  // bytes of what a failed test printed

struct Outcome {
    unsigned passed = 0;
    std::vector<std::pair<std::string, std::string>> failed;  // name, what it printed
};

// What GoogleTest prints: a line ahead of each test and one behind it.
Outcome readOutput(const std::string& output) {
    Outcome outcome;
    std::string running;
    std::string printed;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.starts_with("[ RUN      ] ")) {
            running = line.substr(13);
            printed.clear();
        } else if (running.empty()) {
            continue;
        } else if (line.starts_with("[       OK ] " + running)) {
            ++outcome.passed;
            running.clear();
        } else if (line.starts_with("[  FAILED  ] " + running)) {
            outcome.failed.emplace_back(running, printed);
            running.clear();
        } else if (printed.size() < kLongestDetail) {
            printed += line + "\n";
        }
    }
    if (!running.empty()) outcome.failed.emplace_back(running + " (it never ended)", printed);
    return outcome;
}

std::string inWords(const Outcome& outcome, DWORD milliseconds) {
    char time[32];
    std::snprintf(time, sizeof(time), "%.1f s", milliseconds / 1000.0);
    return std::to_string(outcome.passed) + " passed, " + std::to_string(outcome.failed.size()) +
           " failed (" + time + ")";
}

}  // namespace

std::vector<TestProgram> readTestPrograms(const std::filesystem::path& list) {
    std::vector<TestProgram> programs;
    std::ifstream file(list);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string kind;
        TestProgram program;
        if (!(words >> kind >> program.name) || kind != "test") continue;
        for (std::string word; words >> word;) {
            if (word == "rights") program.needsRights = true;
            if (word == "runtime") program.needsRuntime = true;
            if (word == "no-runtime") program.needsNoRuntime = true;
            if (word == "time") program.measuresTime = true;
            if (word.starts_with("without=")) program.leftOut = word.substr(8);
        }
        programs.push_back(program);
    }
    return programs;
}

void runTests(const TestProgram& program, const std::filesystem::path& folder,
              const std::filesystem::path& work, const std::string& mark, Report& report,
              Count& count) {
    const std::string name = program.name + mark;
    report.screenPart("  " + name + std::string(name.size() < 34 ? 34 - name.size() : 1, ' '));
    test::Child::Start start;
    start.folder = folder;
    start.output = work / "output.txt";
    start.commandLine = L"\"" + (folder / program.name).native() + L".exe\" --gtest_color=no";
    if (!program.leftOut.empty())
        start.commandLine += L" --gtest_filter=-" + standin::toWide(program.leftOut);

    // What a test leaves behind goes with the folder.
    start.environment = {{L"TMP", work.native()}, {L"TEMP", work.native()}};

    const ULONGLONG begin = GetTickCount64();
    std::string ending;
    try {
        const auto code = test::Child(start).exitCode(kTimeLimitMs);
        if (!code)
            ending = "it was ended after " + std::to_string(kTimeLimitMs / 1000) + " seconds";
        else if (*code != 0)
            ending = "it ended with code " + std::to_string(*code);
    } catch (const std::system_error& error) {
        ending = std::string("it did not start: ") + error.what();
    }
    Outcome outcome = readOutput(test::readText(start.output));
    // A program that fails without a failed test, or runs none, is a failure of its own.
    if (outcome.failed.empty() && (!ending.empty() || outcome.passed == 0))
        outcome.failed.emplace_back(
            program.name + ": " + (ending.empty() ? "no test was run" : ending),
            test::readText(start.output).substr(0, kLongestDetail));
    count.passed += outcome.passed;
    count.failed += static_cast<unsigned>(outcome.failed.size());

    const std::string words = inWords(outcome, static_cast<DWORD>(GetTickCount64() - begin));
    report.screen(words);
    report.file("  " + name + ": " + words + (ending.empty() ? "" : "; " + ending));
    if (!program.leftOut.empty()) report.file("left out: " + program.leftOut, "    ");
    for (const auto& [test, printed] : outcome.failed) {
        report.file("FAILED " + test, "    ");
        report.file(printed, "        ");
    }
}

}  // namespace orvane::check
