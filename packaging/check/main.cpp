// check.exe: tries the plug-in on this machine and writes report.txt; check.cmd starts it.
//   check.exe                  the test programs and the demo
//   check.exe player [PATH]    the plug-in in the real player (or the one named)
//   check.exe putback          only takes back what a check that was cut short left
// Exit code: 0 all was well, 1 something was not, 2 it could not be tried.

#include <windows.h>

#include <mutex>

#include "packaging/check/before.h"
#include "packaging/check/child.h"
#include "packaging/check/demo.h"
#include "packaging/check/machine.h"
#include "packaging/check/report.h"
#include "packaging/check/test_programs.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

namespace fs = std::filesystem;
using standin::toUtf8;

enum ExitCode { allWell = 0, somethingFailed = 1, notTried = 2 };

fs::path topFolder() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return fs::path(path).parent_path().parent_path();
}

fs::path standInOf(const Kit& kit) { return kit.programs() / "wmvcore.dll"; }

// All files that a check makes; tests that were cut short leave some, too.
void removeFiles(const Kit& kit) {
    std::error_code ignored;
    fs::remove(standInOf(kit), ignored);
    removeFolder(kit.work);
    removeFolder(L"C:\\orvane-launcher-tests");
}

class Check {
public:
    explicit Check(const Kit& kit) : m_kit(kit), m_report(m_kit.top / "report.txt") {
        s_current = this;
        SetConsoleCtrlHandler(&onClosed, TRUE);
    }
    ~Check() {
        takeBack();
        SetConsoleCtrlHandler(&onClosed, FALSE);
        s_current = nullptr;
    }
    Check(const Check&) = delete;
    Check& operator=(const Check&) = delete;

    int run(bool player, const fs::path& playerPath);

private:
    bool mayBegin(bool player);
    void tellMachine();
    void runProgram(const TestProgram& program, const std::string& mark);
    void runPrograms();
    void runCourse(bool player, const fs::path& playerPath);
    void tell(const Course& course);
    int end();
    void placeStandIn(bool placed) const;
    // What is put back, in the end and when somebody closes the window.
    std::string takeBack();
    static BOOL WINAPI onClosed(DWORD reason);

    inline static Check* s_current = nullptr;
    const Kit m_kit;
    Report m_report;
    Before m_before;
    std::mutex m_takingBack;
    bool m_takenBack = false;
    const bool m_rights = hasAdministratorsRights();
    const fs::path m_runtime = realFormatRuntime();
    Count m_count;
    unsigned m_seen = 0, m_missed = 0;
};

BOOL WINAPI Check::onClosed(DWORD /*reason*/) {
    Child::endAll();
    s_current->takeBack();
    ExitProcess(notTried);
}

void Check::placeStandIn(bool placed) const {
    std::error_code ignored;
    if (placed)
        fs::copy_file(m_kit.programs() / "stand-in" / "wmvcore.dll", standInOf(m_kit),
                      fs::copy_options::overwrite_existing, ignored);
    else
        fs::remove(standInOf(m_kit), ignored);
}

std::string Check::takeBack() {
    const std::lock_guard lock(m_takingBack);
    if (m_takenBack) return {};
    m_takenBack = true;
    removeFiles(m_kit);
    return m_before.putBack();
}

bool Check::mayBegin(bool player) {
    std::string why;
    if (!m_report.isOpen())
        why =
            "report.txt cannot be written here. Unpack the whole zip into a folder of\r\n"
            "your own, such as one on the desktop.";
    else if (orvaneRuns())
        why = "OrVane is running. Please close it, and start this again.";
    else if (playerRuns())
        why = "Windows Media Player is running. Please close it, and start this again.";
    else if (player && !m_rights)
        why =
            "Trying the real player needs an administrator's rights: open a command prompt\r\n"
            "with \"Run as administrator\", and start check.cmd player from there.";
    if (why.empty()) return true;
    m_report.both(why);
    m_report.screen("Nothing was done.");
    return false;
}

void Check::tellMachine() {
    m_report.file("Windows: " + windowsVersion());
    m_report.file(std::string("administrator's rights: ") + (m_rights ? "yes" : "no"));
    const fs::path player = realPlayer();
    m_report.file(
        "the real player, 32-bit: " +
        (player.empty() ? "not there" : toUtf8(player.native()) + ", " + fileVersion(player)));
    m_report.file("the real Format runtime (wmvcore.dll), 32-bit: " +
                  (m_runtime.empty() ? "not there"
                                     : toUtf8(m_runtime.native()) + ", " + fileVersion(m_runtime)));
    m_report.file(
        std::string("used by the tests and the demo: ") +
        (m_runtime.empty() ? "the stand-in for the Format runtime" : "the real Format runtime"));
    m_report.file("the plug-in: " + fileVersion(m_kit.programs() / "OrVaneWmpPlugin.dll"));
}

void Check::runProgram(const TestProgram& program, const std::string& mark) {
    Count count;
    runTests(program, m_kit.programs(), m_kit.work, mark, m_report, count);
    if (count.failed > 0 && program.measuresTime) {
        count = {};
        runTests(program, m_kit.programs(), m_kit.work, mark + " (once more)", m_report, count);
    }
    m_count.passed += count.passed;
    m_count.failed += count.failed;
}

void Check::runPrograms() {
    m_report.both("");
    m_report.both("Tests");
    const bool real = !m_runtime.empty();
    for (const TestProgram& program : readTestPrograms(m_kit.programs() / "tests.txt")) {
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

void Check::tell(const Course& course) {
    for (const Tick& tick : course.ticks)
        m_report.both((tick.good ? "  [x] " : "  [ ] ") + tick.what);
    if (!course.details.empty()) m_report.file(course.details, "    ");
    m_missed += course.missed();
    m_seen += static_cast<unsigned>(course.ticks.size()) - course.missed();
}

void Check::runCourse(bool player, const fs::path& playerPath) {
    m_report.both("");
    m_report.both(player ? "The plug-in in the real player" : "The demo");
    if (!m_rights) {
        m_report.both("  not run: needs an administrator's rights");
        return;
    }
    if (const std::string problem = registerPlugin(m_kit); !problem.empty()) {
        m_report.both("  " + problem);
        ++m_missed;
        return;
    }
    placeStandIn(m_runtime.empty());
    m_report.screen(player
                        ? "  The player opens now and closes by itself within a minute or two.\r\n"
                          "  If it asks how to be set up, choose the recommended settings.\r\n"
                          "  Touch nothing else."
                        : "  A small window or two will come and go (half a minute) ...");
    try {
        tell(player ? runRealPlayer(m_kit, playerPath) : runDemo(m_kit));
    } catch (const fs::filesystem_error& error) {
        m_report.both(std::string("  a file is in the way: ") + error.what());
        ++m_missed;
    }
    placeStandIn(false);
    if (const std::string problem = registerPlugin(m_kit, false); !problem.empty()) {
        m_report.both("  taking the plug-in away: " + problem);
        ++m_missed;
    }
}

int Check::end() {
    const std::string left = takeBack();
    m_report.both("");
    m_report.both(left.empty() ? "This machine is as it was before."
                               : "Not everything could be put back as it was:");
    if (!left.empty()) m_report.both(left);
    const auto of = [](unsigned good, unsigned bad, const char* what) {
        return std::to_string(good) + " of " + std::to_string(good + bad) + " " + what;
    };
    std::string summary;
    if (m_count.passed + m_count.failed > 0)
        summary += of(m_count.passed, m_count.failed, "tests passed; ");
    if (m_seen + m_missed > 0) summary += of(m_seen, m_missed, "things were seen; ");
    if (m_count.notRun > 0)
        summary += "test programs not run: " + std::to_string(m_count.notRun) + "; ";
    const bool well = m_count.failed == 0 && m_missed == 0 && left.empty();
    m_report.both("In all: " + summary + (well ? "all was well." : "not all was well."));
    if (!m_rights)
        m_report.screen("For the rest, right-click check.cmd, \"Run as administrator\".");
    m_report.screen("");
    m_report.screen("Please send back this file:");
    m_report.screen("  " + toUtf8((m_kit.top / "report.txt").native()));
    return well ? allWell : somethingFailed;
}

int Check::run(bool player, const fs::path& playerPath) {
    if (!mayBegin(player)) return notTried;
    m_report.hide(m_kit.work, "(work)");
    m_report.hide(m_kit.top, "(kit)");
    m_report.file("OrVane's player plug-in: what was found on a machine");
    SYSTEMTIME now{};
    GetLocalTime(&now);
    char when[32];
    std::snprintf(when, sizeof(when), "%04d-%02d-%02d %02d:%02d", now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute);
    m_report.file(std::string("at: ") + when);
    tellMachine();
    m_report.screen("This tries OrVane's plug-in for Windows Media Player on this machine.");
    m_report.screen("What happens next:");
    m_report.screen(player ? "  The plug-in is registered, the real player is started with it, and "
                             "all of it\r\n  is taken away again. That takes about two minutes."
                           : "  Some twenty small programs run one after the other. That takes "
                             "three to\r\n  five minutes.");
    m_report.screen(
        "No music of yours is played, read or changed. What is changed on this machine");
    m_report.screen("meanwhile is put back in the end. Please leave OrVane and the player closed.");
    std::error_code error;
    fs::create_directories(m_kit.work, error);
    if (error || !m_before.remember(m_kit.programs() / "before.bin")) {
        m_report.both("No file can be written in this folder; nothing was done.");
        return notTried;
    }
    if (!player) runPrograms();
    runCourse(player, playerPath);
    return end();
}

int say(const Kit& kit, ExitCode code, const std::string& text) {
    Report(kit.top / "report.txt").both(text);
    return code;
}

int main(int argc, wchar_t** argv) {
    const Kit kit{topFolder(), fs::temp_directory_path() / "OrVane check"};
    const std::wstring what = argc > 1 ? argv[1] : L"";
    const UniqueHandle onlyOne(CreateMutexW(nullptr, FALSE, L"OrVaneCheck_Process"));
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        std::fputs("A check is running already; nothing was done.\n", stdout);
        return notTried;
    }
    Before cutShort;
    if (cutShort.recall(kit.programs() / "before.bin")) {
        removeFiles(kit);
        const std::string left = cutShort.putBack();
        const char* const words = "A check was cut short. What it had changed on this machine ";
        if (!left.empty())
            return say(kit, notTried,
                       words + ("could not all be put back; start this once more with \"Run as "
                                "administrator\". What is left: " +
                                left));
        say(kit, allWell, words + std::string("has been put back."));
    }
    if (what == L"putback") return allWell;
    const bool player = what == L"player";
    const fs::path path = argc > 2 ? fs::absolute(argv[2]) : realPlayer();
    if (!what.empty() && !player)
        return say(kit, notTried,
                   "There is only check.cmd, and check.cmd player; nothing was done.");
    if (player && path.empty())
        return say(kit, notTried, "Windows Media Player is not installed here; nothing was done.");
    return Check(kit).run(player, path);
}

}  // namespace
}  // namespace orvane::check

extern "C" int wmain(int argc, wchar_t** argv) {
    try {
        return orvane::check::main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "The check has failed: %s\n", error.what());
        return orvane::check::notTried;
    }
}
