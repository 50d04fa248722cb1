// orvane_soak [MINUTES [SEED]]: the real module in a player's process, while everything around it
// goes wrong again and again; a table at the end. Exit code 1 when a limit was broken.

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "harness/stall_meter.h"
#include "soak/phase.h"
#include "soak/report.h"

namespace orvane::soak {
namespace {

constexpr ULONGLONG kProgressMs = 5000;
constexpr DWORD kSettleMs = 1000;  // for threads that are on their way out

const char* phaseAtWork = "start";

LONG WINAPI tellCrash(EXCEPTION_POINTERS* crash) {
    std::printf("error: the player crashed (%s): 0x%08lX at %p\n", phaseAtWork,
                crash->ExceptionRecord->ExceptionCode, crash->ExceptionRecord->ExceptionAddress);
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 1);
    return EXCEPTION_EXECUTE_HANDLER;
}

Row run(Phase& phase, Stage& stage, LogCheck& log, double milliseconds) {
    phaseAtWork = phase.name;
    // The first time warms up: what is loaded and kept for good.
    phase.begin();
    phase.round();
    phase.end();
    stage.host.pump(kSettleMs);
    log.readOn();

    Row row;
    row.name = phase.name;
    row.blockLimitMs = phase.blockLimitMs;
    row.handlesPerRound = phase.handlesPerRound;
    row.before = test::ProcessState::now();
    phase.kills = 0;
    const auto messages = [&] { return stage.counts->events + stage.counts->responses; };
    const std::uint32_t read = messages();
    const std::uint32_t unreadable = stage.counts->unreadable;
    stage.host.longest = {};
    {
        test::StallMeter meter(stage.host.window());
        const ULONGLONG start = GetTickCount64();
        ULONGLONG told = start;
        phase.begin();
        for (ULONGLONG now = start; row.rounds < phase.least || now < start + milliseconds;
             now = GetTickCount64()) {
            phase.round();
            ++row.rounds;
            if (now < told + kProgressMs) continue;
            told = now;
            std::printf("%s: %u rounds, %.0f of %.0f s\n", phase.name, row.rounds,
                        static_cast<double>(now - start) / 1000, milliseconds / 1000);
            std::fflush(stdout);
        }
        phase.end();
        // Its last question wants an answer.
        stage.host.useDuring([&] { row.blockMs = meter.stop(); });
    }
    stage.host.pump(kSettleMs);
    row.after = test::ProcessState::now();
    row.call = stage.host.longest;
    row.kills = phase.kills;
    row.note = phase.note();
    row.messages = messages() - read;
    row.unreadable = stage.counts->unreadable - unreadable;
    row.log = log.readOn();
    return row;
}

int soak(double minutes, unsigned seed) {
    SetUnhandledExceptionFilter(&tellCrash);
    std::printf("%.1f minutes; seed %u\n", minutes, seed);
    Host host(seed);
    const std::wstring name = L"orvane_soak_" + std::to_wstring(GetCurrentProcessId());
    SharedCounts counts(name);
    Stage stage{host, counts, name};
    LogCheck log;
    host.load();

    std::vector<Row> rows;
    std::vector<std::string> faults;
    for (const auto make :
         {makeSelection, makeUnloads, makeObjects, makeSquatter, makeLogging, makeKills}) {
        const auto phase = make(stage);
        try {
            rows.push_back(run(*phase, stage, log, minutes * 60'000 * phase->share));
            for (auto& fault : faultsOf(rows.back())) faults.push_back(std::move(fault));
        } catch (const Broken& e) {
            faults.push_back(std::string(phase->name) + ": " + e.what());
            host.letGo();
            host.selects = true;
            if (!test::LoadedModule::isLoaded()) host.load();
        }
    }
    printTable(rows);
    for (const auto& fault : faults) std::printf("broken: %s\n", fault.c_str());
    if (faults.empty()) std::puts("every limit was kept");
    return faults.empty() ? 0 : 1;
}

int start(int argc, wchar_t** argv) {
    const std::wstring mode = argc > 1 ? argv[1] : L"5";
    const std::wstring argument = argc > 2 ? argv[2] : L"";
    if (mode == L"--application") return runApplication(argument, false);
    if (mode == L"--deaf-application") return runApplication(argument, true);
    if (mode == L"--squatter") return runSquatter(argument);
    if (mode == L"--logger") return runLogger(std::wcstoul(argument.c_str(), nullptr, 10));
    const double minutes = std::wcstod(mode.c_str(), nullptr);
    if (minutes <= 0) {
        std::puts("orvane_soak [MINUTES [SEED]]");
        return 2;
    }
    return soak(minutes, argc > 2 ? std::wcstoul(argument.c_str(), nullptr, 10) : GetTickCount());
}

}  // namespace
}  // namespace orvane::soak

int main() {
    int argc = 0;
    wchar_t** const argv = CommandLineToArgvW(GetCommandLineW(), &argc);
    try {
        return orvane::soak::start(argc, argv);
    } catch (const std::exception& e) {
        std::printf("error: %s\n", e.what());
        return 1;
    }
}
