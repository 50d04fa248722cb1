// The plug-in in the real player. It plays nothing and writes no file: the player would keep that
// in its user's library. Only the questions for the player's rules do, with copies of a sample
// track.

#include <windows.h>

#include "check/machine.h"
#include "check/run.h"
#include "harness/files.h"

namespace orvane::check {
namespace {

constexpr DWORD kWholeMs = 240'000;

void changeWindow(const std::string& how) {
    const HWND window = playerWindow();
    if (how == "move") SetWindowPos(window, nullptr, 60, 40, 800, 600, SWP_NOZORDER);
    if (how == "maximise") ShowWindow(window, SW_MAXIMIZE);
    if (how == "minimise") ShowWindow(window, SW_MINIMIZE);
    if (how == "restore") ShowWindow(window, SW_RESTORE);
}

// Also one that went on as another process than the one we started.
bool closePlayer() {
    for (int i = 0; i < 100; ++i, Sleep(100)) {
        const HWND window = playerWindow();
        if (window == nullptr) return true;
        if (i % 50 == 0) PostMessageW(window, WM_CLOSE, 0, 0);
    }
    return false;
}

}  // namespace

RunResult runRealPlayer(const Kit& kit, const std::filesystem::path& player) {
    const std::string script = test::readText(kit.scripts() / "real-player.txt");
    const auto folder = kit.work / "player";
    const auto start = playerStart(player, {}, folder, script);
    RunResult result;
    Transcript transcript;
    std::string rules = "not asked: the script did not come so far\n";
    bool closed = false;
    {
        const test::Child child(start);
        transcript = followTranscript(folder / "transcript.txt", kWholeMs,
                                      [&](const std::string&, const std::string& words) {
                                          if (words == "window> rules")
                                              rules = askPlayer(kit);
                                          else if (words.starts_with("window> "))
                                              changeWindow(words.substr(8));
                                      });
        closed = closePlayer();
    }
    result.ticks = transcript.stepsOf(script);
    for (const char* const event :
         {"PlayerShown", "PlayerMoved", "PlayerMaximized", "PlayerMinimized"})
        result.ticks.push_back({transcript.has(std::string("  event     ") + event),
                                std::string("The application got the event ") + event});
    result.ticks.push_back({transcript.has("launched by wmp"),
                            "The plug-in started the application, through the registry"});
    result.ticks.push_back({closed, "The player has closed"});
    result.problems = transcript.problem;
    result.details = "--- the player's rules\n" + rules + "--- what the application saw\n" +
                     transcript.text + "--- what the player printed\n" +
                     test::readText(start.output);
    return result;
}

}  // namespace orvane::check
