#include "standins/app/words.h"

#include <thread>

#include "common/messages/frame.h"
#include "standins/app/clean_library.h"

namespace orvane::standin::app {
namespace {

StringArray after(const StringArray& words, int count) {
    StringArray rest = words;
    rest.removeRange(0, count);
    return rest;
}

// The command that the words spell, "getTrackCount" when there are none; "" or what is wrong.
String spell(const StringArray& words, std::optional<OrvaneCommand>& command) {
    String problem;
    const Word* const word = findWord(words.isEmpty() ? "getTrackCount" : words[0], problem);
    if (word == nullptr) return problem;
    if (word->run != nullptr) return String(word->name) + " is not sent to the plug-in";
    command.emplace(word->name);
    return fillCommand(*command, *word, after(words, 1));
}

Outcome sendUnchecked(Interpreter& interpreter, const StringArray& words) {
    const auto pairs = pairsOf(after(words, 1));
    if (words.isEmpty() || !pairs) return interpreter.wrong("it goes: send NAME [KEY=VALUE]...");
    OrvaneCommand command(words[0]);
    for (const String& key : pairs->getAllKeys()) command.setValue(key, (*pairs)[key]);
    return interpreter.askOnce(command);
}

Outcome askStates(Interpreter& interpreter, const StringArray&) {
    String states;
    for (const char* question : {"isPlaying", "isPaused", "isShufflePlay", "isRepeatTrack",
                                 "isRepeatAll", "isInSpecialMode", "supportsRandomTrackAccess"}) {
        const auto response = interpreter.ask(OrvaneCommand(question));
        if (response == nullptr) return interpreter.failed(interpreter.noAnswer());
        states << "  " << question << "=" << asWord(response->getValue("return_value"));
    }
    interpreter.host().print("states:" + states);
    return Outcome::done;
}

Outcome cleanAll(Interpreter& interpreter, const StringArray& words) {
    CleanOptions options;
    for (const String& word : words) {
        const String value = word.fromFirstOccurrenceOf("=", false, false);
        // The player opens these files too, and has another current folder.
        const auto file = juce::File::getCurrentWorkingDirectory().getChildFile(value);
        if (word.startsWith("--cover="))
            options.cover = file;
        else if (word.startsWith("--out="))
            options.report = file;
        else if (word.startsWith("--playlist="))
            options.playlistName = value;
        else
            return interpreter.wrong("clean-library has no option '" + onOneLine(word, 60) + "'");
    }
    const CleanResult result = cleanLibrary(
        options, [&](const OrvaneCommand& command) { return interpreter.ask(command); },
        [&](const String& line) { interpreter.host().print(line); });
    if (result.error.isNotEmpty()) return interpreter.failed(result.error);
    const String summary = "clean-library: " + String(result.tracks.size()) + " tracks, " +
                           String(result.troubled()) + " with problems";
    return result.troubled() > 0 ? interpreter.failed(summary) : interpreter.met(summary);
}

Outcome sendBadMagic(Interpreter& interpreter, const StringArray& words) {
    std::optional<OrvaneCommand> command;
    if (const String problem = spell(words, command); problem.isNotEmpty())
        return interpreter.wrong(problem);
    // A reader that refuses a header takes the next eight bytes for one, and so on: only a payload
    // of whole eights leaves it where the next frame begins.
    auto payload = command->toPayload();
    payload.resize((payload.size() + 7) / 8 * 8);
    auto frame = frame::encode(payload);
    frame[0] = 0xEF;
    return interpreter.sendBytes(frame, "a bad magic");
}

Outcome sendDocument(Interpreter& interpreter, const StringArray& words) {
    juce::MemoryBlock document(words[0].toRawUTF8(), words[0].getNumBytesAsUTF8());
    if (!words[0].startsWithChar('<')) {
        const auto file =
            juce::File::getCurrentWorkingDirectory().getChildFile(words[0].unquoted());
        document.reset();
        if (words[0].isEmpty() || !file.loadFileAsData(document))
            return interpreter.wrong("xml takes a file, or a document that begins with <");
    }
    document.append("", 1);  // the zero byte at its end
    const auto* const bytes = static_cast<const std::uint8_t*>(document.getData());
    return interpreter.sendBytes(frame::encode({bytes, document.getSize()}), "a document");
}

Outcome sendSlowly(Interpreter& interpreter, const StringArray& words) {
    const auto pause = parseNumber(words[0]);
    std::optional<OrvaneCommand> command;
    const String problem = spell(after(words, pause ? 1 : 0), command);
    return problem.isEmpty() ? interpreter.askOnce(*command, pause.value_or(1))
                             : interpreter.wrong(problem);
}

Outcome sendBurst(Interpreter& interpreter, const StringArray& words) {
    const int times = parseNumber(words[0]).value_or(0);
    if (times < 1 || times > 10'000) return interpreter.wrong("burst takes 1 to 10000 frames");
    std::optional<OrvaneCommand> command;
    const String problem = spell(after(words, 1), command);
    return problem.isEmpty() ? interpreter.askAtOnce(*command, times) : interpreter.wrong(problem);
}

Outcome drop(Interpreter& interpreter, const StringArray& words) {
    const String& which = words[0];
    if (words.size() > 1 || (which.isNotEmpty() && which != "event" && which != "command"))
        return interpreter.wrong("which pipe? event, command, or nothing for both");
    if (which != "command") interpreter.host().drop(PipeId::event);
    if (which != "event") interpreter.host().drop(PipeId::command);
    return Outcome::done;
}

Outcome hold(Interpreter& interpreter, const StringArray& words) {
    const String& which = words[0];
    if (words.size() > 1 || !StringArray({"", "event", "command", "off"}).contains(which))
        return interpreter.wrong("which pipe? event, command, nothing for both, or off");
    interpreter.host().hold(PipeId::event, which.isEmpty() || which == "event");
    interpreter.host().hold(PipeId::command, which.isEmpty() || which == "command");
    interpreter.host().print(which == "off" ? "reading again"
                                            : "not reading any more; 'hold off' reads again");
    return Outcome::done;
}

Outcome keep(Interpreter& interpreter, const StringArray& words) {
    const MessagePtr& response = interpreter.lastResponse();
    if (words.size() != 2) return interpreter.wrong("it goes: keep track metadataOut.Filename");
    const auto value = response ? valueIn(*response, words[1]) : std::nullopt;
    if (!value) return interpreter.failed("the last response has no " + words[1] + " to keep");
    interpreter.variables()[words[0]] = *value;
    return Outcome::done;
}

Outcome help(Interpreter& interpreter, const StringArray& words) {
    String text = helpOverview();
    if (!words.isEmpty()) {
        String problem;
        const Word* const word = findWord(words[0], problem);
        if (word == nullptr) return interpreter.wrong(problem);
        text = helpFor(*word);
    }
    interpreter.host().print(text, false);
    return Outcome::done;
}

constexpr const char* kListUsage = "[playlistName=NAME] [trackPaths=A;B]";
constexpr const char* kReadHelp =
    "a track's tags, and its cover art into a file\n"
    "With albumArtPath it answers true only when there was cover art for that file.";
constexpr const char* kWriteHelp =
    "write a track's tags and cover art\n"
    "Fields as in setMediaInfoToIndex 0 TrackTitle=\"My Song\" Year=1999. Without a field\n"
    "and without albumArtPath nothing is called: the response has no return value.";

constexpr Word kWords[] = {
    {"createSpecialPlaylistFolders", "", "prepare the special playlists"},
    {"addToCleanedFolder", kListUsage, "append tracks to OrVane:Cleaned"},
    {"addToNotFoundFolder", kListUsage, "append tracks to OrVane:NotFound"},
    {"addToDirtyFolder", kListUsage, "append tracks to OrVane:Dirty"},
    {"pause", "", "pause the player"},
    {"stop", "", "stop the player and wait until it has"},
    {"startCurrent", "", "play the current track"},
    {"start", "trackPath=FILE", "play this track"},
    {"isPlaying", "", "is the player playing?"},
    {"isPaused", "", "is it paused?"},
    {"isShufflePlay", "", "is shuffle on?"},
    {"isRepeatTrack", "", "is the track repeated?"},
    {"isRepeatAll", "", "is the list repeated?"},
    {"isInSpecialMode", "", "is the player's window in its small mode?"},
    {"supportsRandomTrackAccess", "", "can tracks be addressed by index?"},
    {"getCurrentMediaInfo", "", "the current track's tags"},
    {"getMediaInfoFromPath", "trackPath=FILE [albumArtPath=FILE]", kReadHelp},
    {"getMediaInfoFromIndex", "trackIndex=N [albumArtPath=FILE]", kReadHelp},
    {"setMediaInfoToPath", "trackPath=FILE [albumArtPath=FILE] [emptyOk=yes|no] [FIELD=VALUE]",
     kWriteHelp},
    {"setMediaInfoToIndex", "trackIndex=N [albumArtPath=FILE] [emptyOk=yes|no] [FIELD=VALUE]",
     kWriteHelp},
    {"getTrackCount", "", "how many tracks the library has"},
    {"close", "", "ask the player to close"},
    {"sendSelectedTracks", "", "ask for the selected tracks"},

    {"help", "[WORD]", "this list, or all about one word", help},
    {"states", "", "ask every yes-or-no question at once", askStates},
    {"clean-library", "[--cover=FILE|FOLDER] [--out=REPORT] [--playlist=NAME]",
     "clean every track: tags, cover art, playlists\n"
     "Goes through the library by index, decides cleaned values, writes and reads back each\n"
     "track, and files it as cleaned, dirty or not found. A cover folder holds TRACKNAME.jpg\n"
     "or .png, or cover.jpg for all others. The report is a table with tabs; the art found\n"
     "before and after lies beside it.",
     cleanAll},
    {"send", "NAME [KEY=VALUE]...", "send any command, unchecked", sendUnchecked},
    {"xml", "FILE|<TEXT>", "send any document, a file's or the text given", sendDocument, true},
    {"badmagic", "[COMMAND...]", "send a frame whose magic is wrong", sendBadMagic},
    {"slow", "[MS] [COMMAND...]", "send a frame byte by byte", sendSlowly},
    {"burst", "N [COMMAND...]", "send N frames at once", sendBurst},
    {"drop", "[event|command]", "close the plug-in's connections; it comes back", drop},
    {"hold", "[event|command|off]", "read no more, as an application that hangs", hold},
    {"expect", "WHAT... [within MS]",
     "check what has come, or comes within 5000 ms\n"
     "expect event NAME [KEY=VALUE]...    the next such event; * stands for any text\n"
     "expect no event NAME [within MS]    none comes meanwhile\n"
     "expect return true|false            about the last response\n"
     "expect value KEY=VALUE...           about the last response\n"
     "expect connected | disconnected     both pipes",
     [](Interpreter& interpreter, const StringArray& words) { return interpreter.expect(words); }},
    {"set", "NAME VALUE", "from now on ${NAME} stands for the value",
     [](Interpreter& interpreter, const StringArray& words) {
         if (words.size() != 2) return interpreter.wrong("it goes: set track \"C:\\a b.wma\"");
         interpreter.variables()[words[0]] = words[1];
         return Outcome::done;
     }},
    {"keep", "NAME KEY", "as set, with a value of the last response", keep},
    {"step", "TITLE", "what the next checks are about; told as a whole at its end",
     [](Interpreter& interpreter, const StringArray& words) {
         interpreter.beginStep(words[0]);
         return Outcome::done;
     },
     true},
    {"say", "TEXT", "print it",
     [](Interpreter& interpreter, const StringArray& words) {
         interpreter.host().print(words[0]);
         return Outcome::done;
     },
     true},
    {"sleep", "MS", "do nothing for so long",
     [](Interpreter& interpreter, const StringArray& words) {
         const auto time = parseNumber(words[0]);
         if (!time) return interpreter.wrong("sleep takes milliseconds: sleep 500");
         std::this_thread::sleep_for(std::chrono::milliseconds(*time));
         return Outcome::done;
     }},
    {"quit", "", "end the application",
     [](Interpreter&, const StringArray&) { return Outcome::quit; }},
};

}  // namespace

std::span<const Word> allWords() { return kWords; }

}  // namespace orvane::standin::app
