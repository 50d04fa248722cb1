#include "standins/app/clean_library.h"

#include <algorithm>
#include <optional>

namespace orvane::standin::app {
namespace {

constexpr struct {
    const char* name;
    const char* command;
    const char* playlist;
} kVerdicts[] = {{"cleaned", "addToCleanedFolder", "OrVane:Cleaned"},
                 {"dirty", "addToDirtyFolder", "OrVane:Dirty"},
                 {"not found", "addToNotFoundFolder", "OrVane:NotFound"}};

const auto& about(Verdict verdict) { return kVerdicts[static_cast<std::size_t>(verdict)]; }

bool isTrue(const MessagePtr& response) {
    return response && response->getValue("return_value").equalsIgnoreCase("true");
}

// The player's paths are Windows ones on any system.
String nameOf(const String& trackPath) {
    return trackPath.fromLastOccurrenceOf("\\", false, false);
}

// The type of a picture, from its first bytes: the file's name is not reliable.
String imageType(const juce::MemoryBlock& content) {
    const std::string_view bytes(static_cast<const char*>(content.getData()), content.getSize());
    if (bytes.starts_with("\xFF\xD8\xFF")) return "jpeg";
    if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return "png";
    return "unknown";
}

String cell(const String& value) {
    const String text = onOneLine(value, 400);
    return text.isEmpty() ? "-" : text;
}

String reportTable(const CleanResult& result) {
    static const StringArray fields = StringArray::fromTokens(
        "TrackTitle TrackArtist AlbumArtist AlbumTitle Year DiskNumber DisksInSet Genre "
        "TrackNumber",
        false);
    StringArray lines;
    String line = "index\tpath\tverdict\tplaylist";
    for (const char* when : {"before.", "after."}) {
        for (const String& field : fields) line << "\t" << when << field;
        line << "\t" << when << "artType\t" << when << "artBytes";
    }
    lines.add(line + "\tartFrom\tproblems");
    for (const TrackReport& track : result.tracks) {
        line = String(track.index) + "\t" + cell(track.path) + "\t" + about(track.verdict).name +
               "\t" + cell(track.playlist);
        for (const TrackState* state : {&track.before, &track.after}) {
            for (const String& field : fields) line << "\t" << cell(state->tags[field]);
            line << "\t" << cell(state->artType) << "\t" << String(state->artBytes);
        }
        lines.add(line + "\t" + cell(track.artFrom) + "\t" +
                  cell(track.problems.joinIntoString("; ")));
    }
    return lines.joinIntoString("\n") + "\n";
}

class Job {
public:
    Job(const CleanOptions& options, const Ask& ask, const Tell& tell)
        : m_options(options), m_ask(ask), m_tell(tell) {}

    // What went wrong with the job as a whole, or "".
    String run(std::vector<TrackReport>& tracks) {
        if (m_options.cover != juce::File() && !m_options.cover.exists())
            return "there is no image or folder " + m_options.cover.getFullPathName();
        if (m_options.report != juce::File()) {
            m_artFolder = m_options.report.getFullPathName() + ".art";
            if (m_artFolder.createDirectory().failed())
                return "cannot make the folder " + m_artFolder.getFullPathName() +
                       " beside the report";
        }
        if (!isTrue(m_ask(OrvaneCommand("createSpecialPlaylistFolders"))))
            return "the plug-in did not prepare the special playlists";
        const MessagePtr counted = m_ask(OrvaneCommand("getTrackCount"));
        const int count = counted ? counted->getValue("trackCount").getIntValue() : 0;
        if (count < 1) return "the player's library has no track (getTrackCount)";
        m_tell("cleaning " + String(count) + " tracks");
        for (int index = 0; index < count; ++index) {
            TrackReport track;
            track.index = index;
            OrvaneCommand command("getMediaInfoFromIndex");
            command.setValue("trackIndex", String(index));
            command.setValue("albumArtPath", {});
            const MessagePtr response = m_ask(command);
            if (!response)
                return "no answer about track " + String(index) + "; those after it are untouched";
            response->getMap("metadataOut", track.before.tags);
            track.path = track.before.tags["Filename"];
            if (!isTrue(response) || track.path.isEmpty())
                track.problems.add("the plug-in could not read it");
            else
                clean(track);
            tellAbout(track, count);
            tracks.push_back(std::move(track));
        }
        return {};
    }

private:
    void clean(TrackReport& track) {
        if (track.before.tags["AlbumArt"] != "0" && m_artFolder != juce::File())
            extractArt(track, "before", track.before);
        const Decision decision = decide(track.before.tags);
        track.verdict = decision.verdict;
        track.after = track.before;
        if (decision.verdict != Verdict::notFound) {
            write(track, decision.fields);
            verify(track, decision.fields);
        }
        track.playlist = about(track.verdict).playlist + m_options.playlistName;
        OrvaneCommand command(about(track.verdict).command);
        command.setValue("playlistName", m_options.playlistName);
        command.addList("trackPaths", {track.path});
        if (!isTrue(m_ask(command)))
            track.problems.add("it could not be added to " + track.playlist);
    }

    // By path: the library may have been sorted again since the track was read. Two entries with
    // one path can only be told apart by their index.
    MessagePtr askAbout(const TrackReport& track, const String& what, const juce::File& art,
                        const StringPairArray& fields = {}) {
        for (const bool byPath : {true, false}) {
            OrvaneCommand command(what + (byPath ? "Path" : "Index"));
            command.setValue(byPath ? "trackPath" : "trackIndex",
                             byPath ? track.path : String(track.index));
            command.setValue("albumArtPath", art.getFullPathName());
            if (fields.size() > 0) command.setValue("emptyOk", "no");
            command.addMap("metadata", fields);
            if (MessagePtr response = m_ask(command); isTrue(response)) return response;
        }
        return nullptr;
    }

    void write(TrackReport& track, const StringPairArray& fields) {
        const juce::File image = imageFor(track.path);
        track.artFrom = image.getFullPathName();
        if (!askAbout(track, "setMediaInfoTo", image, fields))
            track.problems.add("the plug-in did not write it");
    }

    void verify(TrackReport& track, const StringPairArray& fields) {
        const MessagePtr response = askAbout(track, "getMediaInfoFrom", juce::File());
        track.after.tags.clear();
        if (!response) {
            track.after = {};
            track.problems.add("the plug-in could not read it back");
            return;
        }
        response->getMap("metadataOut", track.after.tags);
        for (const String& field : fields.getAllKeys())
            if (const String is = track.after.tags[field]; is != fields[field])
                track.problems.add(field + " reads back as " + asWord(is, 60) + ", not " +
                                   asWord(fields[field], 60));
        if (track.artFrom.isEmpty() || m_artFolder == juce::File()) return;
        juce::MemoryBlock written;
        const auto back = extractArt(track, "after", track.after);
        if (!juce::File(track.artFrom).loadFileAsData(written) || !back || *back != written)
            track.problems.add("the cover art is not the bytes of " + track.artFrom);
    }

    std::optional<juce::MemoryBlock> extractArt(TrackReport& track, const char* when,
                                                TrackState& state) {
        const juce::File target = m_artFolder.getChildFile(String(track.index) + "-" + when);
        target.deleteFile();  // an old run's picture must not pass for this one's
        juce::MemoryBlock content;
        if (!askAbout(track, "getMediaInfoFrom", target) || !target.loadFileAsData(content)) {
            track.problems.add(String("its cover art could not be fetched ") + when +
                               " the writing");
            return {};
        }
        state.artType = imageType(content);
        state.artBytes = content.getSize();
        return content;
    }

    [[nodiscard]] juce::File imageFor(const String& trackPath) const {
        if (!m_options.cover.isDirectory()) return m_options.cover;
        for (const String& name :
             {nameOf(trackPath).upToLastOccurrenceOf(".", false, false), String("cover")})
            for (const char* ending : {".jpg", ".jpeg", ".png"})
                if (auto file = m_options.cover.getChildFile(name + ending); file.existsAsFile())
                    return file;
        return {};
    }

    void tellAbout(const TrackReport& track, int count) const {
        const bool good = track.problems.isEmpty();
        m_tell((String(track.index + 1) + "/" + String(count)).paddedRight(' ', 8) + " " +
               String(good ? about(track.verdict).name : "PROBLEM").paddedRight(' ', 10) +
               onOneLine(nameOf(track.path)) + (good ? "" : "; ") +
               track.problems.joinIntoString("; "));
    }

    const CleanOptions& m_options;
    const Ask& m_ask;
    const Tell& m_tell;
    juce::File m_artFolder;
};

}  // namespace

int CleanResult::troubled() const {
    return static_cast<int>(std::ranges::count_if(
        tracks, [](const TrackReport& track) { return !track.problems.isEmpty(); }));
}

CleanResult cleanLibrary(const CleanOptions& options, const Ask& ask, const Tell& tell) {
    CleanResult result;
    result.error = Job(options, ask, tell).run(result.tracks);
    if (options.report != juce::File() && !result.tracks.empty() &&
        !options.report.replaceWithText(reportTable(result), false, false, "\n"))
        result.error = "cannot write the report " + options.report.getFullPathName();
    return result;
}

}  // namespace orvane::standin::app
