// The plug-in in the real player. Nothing is played and no file is written: the player would keep
// it in its user's library.

#include <windows.h>

#include <fstream>

#include "packaging/check/child.h"
#include "packaging/check/demo.h"
#include "packaging/check/transcript.h"

namespace orvane::check {
namespace {

constexpr DWORD kWholeMs = 240'000;

void changeWindow(const std::string& how) {
    const HWND window = FindWindowW(L"WMPlayerApp", nullptr);
    if (how == "move") SetWindowPos(window, nullptr, 60, 40, 800, 600, SWP_NOZORDER);
    if (how == "maximise") ShowWindow(window, SW_MAXIMIZE);
    if (how == "minimise") ShowWindow(window, SW_MINIMIZE);
    if (how == "restore") ShowWindow(window, SW_RESTORE);
}

// Also one that went on as another process than the one we started.
bool closePlayer() {
    for (int i = 0; i < 100; ++i, Sleep(100)) {
        const HWND window = FindWindowW(L"WMPlayerApp", nullptr);
        if (window == nullptr) return true;
        if (i % 50 == 0) PostMessageW(window, WM_CLOSE, 0, 0);
    }
    return false;
}

}  // namespace

Course runRealPlayer(const Kit& kit, const std::filesystem::path& player) {
    Course course;
    const auto folder = kit.work / "player";
    std::filesystem::create_directories(folder);
    const std::string script = contentOf(kit.scripts() / "real-player.txt");
    std::ofstream(folder / "script.txt", std::ios::binary) << script;

    Child::Start start;
    start.folder = player.parent_path();
    start.output = folder / "player.txt";
    start.commandLine = L"\"" + player.native() + L"\"";
    start.environment = {{L"ORVANE_APP_SCRIPT", (folder / "script.txt").native()},
                         {L"ORVANE_APP_TRANSCRIPT", (folder / "transcript.txt").native()}};
    Transcript transcript(folder / "transcript.txt");
    bool closed = false;
    {
        const Child child(start);
        if (child.error != 0)
            course.details +=
                "the player did not start: error " + std::to_string(child.error) + "\n";
        else
            course.details += transcript.follow(kWholeMs, [](const std::string& said) {
                if (said.starts_with("window> ")) changeWindow(said.substr(8));
            });
        closed = closePlayer();
    }
    const std::string& text = transcript.text();
    const auto seen = [&](const char* what) { return text.find(what) != std::string::npos; };
    for (const std::string& title : stepsIn(script))
        course.ticks.push_back({seen(("  step good: " + title).c_str()), title});
    for (const char* const event :
         {"PlayerShown", "PlayerMoved", "PlayerMaximized", "PlayerMinimized"})
        course.ticks.push_back({seen((std::string("  event     ") + event).c_str()),
                                std::string("The application got the event ") + event});
    course.ticks.push_back(
        {seen("launched by wmp"), "The plug-in started the application, through the registry"});
    course.ticks.push_back({closed, "The player has closed"});
    course.details += "--- what the application saw\n" + text;
    if (const std::string said = contentOf(start.output); !said.empty())
        course.details += "--- what the player printed\n" + said;
    return course;
}

}  // namespace orvane::check
