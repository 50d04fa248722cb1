#include "packaging/check/demo.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <optional>

#include "packaging/check/child.h"
#include "packaging/check/library_checks.h"
#include "packaging/check/transcript.h"
#include "standins/support/wide_text.h"

namespace orvane::check {
namespace {

namespace fs = std::filesystem;
using standin::toUtf8;

constexpr const char* kParts[] = {"1-link.txt", "2-one-track.txt", "3-library.txt", "4-close.txt"};
constexpr const wchar_t* kTrack = L"01 scarborough FAIR.wma";
constexpr DWORD kWholeMs = 120'000;

std::string quoted(const fs::path& path) { return "\"" + toUtf8(path.native()) + "\"\n"; }

// The demo's covers: one for all, a PNG, and one too large for an attribute of 16-bit length.
void makeCovers(const fs::path& data, const fs::path& covers) {
    fs::copy_file(data / "cover.jpg", covers / "cover.jpg");
    fs::copy_file(data / "cover.png", covers / "sakura.png");
    std::string image = contentOf(data / "cover.jpg");
    const std::string comment = std::string("\xFF\xFE\xFF\xFF", 4) + std::string(0xFFFD, 'o');
    for (int i = 0; i < 2; ++i) image.insert(2, comment);
    std::ofstream(covers / "02 Greensleeves.jpg", std::ios::binary) << image;
}

bool oneTrackIsWritten(const fs::path& track) {
    return tagOf(track, u"Title") == "Scarborough Fair (Demo)" &&
           tagOf(track, u"Author") == "Les Min\u00E9strels" &&
           tagOf(track, u"WM/AlbumArtist") == "The Wandering Minstrels" &&
           tagOf(track, u"WM/Year") == "1999" && tagOf(track, u"WM/PartOfSet") == "2/3";
}

std::string logSince(std::size_t start) {
    wchar_t folder[MAX_PATH] = {};
    DWORD size = sizeof(folder);
    RegGetValueW(HKEY_LOCAL_MACHINE,
                 L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                 L"Common AppData", RRF_RT_REG_SZ, nullptr, folder, &size);
    const std::string log = contentOf(fs::path(folder) / "OrVaneMedia" / "OrVane.log");
    return log.substr(std::min(start, log.size()));
}

}  // namespace

unsigned Course::missed() const {
    return static_cast<unsigned>(
        std::count_if(ticks.begin(), ticks.end(), [](const Tick& tick) { return !tick.good; }));
}

std::string registerPlugin(const Kit& kit, bool registered) {
    wchar_t system[MAX_PATH] = {};
    if (GetSystemWow64DirectoryW(system, MAX_PATH) == 0) GetSystemDirectoryW(system, MAX_PATH);
    Child::Start start;
    start.folder = kit.programs();
    start.output = kit.work / "regsvr32.txt";
    start.commandLine = L"\"" + std::wstring(system) + L"\\regsvr32.exe\" /s " +
                        (registered ? L"" : L"/u ") + L"\"" +
                        (kit.programs() / "OrVaneWmpPlugin.dll").native() + L"\"";
    const auto code = Child(start).exitCode(60'000);
    if (code != 0U)
        return "regsvr32 ended with code " + (code ? std::to_string(*code) : "none in a minute");
    if (!registered) return {};
    const std::wstring folder = kit.programs().native();
    const std::size_t bytes = (folder.size() + 1) * sizeof(wchar_t);
    const LSTATUS result =
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\OrVaneMedia\\Settings", L"Path", REG_SZ,
                        folder.c_str(), static_cast<DWORD>(bytes));
    if (result == ERROR_SUCCESS) return {};
    return "OrVane's folder cannot be named in the registry: error " + std::to_string(result);
}

Course runDemo(const Kit& kit) {
    Course course;
    std::string problems;
    const fs::path demo = kit.work / "demo";
    const fs::path music = demo / "music", originals = demo / "originals", covers = demo / "covers";
    fs::remove_all(demo);
    for (const auto& folder : {music, originals, covers}) fs::create_directories(folder);
    std::size_t tracks = 0;
    for (const auto& entry : fs::directory_iterator(kit.tracks())) {
        if (entry.path().extension() != ".wma") continue;
        ++tracks;
        for (const auto& folder : {music, originals})
            fs::copy_file(entry.path(), folder / entry.path().filename());
    }
    makeCovers(kit.tracks(), covers);

    std::string script = "set track " + quoted(music / kTrack) + "set tracks " +
                         std::to_string(tracks) + "\nset covers " + quoted(covers) + "set report " +
                         quoted(demo / "report.tsv");
    for (const char* part : kParts) script += contentOf(kit.scripts() / part) + "\n";
    std::ofstream(demo / "script.txt", std::ios::binary) << script;
    const std::size_t logBefore = logSince(0).size();

    Child::Start start;
    start.folder = kit.programs();
    start.output = demo / "player.txt";
    start.commandLine = L"\"" + (kit.programs() / "player.exe").native() + L"\" \"--library=" +
                        music.native() + L"\" --script=-";
    start.environment = {{L"ORVANE_APP_SCRIPT", (demo / "script.txt").native()},
                         {L"ORVANE_APP_TRANSCRIPT", (demo / "transcript.txt").native()}};
    bool oneTrackSeen = false;
    std::optional<DWORD> playerCode;
    std::string conversation;
    {
        const Child player(start);
        Transcript transcript(demo / "transcript.txt");
        problems += transcript.follow(kWholeMs, [&](const std::string& what) {
            if (what.starts_with("player> ")) player.tell(what.substr(8));
            if (what != "check one-track") return;
            const fs::path now = demo / "one-track.wma";  // the application goes on meanwhile
            fs::copy_file(music / kTrack, now, fs::copy_options::overwrite_existing);
            oneTrackSeen = oneTrackIsWritten(now);
        });
        conversation = transcript.text();
        const bool good = conversation.find("  result: good") != std::string::npos;
        playerCode = player.exitCode(good ? 10'000 : 0);
    }
    const std::string said = contentOf(start.output);
    const auto seen = [&](const std::string& text) {
        return conversation.find(text) != std::string::npos;
    };
    for (const std::string& title : stepsIn(script))
        course.ticks.push_back({seen("  step good: " + title), title});
    course.ticks.push_back({oneTrackSeen, "The file itself has what was written to one track"});
    checkLibrary(demo / "report.tsv", music, originals, said, course.ticks, problems);
    course.ticks.push_back(
        {seen("launched by wmp"), "The plug-in started the application, through the registry"});
    course.ticks.push_back(
        {seen("  result: good"), "The application met every check of its script"});
    course.ticks.push_back({playerCode == 0U, "The player ended by itself, without a complaint"});
    const std::string log = logSince(logBefore);
    course.ticks.push_back(
        {log.find("OrvaneMessage: XML parsing error occured") != std::string::npos,
         "The shared log tells of the document that was not XML"});
    course.details = problems;
    if (course.missed() > 0)
        course.details += "--- the conversation\n" + conversation + "--- the player\n" + said +
                          "--- the log\n" + log;
    return course;
}

}  // namespace orvane::check
