#include "check/check.h"

#include <system_error>
#include <utility>

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
    s_current = nullptr;
}

BOOL WINAPI Check::onClosed(DWORD /*reason*/) {
    test::Child::killAll();
    s_current->restore();
    ExitProcess(notTried);
}

void Check::placeStandIn(bool placed) const {
    std::error_code ignored;
    if (!fs::exists(m_kit.standIn(), ignored)) return;
    if (placed)
        fs::copy_file(m_kit.standIn(), m_kit.placedStandIn(), fs::copy_options::overwrite_existing,
                      ignored);
    else
        fs::remove(m_kit.placedStandIn(), ignored);
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
            "report.txt cannot be written here. Unpack the whole zip into a folder of\r\n"
            "your own, such as one on the desktop.";
    else if (orvaneRuns())
        why = "OrVane is running. Please close it, and start this again.";
    else if (playerWindow() != nullptr)
        why = "Windows Media Player is running. Please close it, and start this again.";
    else if (m_job.what != Job::everything && !m_rights)
        why =
            "This needs an administrator's rights: open a command prompt with \"Run as\r\n"
            "administrator\", and start it from there.";
    if (why.empty()) return true;
    m_report.both(why);
    m_report.screen("Nothing was done.");
    return false;
}

void Check::introduce() {
    m_report.hide(m_kit.work, "(work)");
    m_report.hide(m_kit.top, "(kit)");
    m_report.file("OrVane's player plug-in: what was found on a machine");
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char when[32];
    std::snprintf(when, sizeof(when), "%04d-%02d-%02d %02d:%02d", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute);
    m_report.file(std::string("at: ") + when);
    m_report.file("Windows: " + windowsVersion());
    m_report.file(std::string("administrator's rights: ") + (m_rights ? "yes" : "no"));
    const auto found = [](const fs::path& file) {
        return file.empty() ? "not there" : toUtf8(file.native()) + ", " + fileVersion(file);
    };
    m_report.file("the real player, 32-bit: " + found(realPlayer()));
    m_report.file("the real Format runtime (wmvcore.dll), 32-bit: " + found(m_runtime));
    m_report.file(
        std::string("used by the tests and the demo: ") +
        (m_runtime.empty() ? "the stand-in for the Format runtime" : "the real Format runtime"));
    m_report.file("the plug-in: " + fileVersion(m_kit.programs / "OrVaneWmpPlugin.dll"));
    m_report.screen("This tries OrVane's plug-in for Windows Media Player on this machine.");
    m_report.screen("What happens next:");
    m_report.screen(m_job.what == Job::player
                        ? "  The plug-in is registered, the real player is started with it, and "
                          "all of it\r\n  is taken away again. That takes about two minutes."
                        : "  Some twenty small programs run one after the other. That takes "
                          "three to\r\n  five minutes.");
    if (m_job.what == Job::player)
        m_report.screen(
            "Copies of two small tracks are put into the player's library, changed, played\r\n"
            "without sound, and taken out again.");
    m_report.screen(
        "No music of yours is played, read or changed. What is changed on this machine");
    m_report.screen("meanwhile is put back in the end. Please leave OrVane and the player closed.");
}

void Check::runProgram(const TestProgram& program, const std::string& mark) {
    Count count;
    runTests(program, m_kit.programs, m_kit.work, mark, m_report, count);
    if (count.failed > 0 && program.measuresTime) {
        count = {};
        runTests(program, m_kit.programs, m_kit.work, mark + " (once more)", m_report, count);
    }
    m_count.passed += count.passed;
    m_count.failed += count.failed;
}

void Check::runPrograms() {
    m_report.both("");
    m_report.both("Tests");
    const bool real = !m_runtime.empty();
    const auto programs = readTestPrograms(m_kit.list());
    if (programs.empty()) {
        m_report.both("  no test program is named in check\\kit.txt");
        ++m_count.failed;
    }
    for (const TestProgram& program : programs) {
        const char* why = nullptr;
        if (program.needsRights && !m_rights) why = "not run: needs an administrator's rights";
        // Wine has one of its own everywhere.
        if (program.needsNoRuntime && (real || isWine()))
            why = "not run: is for a Windows without the Format runtime";
        if (why != nullptr) {
            ++m_count.notRun;
            m_report.both("  " + program.name + ": " + why);
            continue;
        }
        placeStandIn(program.needsRuntime && !real);
        runProgram(program, "");
        if (!program.needsRuntime || !real) continue;
        // When the real one fails, this tells whether it is the runtime.
        placeStandIn(true);
        runProgram(program, " (stand-in)");
    }
    placeStandIn(false);
}

void Check::tell(const RunResult& result) {
    for (const Tick& tick : result.ticks)
        m_report.both((tick.good ? "  [x] " : "  [ ] ") + tick.what);
    m_report.file(result.details, "    ");
    m_missed += result.missed();
    m_seen += static_cast<unsigned>(result.ticks.size()) - result.missed();
}

void Check::runJob() {
    if (m_job.what == Job::player) {
        m_report.screen(
            "  The player opens now and closes by itself within a minute or two.\r\n"
            "  If it asks how to be set up, choose the recommended settings.\r\n"
            "  Touch nothing else.");
        tell(runRealPlayer(m_kit, m_job.path));
    } else if (m_job.what == Job::console) {
        runConsole(m_kit, m_job.path);
    } else {
        if (m_job.what == Job::everything)
            m_report.screen("  A small window or two will come and go (half a minute) ...");
        tell(runDemo(m_kit, m_job.linkOnly, [&](const std::string& line) {
            if (m_job.what == Job::demo) m_report.screen(line);
        }));
    }
}

void Check::runWithPlugin() {
    if (m_job.writesReport()) {
        m_report.both("");
        m_report.both(m_job.what == Job::player ? "The plug-in in the real player" : "The demo");
    }
    if (!m_rights) {
        m_report.both("  not run: needs an administrator's rights");
        return;
    }
    const auto missed = [&](const std::string& problem) {
        if (problem.empty()) return false;
        m_report.both("  " + problem);
        ++m_missed;
        return true;
    };
    if (!m_job.installed && missed(registerPlugin(m_kit))) return;
    placeStandIn(m_runtime.empty());
    try {
        runJob();
    } catch (const std::system_error& error) {
        missed(std::string("a file or a program is in the way: ") + error.what());
    }
    placeStandIn(false);
    if (m_job.installed) return;
    if (const std::string problem = registerPlugin(m_kit, false); !problem.empty())
        missed("taking the plug-in away: " + problem);
}

int Check::end() {
    const std::string left = restore();
    m_report.both("");
    m_report.both(left.empty() ? "This machine is as it was before."
                               : "Not everything could be put back as it was:");
    if (!left.empty()) m_report.both(left);
    const auto of = [](unsigned good, unsigned bad, const char* what) {
        return bad + good == 0 ? ""
                               : std::to_string(good) + " of " + std::to_string(good + bad) + what;
    };
    std::string summary = of(m_count.passed, m_count.failed, " tests passed; ") +
                          of(m_seen, m_missed, " things were seen; ");
    if (m_count.notRun > 0)
        summary += "test programs not run: " + std::to_string(m_count.notRun) + "; ";
    const bool well = m_count.failed == 0 && m_missed == 0 && left.empty();
    m_report.both("In all: " + summary + (well ? "all was well." : "not all was well."));
    if (!m_rights)
        m_report.screen("For the rest, right-click check.cmd, \"Run as administrator\".");
    if (m_job.writesReport()) {
        m_report.screen("");
        m_report.screen("Please send back this file:");
        m_report.screen("  " + toUtf8(m_kit.report().native()));
    }
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
    if (m_job.what == Job::everything) runPrograms();
    runWithPlugin();
    return end();
}

}  // namespace orvane::check
