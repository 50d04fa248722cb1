#include "check/run.h"
#include "common/names/names.h"
#include "harness/files.h"

namespace orvane::check {

namespace fs = std::filesystem;

void runConsole(const Kit& kit, const fs::path& library) {
    const fs::path folder = kit.work / "console";
    fs::path tracks = library;
    if (tracks.empty()) copyTracks(kit.tracks(), tracks = folder / "music");
    fs::create_directories(folder);
    const fs::path transcript = folder / "transcript.txt";
    fs::remove(transcript);
    // The application comes first and holds its pipes; the plug-in then finds it running.
    test::Child::Start start;
    start.folder = kit.programs;
    start.interactive = true;
    start.commandLine = quoted(kit.programs / names::kApplicationFile.narrow()) +
                        L" \"--transcript=" + transcript.native() + L"\"";
    const test::Child application(start);
    while (test::readText(transcript).find("  ready: ") == std::string::npos)
        if (application.exitCode(50)) return;
    start.interactive = false;
    start.output = folder / "player.txt";
    start.commandLine =
        quoted(kit.programs / "player.exe") + L" \"--library=" + tracks.native() + L"\"";
    const test::Child player(start);
    static_cast<void>(application.exitCode(INFINITE));
}

}  // namespace orvane::check
