#include "standins/app/words.h"

#include "common/messages/frame.h"
#include "standins/app/clean_library.h"

namespace orvane::standin::app {
namespace {

StringArray after(const StringArray& words, int count) {
    StringArray rest = words;
    rest.removeRange(0, count);
    return rest;
}

// The command that the words from `first` on name, "getTrackCount" when there are none.
OrvaneCommand commandIn(const StringArray& words, int first) {
    const StringArray rest = after(words, first);
    const String typed = rest.isEmpty() ? "getTrackCount" : rest[0];
    const Word& word = findWord(typed);
    if (word.run != nullptr) throw Failure{String(word.name) + " is not sent to the plug-in"};
    return commandFrom(word, after(rest, 1));
}

juce::File fileAt(const String& path) {
    return juce::File::getCurrentWorkingDirectory().getChildFile(path);
}

void sendUnchecked(Interpreter& interpreter, const StringArray& words) {
    constexpr const char* usage = "it goes: send NAME [KEY=VALUE]...";
    if (words.isEmpty()) throw Failure{usage};
    const auto pairs = pairsOf(after(words, 1), usage);
    OrvaneCommand command(words[0]);
    for (const String& key : pairs.getAllKeys()) command.setValue(key, pairs[key]);
    interpreter.ask(command);
}

void askStates(Interpreter& interpreter, const StringArray&) {
    String states;
    for (const char* question : {"isPlaying", "isPaused", "isShufflePlay", "isRepeatTrack",
                                 "isRepeatAll", "isInSpecialMode", "supportsRandomTrackAccess"})
        states << "  " << question << "="
               << asWord(interpreter.ask(OrvaneCommand(question))->getValue("return_value"));
    interpreter.host().print("states:" + states);
}

void cleanAll(Interpreter& interpreter, const StringArray& words) {
    CleanOptions options;
    for (const String& word : words) {
        const auto [name, value] = split(word, "=");
        // The player opens these files too, and has another current folder.
        if (name == "--cover")
            options.cover = fileAt(value);
        else if (name == "--out")
            options.report = fileAt(value);
        else if (name == "--playlist")
            options.playlistName = value;
        else
            throw Failure{"clean-library has no option '" + onOneLine(word, 60) + "'"};
    }
    const auto ask = [&](const OrvaneCommand& command) -> MessagePtr {
        try {
            return interpreter.ask(command);
        } catch (const Failure&) {
            return nullptr;
        }
    };
    const CleanResult result =
        cleanLibrary(options, ask, [&](const String& line) { interpreter.host().print(line); });
    if (result.error.isNotEmpty()) throw Failure{result.error};
    const String summary = "clean-library: " + String(result.tracks.size()) + " tracks, " +
                           String(result.troubled()) + " with problems";
    if (result.troubled() > 0) throw Failure{summary};
    interpreter.met(summary);
}

void sendBadMagic(Interpreter& interpreter, const StringArray& words) {
    // A reader that refuses a header takes the next eight bytes for one, and so on: only a payload
    // whose size is a multiple of eight leaves it where the next frame begins.
    auto payload = commandIn(words, 0).toPayload();
    payload.resize((payload.size() + 7) / 8 * 8);
    auto frame = frame::encode(payload);
    frame[0] = 0xEF;
    interpreter.sendBytes(frame, "a bad magic");
}

void sendDocument(Interpreter& interpreter, const StringArray& words) {
    juce::MemoryBlock document(words[0].toRawUTF8(), words[0].getNumBytesAsUTF8());
    if (!words[0].startsWithChar('<')) {
        document.reset();
        if (words[0].isEmpty() || !fileAt(words[0].unquoted()).loadFileAsData(document))
            throw Failure{"xml takes a file, or a document that begins with <"};
    }
    document.append("", 1);  // the zero byte at its end
    const auto* const bytes = static_cast<const std::uint8_t*>(document.getData());
    interpreter.sendBytes(frame::encode({bytes, document.getSize()}), "a document");
}

void sendSlowly(Interpreter& interpreter, const StringArray& words) {
    const auto pause = parseNumber(words[0]);
    interpreter.ask(commandIn(words, pause ? 1 : 0), pause.value_or(1));
}

void sendBurst(Interpreter& interpreter, const StringArray& words) {
    const int times = parseNumber(words[0]).value_or(0);
    if (times < 1 || times > 10'000) throw Failure{"burst takes 1 to 10000 frames"};
    interpreter.askAtOnce(commandIn(words, 1), times);
}

// The word given, "" when there is none; it must be one of those `allowed`.
String onlyWord(const StringArray& words, const StringArray& allowed, const char* question) {
    if (words.size() > 1 || (!words.isEmpty() && !allowed.contains(words[0])))
        throw Failure{question};
    return words[0];
}

void drop(Interpreter& interpreter, const StringArray& words) {
    const String which =
        onlyWord(words, {"event", "command"}, "which pipe? event, command, or nothing for both");
    if (which != "command") interpreter.host().drop(PipeId::event);
    if (which != "event") interpreter.host().drop(PipeId::command);
}

void hold(Interpreter& interpreter, const StringArray& words) {
    const String which = onlyWord(words, {"event", "command", "off"},
                                  "which pipe? event, command, nothing for both, or off");
    interpreter.host().hold(PipeId::event, which.isEmpty() || which == "event");
    interpreter.host().hold(PipeId::command, which.isEmpty() || which == "command");
    interpreter.host().print(which == "off" ? "reading again"
                                            : "not reading any more; 'hold off' reads again");
}

void keep(Interpreter& interpreter, const StringArray& words) {
    const MessagePtr& response = interpreter.lastResponse();
    if (words.size() != 2) throw Failure{"it goes: keep track metadataOut.Filename"};
    const auto value = response ? valueIn(*response, words[1]) : std::nullopt;
    if (!value) throw Failure{"the last response has no " + words[1] + " to keep"};
    interpreter.variables()[words[0]] = *value;
}

void set(Interpreter& interpreter, const StringArray& words) {
    if (words.size() != 2) throw Failure{"it goes: set track \"C:\\a b.wma\""};
    interpreter.variables()[words[0]] = words[1];
}

void sleep(Interpreter&, const StringArray& words) {
    const auto time = parseNumber(words[0]);
    if (!time) throw Failure{"sleep takes milliseconds: sleep 500"};
    juce::Thread::sleep(*time);
}

void help(Interpreter& interpreter, const StringArray& words) {
    interpreter.host().print(words.isEmpty() ? helpOverview() : helpFor(findWord(words[0])), false);
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
     [](Interpreter& interpreter, const StringArray& words) { interpreter.expect(words); }},
    {"set", "NAME VALUE", "from now on ${NAME} stands for the value", set},
    {"keep", "NAME KEY", "as set, with a value of the last response", keep},
    {"step", "TITLE", "what the next checks are about; told as a whole at its end",
     [](Interpreter& interpreter, const StringArray& words) { interpreter.beginStep(words[0]); },
     true},
    {"say", "TEXT", "print it",
     [](Interpreter& interpreter, const StringArray& words) { interpreter.host().print(words[0]); },
     true},
    {"sleep", "MS", "do nothing for so long", sleep},
    {"quit", "", "end the application",
     [](Interpreter& interpreter, const StringArray&) { interpreter.quit(); }},
};

}  // namespace

std::span<const Word> allWords() { return kWords; }

}  // namespace orvane::standin::app
