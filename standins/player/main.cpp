// player.exe: the stand-in player as a program of its own. --help tells options and commands.
//
// It prints one line on standard output for each thing done, "player: " and what, in UTF-8. Exit
// code 0: closed as asked, and every script command understood and its wait fulfilled; 1: not so;
// 2: it could not start.

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "standins/player/com_support.h"
#include "standins/player/main_window.h"
#include "standins/player/model.h"
#include "standins/player/player.h"
#include "standins/player/player_options.h"
#include "standins/player/plugin_host.h"
#include "standins/player/plugin_module.h"
#include "standins/player/script.h"

namespace orvane::standin {

namespace {

constexpr int kCouldNotStart = 2;

void print(const std::string& line) {
    const std::string text = "player: " + line + "\n";
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

int fail(const std::string& why) {
    std::fprintf(stderr, "player: %s\n", why.c_str());
    return kCouldNotStart;
}

// As the system took the command line apart: the runtime's own arguments are not Unicode.
std::vector<std::wstring> commandLine() {
    int count = 0;
    wchar_t** words = CommandLineToArgvW(GetCommandLineW(), &count);
    if (words == nullptr) return {};
    std::vector<std::wstring> arguments(words + 1, words + count);
    LocalFree(words);
    return arguments;
}

bool readScript(const std::wstring& path, Script& script) {
    std::ifstream file{std::filesystem::path(path)};
    if (!file) return false;
    for (std::string line; std::getline(file, line);) script.feed(line);
    return true;
}

// Hands each line to the player's thread. The thread is left behind at the end of the program: a
// read from the console cannot be called off.
void readStandardInput(const std::shared_ptr<Model>& model, Script& script) {
    std::thread([model, &script] {
        for (std::string line; std::getline(std::cin, line);)
            model->apartment.post([&script, line] { script.feed(line); });
    }).detach();
}

// A plug-in that is at work on a file is asked again, until it lets the player go.
void handleClose(Player& player) {
    constexpr unsigned kAskAgainMs = 100;
    if (player.window() == nullptr) return;
    if (!player.plugins().mayClose()) {
        player.model().apartment.postLater(kAskAgainMs, [&player] { handleClose(player); });
        return;
    }
    print("closing");
    player.plugins().unloadAll();
    DestroyWindow(player.window());
    PostQuitMessage(0);
}

void runMessageLoop() {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

int run(const PlayerOptions& options) {
    const ComApartment com;
    Player player(options);
    std::string error;
    if (!player.openLibrary(error)) return fail(error);
    if (!player.createWindow()) return fail("the main window cannot be made: --help");

    const ModelPtr model = player.model().shared_from_this();
    model->report = print;
    player.plugins().report = print;
    player.mainWindow()->onClose = [&] { handleClose(player); };
    PluginModule module;
    if (!options.plugin.empty() && !module.load(options.plugin, error)) return fail(error);
    print("library of " + std::to_string(player.itemCount()) + " item(s)");
    if (!options.plugin.empty()) {
        waitForApplication(print);
        player.plugins().load(PluginModule::classId());
    } else {
        print(std::to_string(player.plugins().loadRegistered()) + " plug-in(s) loaded");
    }
    ShowWindow(player.window(), SW_SHOW);

    Script script(player, print);
    if (options.script == L"-")
        readStandardInput(model, script);
    else if (!options.script.empty() && !readScript(options.script, script))
        return fail("the script " + toUtf8(options.script) + " cannot be read");

    runMessageLoop();
    player.plugins().freeModules();
    print(std::to_string(player.sinkCount()) + " event sink(s) left; closed");
    print(std::to_string(usesOnOtherThreads()) + " use(s) of its objects on other threads");
    const bool kept = !kOtherThreadsRefused || usesOnOtherThreads() == 0;
    return kept && script.failures() == 0 ? 0 : 1;
}

}  // namespace

}  // namespace orvane::standin

int main() try {
    using namespace orvane::standin;
    _setmode(_fileno(stdout), _O_BINARY);
    PlayerOptions options;
    options.documentedAttributes = false;
    std::string error;
    if (!parseOptions(commandLine(), options, error)) return fail(error);
    if (options.help) {
        std::fputs(usageText().c_str(), stdout);
        return 0;
    }
    return run(options);
} catch (const std::exception& e) {
    return orvane::standin::fail(e.what());
}
