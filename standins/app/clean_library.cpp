#include "standins/app/clean_library.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

#include "standins/app/text.h"

namespace orvane::standin::app {
namespace {

namespace fs = std::filesystem;

bool isTrue(const std::optional<Message>& response) {
    return response && sameIgnoringCase(valueOf(response->parameters, "return_value"), "true");
}

Parameters tagsIn(const Message& response) {
    constexpr std::string_view prefix = "metadataOut.";
    Parameters tags;
    for (const auto& [key, value] : response.parameters)
        if (startsWithIgnoringCase(key, prefix))
            tags.emplace_back(key.substr(prefix.size()), value);
    return tags;
}

// The name without folder and ending; the player's paths are Windows ones on any system.
std::string trackName(const std::string& trackPath) {
    std::string name = trackPath.substr(trackPath.find_last_of("\\/") + 1);
    return name.substr(0, name.find_last_of('.'));
}

// What kind of picture a file holds, from its first bytes: its name says nothing reliable.
std::string imageType(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xD8\xFF")) return "jpeg";
    if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return "png";
    return "unknown";
}

class Job {
public:
    Job(const CleanOptions& options, const Ask& ask, const Tell& tell)
        : m_options(options), m_ask(ask), m_tell(tell) {
        // The player opens these files too, and has another current folder.
        for (fs::path* path : {&m_options.cover, &m_options.report})
            if (!path->empty()) {
                std::error_code failed;
                const fs::path whole = fs::absolute(*path, failed).lexically_normal();
                if (!failed) *path = whole;
            }
    }

    CleanResult run();

private:
    bool prepare();
    void clean(TrackReport& track);
    void write(TrackReport& track, const Decision& decision);
    void verify(TrackReport& track, const Decision& decision);
    void file(TrackReport& track);
    void checkArt(TrackReport& track, const fs::path& wanted);
    std::optional<std::string> extractArt(TrackReport& track, const Parameters& address,
                                          const char* command, const char* when, Art& art);
    fs::path imageFor(const std::string& trackPath) const;
    void tellAbout(const TrackReport& track, unsigned count) const;

    CleanOptions m_options;
    const Ask& m_ask;
    const Tell& m_tell;
    CleanResult m_result;
    fs::path m_artFolder;
};

bool Job::prepare() {
    std::error_code failed;
    if (!m_options.cover.empty() && !fs::exists(m_options.cover, failed)) {
        m_result.error = "there is no image or folder " + textOf(m_options.cover);
        return false;
    }
    if (!m_options.report.empty()) {
        m_artFolder = m_options.report;
        m_artFolder += ".art";
        fs::create_directories(m_artFolder, failed);
        if (failed) {
            m_result.error = "cannot make the folder " + textOf(m_artFolder) + " beside the report";
            return false;
        }
    }
    if (!isTrue(m_ask("createSpecialPlaylistFolders", {}))) {
        m_result.error = "the plug-in did not prepare the special playlists";
        return false;
    }
    return true;
}

CleanResult Job::run() {
    if (!prepare()) return std::move(m_result);
    const auto counted = m_ask("getTrackCount", {});
    const auto count = counted ? parseNumber(valueOf(counted->parameters, "trackCount"))
                               : std::optional<unsigned>();
    if (!count || *count == 0) {
        m_result.error = "the player's library has no track (getTrackCount)";
        return std::move(m_result);
    }
    m_tell("cleaning " + std::to_string(*count) + " tracks");
    for (unsigned index = 0; index < *count; ++index) {
        TrackReport track;
        track.index = index;
        const auto response = m_ask("getMediaInfoFromIndex",
                                    {{"trackIndex", std::to_string(index)}, {"albumArtPath", ""}});
        if (!response) {
            m_result.error = "no answer about track " + std::to_string(index) +
                             "; the tracks after it are untouched";
            break;
        }
        track.before = tagsIn(*response);
        track.path = valueOf(track.before, "Filename");
        if (!isTrue(response) || track.path.empty())
            track.problems.emplace_back("the plug-in could not read it");
        else
            clean(track);
        tellAbout(track, *count);
        m_result.tracks.push_back(std::move(track));
    }
    if (!m_options.report.empty()) {
        std::ofstream report(m_options.report, std::ios::binary | std::ios::trunc);
        report << reportTable(m_result);
        report.flush();
        if (!report && m_result.error.empty())
            m_result.error = "cannot write the report " + textOf(m_options.report);
    }
    return std::move(m_result);
}

void Job::clean(TrackReport& track) {
    if (valueOf(track.before, "AlbumArt") != "0" && !m_artFolder.empty())
        extractArt(track, {{"trackIndex", std::to_string(track.index)}}, "getMediaInfoFromIndex",
                   "before", track.artBefore);
    const Decision decision = decide(track.before);
    track.verdict = decision.verdict;
    if (decision.verdict == Verdict::notFound) {
        track.after = track.before;
        track.artAfter = track.artBefore;
    } else {
        write(track, decision);
    }
    file(track);
}

void Job::write(TrackReport& track, const Decision& decision) {
    const fs::path image = imageFor(track.path);
    track.artFrom = image.empty() ? std::string() : textOf(image);
    Parameters tail = {{"albumArtPath", track.artFrom}, {"emptyOk", "no"}};
    for (const auto& [field, value] : decision.fields)
        tail.emplace_back("metadata." + field, value);

    // By path: the library may have been sorted anew since the track was read. Two entries with
    // one path can only be told apart by their place.
    Parameters byPath = {{"trackPath", track.path}};
    byPath.insert(byPath.end(), tail.begin(), tail.end());
    if (!isTrue(m_ask("setMediaInfoToPath", byPath))) {
        Parameters byIndex = {{"trackIndex", std::to_string(track.index)}};
        byIndex.insert(byIndex.end(), tail.begin(), tail.end());
        if (!isTrue(m_ask("setMediaInfoToIndex", byIndex)))
            track.problems.emplace_back("the plug-in did not write it");
    }
    verify(track, decision);
    checkArt(track, image);
}

void Job::verify(TrackReport& track, const Decision& decision) {
    auto response =
        m_ask("getMediaInfoFromPath", {{"trackPath", track.path}, {"albumArtPath", ""}});
    if (!isTrue(response))
        response = m_ask("getMediaInfoFromIndex",
                         {{"trackIndex", std::to_string(track.index)}, {"albumArtPath", ""}});
    if (!isTrue(response)) {
        track.problems.emplace_back("the plug-in could not read it back");
        return;
    }
    track.after = tagsIn(*response);
    for (const auto& [field, wanted] : decision.fields) {
        const std::string& is = valueOf(track.after, field);
        if (is != wanted)
            track.problems.push_back(field + " reads back as " + asWord(is, 60) + ", not " +
                                     asWord(wanted, 60));
    }
}

void Job::checkArt(TrackReport& track, const fs::path& wanted) {
    if (wanted.empty()) {
        track.artAfter = track.artBefore;
        return;
    }
    if (m_artFolder.empty()) return;
    const auto written = contentOf(wanted);
    const auto back = extractArt(track, {{"trackPath", track.path}}, "getMediaInfoFromPath",
                                 "after", track.artAfter);
    if (!back || !written || *back != *written)
        track.problems.push_back("the cover art is not the bytes of " + textOf(wanted.filename()));
}

std::optional<std::string> Job::extractArt(TrackReport& track, const Parameters& address,
                                           const char* command, const char* when, Art& art) {
    const fs::path target = m_artFolder / (std::to_string(track.index) + "-" + when);
    std::error_code ignored;
    fs::remove(target, ignored);  // an old run's picture must not pass for this one's
    Parameters parameters = address;
    parameters.emplace_back("albumArtPath", textOf(target));
    if (!isTrue(m_ask(command, parameters))) {
        track.problems.push_back(std::string("its cover art could not be fetched ") + when +
                                 " the writing");
        return {};
    }
    auto content = contentOf(target);
    if (content) art = {imageType(*content), content->size()};
    return content;
}

fs::path Job::imageFor(const std::string& trackPath) const {
    std::error_code failed;
    if (!fs::is_directory(m_options.cover, failed)) return m_options.cover;
    for (const std::string& name : {trackName(trackPath), std::string("cover")})
        for (const char* ending : {".jpg", ".jpeg", ".png"}) {
            const fs::path candidate = m_options.cover / pathFrom(name + ending);
            if (fs::is_regular_file(candidate, failed)) return candidate;
        }
    return {};
}

void Job::file(TrackReport& track) {
    struct Folder {
        const char* command;
        const char* playlist;
    };
    const Folder folder =
        track.verdict == Verdict::cleaned ? Folder{"addToCleanedFolder", "OrVane:Cleaned"}
        : track.verdict == Verdict::dirty ? Folder{"addToDirtyFolder", "OrVane:Dirty"}
                                          : Folder{"addToNotFoundFolder", "OrVane:NotFound"};
    track.playlist = folder.playlist + m_options.playlistName;
    if (!isTrue(m_ask(folder.command,
                      {{"playlistName", m_options.playlistName}, {"trackPaths0", track.path}})))
        track.problems.push_back("it could not be added to " + track.playlist);
}

void Job::tellAbout(const TrackReport& track, unsigned count) const {
    std::string line = fitted(std::to_string(track.index + 1) + "/" + std::to_string(count), 9);
    line += track.problems.empty() ? fitted(describe(track.verdict), 10) : "PROBLEM   ";
    line += track.path.empty() ? std::string("(no path)")
                               : onOneLine(track.path.substr(track.path.find_last_of("\\/") + 1));
    for (const std::string& problem : track.problems) line += "; " + problem;
    m_tell(line);
}

std::string cell(const std::string& value) {
    const std::string text = onOneLine(value, 400);
    return text.empty() ? "-" : text;
}

}  // namespace

std::size_t CleanResult::troubled() const {
    return static_cast<std::size_t>(
        std::count_if(tracks.begin(), tracks.end(),
                      [](const TrackReport& track) { return !track.problems.empty(); }));
}

CleanResult cleanLibrary(const CleanOptions& options, const Ask& ask, const Tell& tell) {
    return Job(options, ask, tell).run();
}

std::string reportTable(const CleanResult& result) {
    static constexpr std::array<const char*, 9> fields = {
        "TrackTitle", "TrackArtist", "AlbumArtist", "AlbumTitle", "Year",
        "DiskNumber", "DisksInSet",  "Genre",       "TrackNumber"};
    std::string text = "index\tpath\tverdict\tplaylist";
    for (const char* when : {"before", "after"}) {
        for (const char* field : fields) text += std::string("\t") + when + "." + field;
        text += std::string("\t") + when + ".artType\t" + when + ".artBytes";
    }
    text += "\tartFrom\tproblems\n";
    for (const TrackReport& track : result.tracks) {
        text += std::to_string(track.index) + "\t" + cell(track.path) + "\t" +
                describe(track.verdict) + "\t" + cell(track.playlist);
        const auto tags = [&](const Parameters& from, const Art& art) {
            for (const char* field : fields) text += "\t" + cell(valueOf(from, field));
            text += "\t" + cell(art.type) + "\t" + std::to_string(art.bytes);
        };
        tags(track.before, track.artBefore);
        tags(track.after, track.artAfter);
        text += "\t" + cell(track.artFrom) + "\t" + cell(join(track.problems, "; ")) + "\n";
    }
    return text;
}

std::optional<std::string> contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return {};
    return std::string(std::istreambuf_iterator<char>(file), {});
}

fs::path pathFrom(const std::string& utf8) {
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string textOf(const fs::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

}  // namespace orvane::standin::app
