#include "check/run.h"

#include <algorithm>
#include <sstream>

#include "common/names/names.h"
#include "harness/files.h"

namespace orvane::check {
namespace {

namespace fs = std::filesystem;

constexpr DWORD kMinuteMs = 60'000;
constexpr std::size_t kTimeLength = 12;  // "08:00:00.000"

}  // namespace

unsigned RunResult::missed() const {
    return static_cast<unsigned>(
        std::count_if(ticks.begin(), ticks.end(), [](const Tick& tick) { return !tick.good; }));
}

std::string registerPlugin(const Kit& kit, bool registered) {
    wchar_t system[MAX_PATH] = {};
    if (GetSystemWow64DirectoryW(system, MAX_PATH) == 0) GetSystemDirectoryW(system, MAX_PATH);
    test::Child::Start start;
    start.folder = kit.programs;
    start.output = kit.work / "regsvr32.txt";
    start.commandLine = quoted(fs::path(system) / "regsvr32.exe") +
                        (registered ? L" /s " : L" /s /u ") +
                        quoted(kit.programs / names::kModuleFile.narrow());
    const auto code = test::Child(start).exitCode(kMinuteMs);
    if (code != 0U)
        return "regsvr32 ended with code " + (code ? std::to_string(*code) : "none in a minute");
    if (!registered) return {};
    const std::wstring folder = kit.programs.native();
    const LSTATUS result = RegSetKeyValueW(
        HKEY_LOCAL_MACHINE, names::kSettingsKey.wide(), names::kPathValue.wide(), REG_SZ,
        folder.c_str(), static_cast<DWORD>((folder.size() + 1) * sizeof(wchar_t)));
    if (result == ERROR_SUCCESS) return {};
    return "OrVane's folder cannot be named in the registry: error " + std::to_string(result);
}

test::Child::Start playerStart(const fs::path& player, const std::wstring& options,
                               const fs::path& folder, const std::string& script) {
    fs::create_directories(folder);
    test::writeFile(folder / "script.txt", script);
    test::Child::Start start;
    start.commandLine = quoted(player) + options;
    start.folder = player.parent_path();
    start.output = folder / "player.txt";
    start.environment = {{L"ORVANE_APP_SCRIPT", (folder / "script.txt").native()},
                         {L"ORVANE_APP_TRANSCRIPT", (folder / "transcript.txt").native()}};
    return start;
}

bool Transcript::has(std::string_view words) const { return text.find(words) != text.npos; }

std::vector<Tick> Transcript::stepsOf(const std::string& script) const {
    std::vector<Tick> ticks;
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.starts_with("step "))
            ticks.push_back({has("  step good: " + line.substr(5)), line.substr(5)});
    }
    return ticks;
}

Transcript followTranscript(const fs::path& file, DWORD limitMs, const ReadLine& read) {
    Transcript transcript;
    std::string& text = transcript.text;
    const ULONGLONG begin = GetTickCount64();
    for (std::size_t at = 0;; Sleep(10)) {
        text = test::readText(file);
        for (std::size_t end = 0; (end = text.find('\n', at)) != text.npos; at = end + 1) {
            const std::string line = text.substr(at, end - at);
            const std::size_t words = line.find_first_not_of(' ', kTimeLength);
            read(line, words == line.npos ? "" : line.substr(words));
            if (line.find("  result: ") != line.npos) return transcript;
        }
        const ULONGLONG gone = GetTickCount64() - begin;
        if (text.empty() && gone > kMinuteMs)
            transcript.problem = "the plug-in did not start the application within a minute\n";
        else if (gone > limitMs)
            transcript.problem = "the application was not done after " +
                                 std::to_string(limitMs / 1000) + " seconds\n";
        if (!transcript.problem.empty()) return transcript;
    }
}

}  // namespace orvane::check
