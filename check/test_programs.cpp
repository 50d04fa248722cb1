#include "check/test_programs.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <regex>
#include <sstream>
#include <system_error>

#include "harness/child.h"
#include "harness/files.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

constexpr DWORD kTimeLimitMs = 240'000;
constexpr std::size_t kLongestDetail = 30'000;  // bytes of what failed tests printed

}  // namespace

std::vector<TestProgram> readTestPrograms(const std::filesystem::path& list) {
    std::vector<TestProgram> programs;
    std::ifstream file(list);
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string kind;
        TestProgram program;
        if (!(words >> kind >> program.name) || kind != "test") continue;
        for (std::string word; words >> word;)
            if (word.starts_with("without="))
                program.leftOut = word.substr(8);
            else
                program.needs.insert(word);
        programs.push_back(program);
    }
    return programs;
}

Count runTests(const TestProgram& program, const std::filesystem::path& folder,
               const std::filesystem::path& work, const std::string& mark, Report& report) {
    const std::string name = program.name + mark;
    report.screen("  " + name + std::string(name.size() < 34 ? 34 - name.size() : 1, ' '), "");
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
    const std::string output = test::readText(start.output);
    const auto begun = static_cast<unsigned>(test::countOf(output, "[ RUN      ] "));
    const auto passed = static_cast<unsigned>(test::countOf(output, "[       OK ] "));
    unsigned failed = begun - std::min(begun, passed);
    // A program that fails without a failed test, or runs none, is a failure of its own.
    if (begun == 0 && ending.empty()) ending = "no test was run";
    if (failed == 0 && !ending.empty()) failed = 1;
    char words[64];
    std::snprintf(words, sizeof(words), "%u passed, %u failed (%.1f s)", passed, failed,
                  static_cast<double>(GetTickCount64() - begin) / 1000);
    report.screen(words);
    report.file("  " + name + ": " + words + (ending.empty() ? "" : "; " + ending));
    if (!program.leftOut.empty()) report.file("left out: " + program.leftOut, "    ");
    if (failed == 0) return {passed, failed};
    static const std::regex passedTest(R"(\[ RUN      \] .*\r?\n\[       OK \] .*\r?\n)");
    report.file(std::regex_replace(output, passedTest, "").substr(0, kLongestDetail), "    ");
    return {passed, failed};
}

}  // namespace orvane::check
