#pragma once

// Asks a player, through its automation interfaces and its window, whether it keeps the rules that
// the plug-in relies on. docs/player-rules.md lists the rules, under the names that are used here.

#include <windows.h>

#include <wmp.h>

#include <filesystem>
#include <string>
#include <vector>

namespace orvane::probe {

enum class Answer { asDocumented, different, notAsked };

struct Finding {
    std::string rule;
    Answer answer = Answer::notAsked;
    std::string seen;  // what was seen, or why it could not be asked; UTF-8
};

struct Subject {
    IWMPCore* core = nullptr;      // not counted; its objects belong to the calling thread
    HWND window = nullptr;         // the player's main window, of any process; null: there is none
    std::filesystem::path sample;  // an ASF music file, only read
    std::filesystem::path folder;  // exists; copies of the sample are put there
    bool mayPlay = true;           // copies may be played, without sound
};

// All rules, in the order in which they are asked.
std::vector<std::string> ruleNames();

// Asks every rule, one after the other, dispatching the thread's messages while it waits; some ten
// seconds. Copies and a playlist are added to the player's library and removed from it again;
// copies that an interrupted run left in the same folder as well. The files stay in the folder. The
// thread is a single-threaded apartment. Nothing throws but std::bad_alloc.
std::vector<Finding> ask(const Subject& subject);

// "as documented", "different: ..." or "could not be asked: ...".
std::string describe(const Finding& finding);

}  // namespace orvane::probe
