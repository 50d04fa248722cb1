// check.exe: tries the plug-in on this machine; check.cmd starts it. Wherever it ends, the machine
// is as it was before.
//   check.exe                    the test programs and the demo; writes report.txt
//   check.exe player [PATH]      the plug-in in the real player (or the one named); writes
//   report.txt check.exe demo               the demo alone, with its conversation on the screen
//   check.exe console [FOLDER]   the stand-in application's prompt, with a player; FOLDER's tracks
//                                themselves are the library, without it copies of the samples
//   check.exe putback            only restores what a check that was cut short left
// Options: --work=FOLDER keeps all files of the run there; for the demo, --link leaves out the
// cleaning of the library, and --installed takes the plug-in and the application that are
// registered. Exit code: 0 all was well, 1 something was not, 2 it could not be tried.

#include <windows.h>

#include <cstdio>
#include <span>
#include <string>
#include <string_view>

#include "check/check.h"

namespace orvane::check {
namespace {

namespace fs = std::filesystem;

int say(const Kit& kit, ExitCode code, const std::string& text) {
    Report(kit.report()).both(text);
    return code;
}

// False when there is a word too many, or one that is not known.
bool readWords(int argc, wchar_t** argv, Kit& kit, Job& job) {
    constexpr std::wstring_view kWork = L"--work=";
    std::vector<std::wstring_view> words;
    for (const std::wstring_view word : std::span(argv + 1, static_cast<std::size_t>(argc - 1))) {
        if (word.starts_with(kWork)) {
            kit.work = fs::absolute(word.substr(kWork.size()));
            kit.keepsWork = true;
        } else if (word == L"--installed") {
            job.installed = true;
        } else {
            words.push_back(word);
        }
    }
    if (!words.empty()) job.what = words[0];
    if (words.size() > 1) job.path = fs::absolute(words[1]);
    const bool takesPath = job.what == L"player" || job.what == L"console";
    return words.size() <= (takesPath ? 2 : 1) && (job.what == L"demo" || !job.installed) &&
           (takesPath || words.empty() || job.what == L"demo" || job.what == L"putback");
}

int main(int argc, wchar_t** argv) {
    const UniqueHandle onlyOne(CreateMutexW(nullptr, FALSE, L"OrVaneCheck_Process"));
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        std::fputs("A check is running already; nothing was done.\n", stdout);
        return notTried;
    }
    Kit kit = findKit();
    Job job;
    const bool understood = readWords(argc, argv, kit, job);
    MachineBackup cutShort;
    if (cutShort.load(kit.backup())) {
        removeFiles(kit);
        const std::string left = cutShort.restore();
        const std::string words = "A check was cut short. What it had changed on this machine ";
        if (!left.empty())
            return say(kit, notTried,
                       words +
                           "could not all be put back; start this once more with \"Run as "
                           "administrator\". What is left: " +
                           left);
        say(kit, allWell, words + "has been put back.");
    }
    if (job.what == L"putback") return allWell;
    if (!understood)
        return say(kit, notTried,
                   "There are only check.cmd, check.cmd player, check.cmd demo and check.cmd "
                   "console; nothing was done.");
    if (job.what == L"player" && job.path.empty()) job.path = realPlayer();
    if (job.what == L"player" && job.path.empty())
        return say(kit, notTried, "Windows Media Player is not installed here; nothing was done.");
    return Check(kit, job).run();
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
