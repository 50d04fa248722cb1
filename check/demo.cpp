#include <windows.h>

#include <algorithm>
#include <optional>

#include "check/library_checks.h"
#include "check/machine.h"
#include "harness/files.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

namespace fs = std::filesystem;
using standin::toUtf8;

constexpr const char* kParts[] = {"1-link.txt", "2-one-track.txt", "3-library.txt", "4-close.txt"};
constexpr const wchar_t* kTrack = L"01 scarborough FAIR.wma";
constexpr DWORD kWholeMs = 120'000, kPlayerEndsMs = 10'000;

// The demo's covers: one for all, a PNG, and one too large for an attribute of 16-bit length.
void makeCovers(const fs::path& data, const fs::path& covers) {
    fs::create_directories(covers);
    fs::copy_file(data / "cover.jpg", covers / "cover.jpg");
    fs::copy_file(data / "cover.png", covers / "sakura.png");
    std::string image = test::readText(data / "cover.jpg");
    const std::string comment = std::string("\xFF\xFE\xFF\xFF", 4) + std::string(0xFFFD, 'o');
    for (int i = 0; i < 2; ++i) image.insert(2, comment);
    test::writeFile(covers / "02 Greensleeves.jpg", image);
}

// All parts, behind the variables that they use.
std::string scriptOf(const Kit& kit, const fs::path& folder, std::size_t tracks, bool linkOnly) {
    const auto set = [](const char* name, const fs::path& path) {
        return std::string("set ") + name + " " + toUtf8(quoted(path)) + "\n";
    };
    std::string script = set("track", folder / "music" / kTrack) +
                         set("covers", folder / "covers") + set("report", folder / "report.tsv") +
                         "set tracks " + std::to_string(tracks) + "\n";
    for (const char* part : kParts)
        if (!linkOnly || part != kParts[2]) script += test::readText(kit.scripts() / part) + "\n";
    return script;
}

std::string logSince(std::size_t start) {
    const std::string log = test::readText(sharedLog());
    return log.substr(std::min(start, log.size()));
}

}  // namespace

RunResult runDemo(const Kit& kit, bool linkOnly, const Show& show) {
    const fs::path folder = kit.work / "demo";
    const fs::path music = folder / "music", originals = folder / "originals";
    test::removeFolder(folder);
    copyTracks(kit.tracks(), originals);
    const std::string script = scriptOf(kit, folder, copyTracks(kit.tracks(), music), linkOnly);
    makeCovers(kit.tracks(), folder / "covers");
    const std::size_t logBefore = logSince(0).size();
    const auto start =
        playerStart(kit.programs / "player.exe",
                    L" \"--library=" + music.native() + L"\" --script=-", folder, script);

    FileChecks files(folder);
    bool cleaning = false;
    Transcript transcript;
    bool oneTrackSeen = false;
    std::optional<DWORD> playerCode;
    {
        test::Child player(start);
        const auto read = [&](const std::string& line, const std::string& words) {
            // The cleaning takes seven commands a track: its own lines tell as much.
            if (words.starts_with("cleaning ")) cleaning = true;
            if (words.find("clean-library: ") != words.npos) cleaning = false;
            const bool detail = words.starts_with("command ") || words.starts_with("response ") ||
                                line.starts_with("   ");
            if (!cleaning || !detail) show("    " + line);
            if (words.starts_with("player> ")) player.tell(words.substr(8));
            if (words != "check one-track") return;
            const fs::path now = folder / "one-track.wma";  // the application goes on meanwhile
            fs::copy_file(music / kTrack, now);
            oneTrackSeen = files.tagsAre(now, {{u"Title", "Scarborough Fair (Demo)"},
                                               {u"Author", "Les Min\u00E9strels"},
                                               {u"WM/AlbumArtist", "The Wandering Minstrels"},
                                               {u"WM/Year", "1999"},
                                               {u"WM/PartOfSet", "2/3"}});
        };
        transcript = followTranscript(folder / "transcript.txt", kWholeMs, read);
        // A player that was not asked to close is not worth waiting for.
        playerCode = player.exitCode(transcript.has("  result: good") ? kPlayerEndsMs : 0);
    }
    const std::string said = test::readText(start.output);
    const std::string log = logSince(logBefore);
    test::writeFile(folder / "log.txt", log);

    RunResult result{.ticks = transcript.stepsOf(script)};
    const auto tick = [&](bool good, const char* what) { result.ticks.push_back({good, what}); };
    tick(oneTrackSeen, "The file itself has what was written to one track");
    const auto report = readReport(folder / "report.tsv");
    if (!linkOnly)
        for (const Tick& seen : checkLibrary(report, music, originals, said, files))
            result.ticks.push_back(seen);
    tick(transcript.has("launched by wmp"),
         "The plug-in started the application, through the registry");
    tick(transcript.has("  result: good"), "The application met every check of its script");
    tick(playerCode == 0U, "The player ended by itself, without a complaint");
    tick(log.find("OrvaneMessage: XML parsing error occured") != log.npos,
         "The shared log tells of the document that was not XML");
    test::writeFile(folder / "expected.tsv", files.expected);

    showLibrary(report, music, originals, show);
    result.problems = transcript.problem + files.problems;
    if (result.missed() > 0)
        result.details = "--- the conversation\n" + transcript.text + "--- the player\n" + said +
                         "--- the log\n" + log;
    return result;
}

}  // namespace orvane::check
