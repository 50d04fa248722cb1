#pragma once

// Runs a player with the plug-in and the stand-in application, which executes a script.

#include <windows.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "check/kit.h"
#include "harness/child.h"

namespace orvane::check {

struct Tick {
    bool good = false;
    std::string what;
};

// The results of a run.
struct RunResult {
    std::vector<Tick> ticks{};
    std::string problems{};  // lines: what went wrong
    std::string details{};   // lines for the report: the conversation
    [[nodiscard]] unsigned missed() const;
};

// Receives each line that a run prints.
using Show = std::function<void(const std::string& line)>;

// Registers or unregisters the plug-in, and sets OrVane's folder in the registry to the kit's
// programs. Needs administrator rights; MachineBackup restores the changes. Returns the error, or
// an empty text.
[[nodiscard]] std::string registerPlugin(const Kit& kit, bool registered = true);

// The start parameters for `player`, with its files in `folder`. The application that the plug-in
// starts will run `script` and write transcript.txt.
[[nodiscard]] test::Child::Start playerStart(const std::filesystem::path& player,
                                             const std::wstring& options,
                                             const std::filesystem::path& folder,
                                             const std::string& script);

// The transcript that the application wrote while it ran its script.
struct Transcript {
    std::string text;
    std::string problem;  // it did not start, or not finish in time; empty when it finished
    [[nodiscard]] bool has(std::string_view words) const;
    // A tick for each step of the script.
    [[nodiscard]] std::vector<Tick> stepsOf(const std::string& script) const;
};
// Receives each line of a transcript, and its words without the time.
using ReadLine = std::function<void(const std::string& line, const std::string& words)>;
// Reads a transcript until the script has ended.
[[nodiscard]] Transcript followTranscript(const std::filesystem::path& file, DWORD limitMs,
                                          const ReadLine& read);

// The demo: the stand-in player and application with the registered plug-in, on copies of the
// sample tracks. About half a minute. `linkOnly` leaves out the cleaning of the library.
[[nodiscard]] RunResult runDemo(const Kit& kit, bool linkOnly, const Show& show);

// Asks the system's player object, and the window of the player that is open, for the rules of
// docs/player-rules.md: a line for each. Copies of a sample track are in the player's library
// meanwhile. Some fifteen seconds. The calling thread has no COM apartment yet, or a
// single-threaded one.
[[nodiscard]] std::string askPlayer(const Kit& kit);

// The registered plug-in in the real player, with the stand-in application. About a minute.
[[nodiscard]] RunResult runRealPlayer(const Kit& kit, const std::filesystem::path& player);

// The stand-in application at its prompt, which has this program's console or streams, and the
// stand-in player. `library` is the folder of tracks, or empty for copies of the samples. Returns
// when the application has ended.
void runConsole(const Kit& kit, const std::filesystem::path& library);

}  // namespace orvane::check
