#pragma once

#include <mutex>

#include "check/machine.h"
#include "check/machine_backup.h"
#include "check/report.h"
#include "check/run.h"
#include "check/test_programs.h"

namespace orvane::check {

enum ExitCode { allWell = 0, somethingFailed = 1, notTried = 2 };

// What to try.
struct Job {
    std::wstring
        what;  // "player", "demo", "console", "putback"; empty: the test programs and the demo
    std::filesystem::path path;  // the player, or the console's folder of tracks
    // The demo without the cleaning of the library, with the plug-in and the application that are
    // registered.
    bool installed = false;
    [[nodiscard]] bool writesReport() const { return what.empty() || what == L"player"; }
};

// One check on this machine: registers the plug-in, runs the programs, writes the report, and
// restores what was changed, also when the console's window is closed meanwhile. One at a time.
class Check {
public:
    Check(Kit kit, Job job);
    ~Check();
    Check(const Check&) = delete;
    Check& operator=(const Check&) = delete;

    int run();

private:
    bool mayBegin();
    void introduce();
    void runProgram(const TestProgram& program, const std::string& mark);
    void runPrograms();
    void runWithPlugin();
    RunResult runJob();
    void tell(const RunResult& result);
    int end();
    void placeStandIn(bool placed) const;
    std::string restore();
    static BOOL WINAPI onClosed(DWORD reason);

    inline static Check* s_current = nullptr;
    const Kit m_kit;
    const Job m_job;
    Report m_report;
    MachineBackup m_backup;
    std::mutex m_restoring;
    bool m_restored = false;
    const bool m_rights = hasAdministratorsRights();
    const std::filesystem::path m_runtime = realFormatRuntime();
    Count m_count;
    unsigned m_seen = 0, m_missed = 0;
};

// Deletes all files that a check makes, also those that tests leave when they are cut short.
void removeFiles(const Kit& kit);

}  // namespace orvane::check
