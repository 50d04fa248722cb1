#include "check/check.h"

#include <ctime>
#include <system_error>
#include <utility>

#include "common/names/names.h"
#include "harness/files.h"
#include "standins/support/wide_text.h"

namespace orvane::check {

namespace fs = std::filesystem;
using standin::toUtf8;

void removeFiles(const Kit& kit) {
    std::error_code ignored;
    if (fs::exists(kit.standIn(), ignored)) fs::remove(kit.placedStandIn(), ignored);
    if (!kit.keepsWork) test::removeFolder(kit.work);
    test::removeFolder(L"C:\\orvane-launcher-tests");
}

Check::Check(Kit kit, Job job)
    : m_kit(std::move(kit)),
      m_job(std::move(job)),
      m_report(m_job.writesReport() ? m_kit.report() : fs::path()) {
    s_current = this;
    SetConsoleCtrlHandler(&onClosed, TRUE);
}

Check::~Check() {
    restore();
    SetConsoleCtrlHandler(&onClosed, FALSE);
}

BOOL WINAPI Check::onClosed(DWORD /*reason*/) {
    test::Child::killAll();
    s_current->restore();
    ExitProcess(notTried);
}

void Check::placeStandIn(bool placed) const {
    std::error_code ignored;
    if (!fs::exists(m_kit.standIn(), ignored)) return;
    fs::remove(m_kit.placedStandIn(), ignored);
    if (placed) fs::copy_file(m_kit.standIn(), m_kit.placedStandIn(), ignored);
}

std::string Check::restore() {
    const std::lock_guard lock(m_restoring);
    if (std::exchange(m_restored, true)) return {};
    removeFiles(m_kit);
    return m_backup.restore();
}

bool Check::mayBegin() {
    std::string why;
    if (m_job.writesReport() && !m_report.isOpen())
        why =
            "report.txt cannot be written here. Unpack the whole zip into a folder of\n"
            "your own, such as one on the desktop.";
    else if (orvaneRuns())
        why = "OrVane is running. Please close it, and start this again.";
    else if (playerWindow() != nullptr)
        why = "Windows Media Player is running. Please close it, and start this again.";
    else if (!m_job.what.empty() && !m_rights)
        why =
            "This needs an administrator's rights: open a command prompt with \"Run as\n"
            "administrator\", and start it from there.";
    if (why.empty()) return true;
    m_report.both(why + "\nNothing was done.");
    return false;
}

void Check::introduce() {
    m_report.hide(m_kit.work, "(work)");
    m_report.hide(m_kit.top, "(kit)");
    const auto found = [](const fs::path& file) {
        return file.empty() ? "not there" : toUtf8(file.native()) + ", " + fileVersion(file);
    };
    const std::time_t now = std::time(nullptr);
    m_report.file(std::string("OrVane's player plug-in: what was found on a machine\nat: ") +
                  std::ctime(&now) + "Windows: " + windowsVersion() + "\nadministrator's rights: " +
                  (m_rights ? "yes" : "no") + "\nthe real player, 32-bit: " + found(realPlayer()) +
                  "\nthe real Format runtime (wmvcore.dll), 32-bit: " + found(m_runtime) +
                  "\nused by the tests and the demo: the " +
                  (m_runtime.empty() ? "stand-in for the" : "real") + " Format runtime" +
                  "\nthe plug-in: " + fileVersion(m_kit.programs / names::kModuleFile.narrow()));
    if (m_job.what == L"player")
        m_report.screen(
            "Copies of two small tracks are put into the player's library, changed, played\n"
            "without sound, and taken out again.");
    m_report.screen(
        "This tries OrVane's plug-in for Windows Media Player on this machine, for two to\n"
        "five minutes. No music of yours is played, read or changed. What is changed on\n"
        "this machine meanwhile is put back in the end. Please leave OrVane and the\n"
        "player closed.");
}

void Check::runProgram(const TestProgram& program, const std::string& mark) {
    Count count = runTests(program, m_kit.programs, m_kit.work, mark, m_report);
    if (count.failed > 0 && program.needs.contains("time"))
        count = runTests(program, m_kit.programs, m_kit.work, mark + " (once more)", m_report);
    m_count.passed += count.passed;
    m_count.failed += count.failed;
}

void Check::runPrograms() {
    m_report.both("\nTests");
    const bool real = !m_runtime.empty();
    const auto programs = readTestPrograms(m_kit.list());
    if (programs.empty()) {
        m_report.both("  no test program is named in check\\kit.txt");
        ++m_count.failed;
    }
    for (const TestProgram& program : programs) {
        const char* why = nullptr;
        if (program.needs.contains("rights") && !m_rights)
            why = "not run: needs an administrator's rights";
        // Wine has one of its own everywhere.
        if (program.needs.contains("no-runtime") && (real || isWine()))
            why = "not run: is for a Windows without the Format runtime";
        if (why != nullptr) {
            ++m_count.notRun;
            m_report.both("  " + program.name + ": " + why);
            continue;
        }
        const bool runtime = program.needs.contains("runtime");
        placeStandIn(runtime && !real);
        runProgram(program, "");
        if (!runtime || !real) continue;
        // When the real one fails, this tells whether it is the runtime.
        placeStandIn(true);
        runProgram(program, " (stand-in)");
    }
    placeStandIn(false);
}

void Check::tell(const RunResult& result) {
    for (const Tick& tick : result.ticks)
        m_report.both((tick.good ? "  [x] " : "  [ ] ") + tick.what);
    if (!result.problems.empty()) m_report.both(result.problems);
    m_report.file(result.details, "    ");
    m_missed += result.missed();
    m_seen += static_cast<unsigned>(result.ticks.size()) - result.missed();
}

RunResult Check::runJob() {
    if (m_job.what == L"player") {
        m_report.screen(
            "  The player opens now and closes by itself within a minute or two.\n"
            "  If it asks how to be set up, choose the recommended settings.\n"
            "  Touch nothing else.");
        return runRealPlayer(m_kit, m_job.path);
    }
    if (m_job.what == L"console") {
        runConsole(m_kit, m_job.path);
        return {};
    }
    return runDemo(m_kit, m_job.installed, [&](const std::string& line) {
        if (m_job.what == L"demo") m_report.screen(line);
    });
}

void Check::runWithPlugin() {
    if (m_job.writesReport())
        m_report.both(m_job.what == L"player" ? "\nThe plug-in in the real player"
                                              : "\nThe demo (half a minute)");
    if (!m_rights) {
        m_report.both("  not run: needs an administrator's rights");
        return;
    }
    std::string problem = m_job.installed ? "" : registerPlugin(m_kit);
    placeStandIn(m_runtime.empty());
    try {
        if (problem.empty()) tell(runJob());
    } catch (const std::system_error& error) {
        problem = std::string("a file or a program is in the way: ") + error.what();
    }
    placeStandIn(false);
    if (problem.empty() && !m_job.installed) problem = registerPlugin(m_kit, false);
    if (problem.empty()) return;
    m_report.both("  " + problem);
    ++m_missed;
}

int Check::end() {
    const std::string left = restore();
    m_report.both(left.empty() ? "\nThis machine is as it was before."
                               : "\nNot everything could be put back as it was:\n" + left);
    std::string summary;
    const auto add = [&](unsigned good, unsigned bad, const char* what) {
        if (good + bad > 0)
            summary += std::to_string(good) + " of " + std::to_string(good + bad) + what;
    };
    add(m_count.passed, m_count.failed, " tests passed; ");
    add(m_seen, m_missed, " things were seen; ");
    if (m_count.notRun > 0)
        summary += "test programs not run: " + std::to_string(m_count.notRun) + "; ";
    const bool well = m_count.failed == 0 && m_missed == 0 && left.empty();
    m_report.both("In all: " + summary + (well ? "all was well." : "not all was well."));
    if (!m_rights)
        m_report.screen("For the rest, right-click check.cmd, \"Run as administrator\".");
    if (m_job.writesReport())
        m_report.screen("\nPlease send back this file:\n  " + toUtf8(m_kit.report().native()));
    return well ? allWell : somethingFailed;
}

int Check::run() {
    if (!mayBegin()) return notTried;
    if (m_job.writesReport()) introduce();
    std::error_code error;
    fs::create_directories(m_kit.work, error);
    if (error || !m_backup.save(m_kit.backup())) {
        m_report.both("No file can be written in this folder; nothing was done.");
        return notTried;
    }
    if (m_job.what.empty()) runPrograms();
    runWithPlugin();
    return end();
}

}  // namespace orvane::check
