#pragma once

// What the stand-in player is told about its library, its moods and its window, by a test or by
// the command line.

#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvane::standin {

// Whether the player's objects refuse calls from other threads, and every test and program ends
// with no use of them there (see usesOnOtherThreads). Off for as long as the plug-in makes some.
inline constexpr bool kOtherThreadsRefused = true;

struct PlayerOptions {
    static constexpr unsigned kNever = ~0U;

    // Library. The folder is read once, with its subfolders; items are listed by path.
    std::filesystem::path library;
    unsigned synthetic = 0;               // further items without files, tags kept in memory
    std::vector<std::wstring> listTwice;  // a path that contains one of these is listed twice

    // Tags. What is set is in the library at once; the file follows so much later, or kNever.
    unsigned tagsAfterMs = 0;
    // Which attributes of a library item its file has is as documented: ReleaseDate is the
    // library's alone, WM/PartOfSet and Description are only of files outside the library, and what
    // is not known lives as long as the media object. When false, all of them are read from and
    // written to the file.
    bool documentedAttributes = true;

    // Playback. Real players take their time; tiny samples would end before anybody could look.
    unsigned startDelayMs = 120;  // transitioning, then playing
    unsigned stopDelayMs = 30;
    unsigned pauseDelayMs = 20;
    unsigned trackLengthMs = 60000;  // a track plays at least that long
    std::set<long> neverReached;     // play states that are never reached
    std::wstring refusePath;         // put_URL fails for a path that contains this; empty: none

    // Settings modes by name.
    std::map<std::wstring, bool> modes = {
        {L"shuffle", false}, {L"autoRewind", true}, {L"loop", false}};

    std::wstring language = L"en";  // of the window's caption

    // Faults.
    std::vector<long> errors;          // error codes in the player's error list
    std::set<std::string> failCalls;   // "IWMPCore::get_controls": that call gives E_FAIL
    std::set<std::wstring> failReads;  // attributes that cannot be read
    // A test's: asked ahead of each call, where it is served; an answer but S_OK is the call's.
    std::function<long(const std::string& call)> onCall;

    // Calls from other threads get RPC_E_WRONG_THREAD.
    bool refuseOtherThreads = kOtherThreadsRefused;
    // Otherwise: true hands each to the player's own thread, as a player with
    // apartment objects does; false serves them where they are made, under a lock.
    bool serveOnOwnThread = false;

    // The program only.
    std::wstring plugin;  // a module to load in place of the registered plug-ins, empty: none
    std::wstring script;  // file with commands, "-": standard input, empty: none
    bool help = false;
};

// Reads "--key=value" arguments (without the program's name). False with a sentence in `error`
// when one is unknown or malformed.
bool parseOptions(const std::vector<std::wstring>& arguments, PlayerOptions& options,
                  std::string& error);

// Pieces of it that script commands take as well: a decimal number, the play state that
// "playing", "paused" or "stopped" names.
bool readNumber(const std::wstring& text, unsigned& number);
bool readState(const std::wstring& text, long& state);

// All options and script commands, for --help.
std::string usageText();

}  // namespace orvane::standin
