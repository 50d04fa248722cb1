#include "standins/app/command_catalogue.h"

#include <algorithm>
#include <array>

#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

using Kind = ParameterForm::Kind;

const std::vector<ParameterForm> kListParameters = {
    {"playlistName", Kind::text, false, "what follows the folder's name in the playlist's name"},
    {"trackPaths", Kind::list, false, "the tracks, as a;b or given several times"}};
const ParameterForm kTrackPath = {"trackPath", Kind::path, true, "the track's file in the library"};
const ParameterForm kTrackIndex = {"trackIndex", Kind::number, true,
                                   "the track's place in the library, from 0"};
const ParameterForm kArtOut = {"albumArtPath", Kind::path, false,
                               "a file that receives the cover art"};
const ParameterForm kArtIn = {"albumArtPath", Kind::path, false,
                              "an image file that becomes the cover art"};
const ParameterForm kEmptyOk = {"emptyOk", Kind::yesNo, false, "yes or no (no)"};
const ParameterForm kMetadata = {"metadata", Kind::map, false,
                                 "fields to write: TrackTitle=... or metadata.TrackTitle=..."};

const char* const kReadMore =
    "  Answers metadataOut.TrackTitle and so on; with albumArtPath it is true only when\n"
    "  there was cover art to write into that file.\n";
const char* const kWriteMore =
    "  Answers true when the track is in the library. Without a field and without\n"
    "  albumArtPath nothing is called, and the response has no return value.\n"
    "  Example: setMediaInfoToIndex 0 TrackTitle=\"My Song\" Year=1999 emptyOk=no\n";

const std::vector<CommandForm>& table() {
    static const std::vector<CommandForm> commands = {
        {"createSpecialPlaylistFolders", true, "", "prepare the special playlists", "", {}},
        {"addToCleanedFolder", true, "playlistName=NAME trackPaths=A;B",
         "append tracks to OrVane:Cleaned", "", kListParameters},
        {"addToNotFoundFolder", true, "playlistName=NAME trackPaths=A;B",
         "append tracks to OrVane:NotFound", "", kListParameters},
        {"addToDirtyFolder", true, "playlistName=NAME trackPaths=A;B",
         "append tracks to OrVane:Dirty", "", kListParameters},
        {"pause", true, "", "pause the player", "", {}},
        {"stop", true, "", "stop the player and wait until it has", "", {}},
        {"startCurrent", true, "", "play the current track", "", {}},
        {"start", true, "trackPath=FILE", "play this track", "", {kTrackPath}},
        {"isPlaying", true, "", "is the player playing?", "", {}},
        {"isPaused", true, "", "is it paused?", "", {}},
        {"isShufflePlay", true, "", "is shuffle on?", "", {}},
        {"isRepeatTrack", true, "", "is the track repeated?", "", {}},
        {"isRepeatAll", true, "", "is the list repeated?", "", {}},
        {"isInSpecialMode", true, "", "is the player's window in its small mode?", "", {}},
        {"supportsRandomTrackAccess", true, "", "can tracks be addressed by index?", "", {}},
        {"getCurrentMediaInfo", true, "", "the current track's tags", "", {}},
        {"getMediaInfoFromPath",
         true,
         "trackPath=FILE [albumArtPath=FILE]",
         "a track's tags, by its file",
         kReadMore,
         {kTrackPath, kArtOut}},
        {"getMediaInfoFromIndex",
         true,
         "trackIndex=N [albumArtPath=FILE]",
         "a track's tags, by its place in the library",
         kReadMore,
         {kTrackIndex, kArtOut}},
        {"setMediaInfoToPath",
         true,
         "trackPath=FILE FIELD=VALUE... [albumArtPath=FILE] [emptyOk=yes]",
         "write a track's tags, by its file",
         kWriteMore,
         {kTrackPath, kArtIn, kEmptyOk, kMetadata}},
        {"setMediaInfoToIndex",
         true,
         "trackIndex=N FIELD=VALUE... [albumArtPath=FILE] [emptyOk=yes]",
         "write a track's tags, by its place in the library",
         kWriteMore,
         {kTrackIndex, kArtIn, kEmptyOk, kMetadata}},
        {"getTrackCount", true, "", "how many tracks the library has", "", {}},
        {"close", true, "", "ask the player to close", "", {}},
        {"sendSelectedTracks", true, "", "ask for the selected tracks", "", {}},

        {"help", false, "[COMMAND]", "this list, or all about one command", "", {}},
        {"list", false, "[BEGINNING]", "the names of the protocol's commands", "", {}},
        {"status", false, "", "who is connected, and what has come so far", "", {}},
        {"states", false, "", "ask every yes-or-no question at once", "", {}},
        {"clean-library",
         false,
         "[--cover=FILE|FOLDER] [--out=REPORT] [--playlist=NAME]",
         "clean every track: tags, cover art, playlists",
         "  Goes through the library by index, decides cleaned values, writes and reads back\n"
         "  each track, and files it as cleaned, dirty or not found. A cover folder holds\n"
         "  TRACKNAME.jpg or .png, or cover.jpg for all others. The report is a table with\n"
         "  tabs; art found before and after lies beside it.\n",
         {}},
        {"send", false, "NAME [KEY=VALUE]...", "send any command, unchecked", "", {}},
        {"raw", false, "HEX", "bytes onto the command pipe, as they are", "", {}},
        {"xml",
         false,
         "FILE|<TEXT>",
         "a frame around any document (a file's, or the text given)",
         "",
         {}},
        {"badmagic", false, "[COMMAND...]", "a frame whose magic is wrong", "", {}},
        {"badlength",
         false,
         "N [COMMAND...]",
         "a frame whose header claims N payload bytes",
         "",
         {}},
        {"cut",
         false,
         "N [COMMAND...]",
         "only a frame's first N bytes, then close the pipe",
         "",
         {}},
        {"slow", false, "[MS] [COMMAND...]", "a frame byte by byte", "", {}},
        {"burst", false, "N [COMMAND...]", "N frames at once", "", {}},
        {"drop",
         false,
         "[event|command]",
         "close the plug-in's connections; it comes back",
         "",
         {}},
        {"hold", false, "[event|command]", "stop reading, as if the application hung", "", {}},
        {"resume", false, "[event|command]", "read again", "", {}},
        {"expect",
         false,
         "WHAT... [within MS]",
         "check what has come, or comes within 5000 ms",
         "  expect event NAME [KEY=VALUE]...      the next such event; * stands for any text\n"
         "  expect no event NAME [within MS]      none comes meanwhile\n"
         "  expect response NAME [KEY=VALUE]...   a response that nobody has waited for\n"
         "  expect return true|false|none         about the last response\n"
         "  expect value KEY=VALUE...             about the last response\n"
         "  expect connected | disconnected       both pipes\n"
         "  expect problem TEXT                   the next frame or document that is wrong\n",
         {}},
        {"wait",
         false,
         "WHAT... [within MS]",
         "as expect, but no failure when it does not come",
         "",
         {}},
        {"sleep", false, "MS", "do nothing for so long", "", {}},
        {"set", false, "NAME VALUE", "from now on ${NAME} stands for the value", "", {}},
        {"keep", false, "NAME KEY", "as set, with a value of the last response", "", {}},
        {"patience", false, "MS", "how long to wait for a response (30000)", "", {}},
        {"step",
         false,
         "TITLE",
         "what the next checks are about; told as a whole at its end",
         "",
         {}},
        {"say", false, "TEXT", "print it", "", {}},
        {"on-failure", false, "stop|continue", "whether a script goes on (stop)", "", {}},
        {"quit", false, "", "end the application", "", {}},
    };
    return commands;
}

constexpr std::array<const char*, 21> kFieldNames = {
    "TrackTitle", "AlbumTitle", "AlbumArtist", "TrackArtist", "TrackNumber", "Genre",
    "Genre_2",    "Year",       "RelYear",     "BitRate",     "OVID",        "Composer",
    "LastPlayed", "PlayCount",  "Comments",    "Rating",      "PartOfSet",   "DiskNumber",
    "DisksInSet", "AlbumArt",   "Filename"};

std::string sharedBeginning(const std::vector<std::string>& names) {
    std::string shared = names.front();
    for (const std::string& name : names) {
        std::size_t same = 0;
        while (same < shared.size() && same < name.size() &&
               sameIgnoringCase(shared.substr(same, 1), name.substr(same, 1)))
            ++same;
        shared.resize(same);
    }
    return shared;
}

}  // namespace

std::span<const CommandForm> commandCatalogue() { return table(); }
std::span<const char* const> metadataFields() { return kFieldNames; }

Lookup findCommand(std::string_view typed) {
    Lookup lookup;
    const CommandForm* beginning = nullptr;
    for (const CommandForm& command : table()) {
        if (sameIgnoringCase(command.name, typed)) {
            lookup.command = &command;
            lookup.candidates.clear();
            return lookup;
        }
        if (startsWithIgnoringCase(command.name, typed)) {
            beginning = &command;
            lookup.candidates.emplace_back(command.name);
        }
    }
    if (lookup.candidates.size() == 1) {
        lookup.command = beginning;
        lookup.candidates.clear();
    }
    lookup.ambiguous = lookup.candidates.size() > 1;
    if (lookup.command || lookup.ambiguous) return lookup;
    const std::size_t tolerated = std::max<std::size_t>(1, typed.size() / 3);
    for (const CommandForm& command : table())
        if (distance(command.name, typed) <= tolerated)
            lookup.candidates.emplace_back(command.name);
    return lookup;
}

std::string lookupProblem(std::string_view typed, const Lookup& lookup) {
    if (lookup.command) return {};
    const std::string name = onOneLine(typed, 60);
    if (lookup.ambiguous) return "'" + name + "' may be " + join(lookup.candidates, ", ");
    const std::string problem = "there is no command '" + name + "'";
    if (lookup.candidates.empty()) return problem + "; 'help' lists them";
    return problem + "; did you mean " + join(lookup.candidates, " or ") + "?";
}

Completion complete(std::string_view line) {
    Completion result{std::string(line), {}};
    const auto wordAt = line.find_last_of(' ') == std::string_view::npos
                            ? std::size_t{0}
                            : line.find_last_of(' ') + 1;
    const std::string_view word = line.substr(wordAt);
    const std::string_view before = trimmed(line.substr(0, wordAt));
    const bool namesCommand =
        before.empty() || sameIgnoringCase(before, "help") || sameIgnoringCase(before, "list");

    std::vector<std::string> candidates;
    const auto offer = [&](std::string name) {
        if (startsWithIgnoringCase(name, word)) candidates.push_back(std::move(name));
    };
    if (namesCommand) {
        for (const CommandForm& command : table()) offer(std::string(command.name) + ' ');
    } else if (const auto command = findCommand(split(before, ' ').front()).command) {
        for (const ParameterForm& parameter : command->parameters) {
            if (parameter.kind != Kind::map) {
                offer(std::string(parameter.name) + '=');
                continue;
            }
            for (const char* field : kFieldNames) offer(std::string(field) + '=');
        }
    }
    if (candidates.empty()) return result;
    const std::string shared = sharedBeginning(candidates);
    if (shared.size() >= word.size()) result.line = std::string(line.substr(0, wordAt)) + shared;
    if (candidates.size() > 1)
        for (const std::string& candidate : candidates)
            result.candidates.emplace_back(trimmed(candidate));
    return result;
}

std::string helpOverview() {
    std::string text = "Sent to the plug-in (a beginning is enough while it is the only one):\n";
    bool sent = true;
    for (const CommandForm& command : table()) {
        if (sent && !command.sent) text += "\nOf this program:\n";
        sent = command.sent;
        std::string left = std::string("  ") + command.name;
        if (!sent && *command.usage) left += std::string(" ") + command.usage;
        text += (left.size() < 34 ? fitted(left, 34) : left + "\n" + std::string(34, ' ')) +
                command.summary + "\n";
    }
    text +=
        "\nParameters are KEY=VALUE, or values alone in their order; \"in quotes\" with spaces,\n"
        "\"\" for a quote inside. 'help COMMAND' tells a command's parameters, TAB completes.\n";
    return text;
}

std::string helpFor(const CommandForm& command) {
    std::string text = std::string(command.name) + (*command.usage ? " " : "") + command.usage +
                       "\n  " + command.summary + "\n";
    for (const ParameterForm& parameter : command.parameters)
        text += "    " + fitted(parameter.name, 14) + parameter.what +
                (parameter.needed ? "" : " (may be left out)") + "\n";
    return text + command.more;
}

}  // namespace orvane::standin::app
