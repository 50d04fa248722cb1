#include "standins/app/clean_library.h"

#include "standins/app/image_info.h"
#include "standins/app/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace orvane::standin::app {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

TEST(CleaningRules, PutTextsRight) {
    EXPECT_EQ(cleanTitle("scarborough FAIR"), "Scarborough Fair");
    EXPECT_EQ(cleanTitle("  GREENSLEEVES  "), "Greensleeves");
    EXPECT_EQ(cleanTitle("The Wandering  Minstrels"), "The Wandering Minstrels");
    EXPECT_EQ(cleanTitle("the house of the rising sun"), "The House of the Rising Sun");
    EXPECT_EQ(cleanTitle("d\xC3\xA9j\xC3\xA0 vu (\xE6\x97\xA5)"),
              "D\xC3\xA9j\xC3\xA0 Vu (\xE6\x97\xA5)");
    EXPECT_EQ(cleanTitle("\xC3\xA9t\xC3\xA9"), "\xC3\x89t\xC3\xA9");
    EXPECT_EQ(cleanTitle("ABBA"), "ABBA");
    EXPECT_EQ(cleanTitle("McCartney II"), "McCartney II");
    EXPECT_EQ(cleanTitle("auld lang syne [HQ] www.example.com"), "Auld Lang Syne");
    EXPECT_EQ(cleanTitle(""), "");
    EXPECT_EQ(cleanName("Burns, Robert"), "Robert Burns");
    EXPECT_EQ(cleanName("Earth, Wind & Fire"), "Earth, Wind & Fire");
}

TEST(CleaningRules, PutNumbersRight) {
    EXPECT_EQ(cleanYear("1/1/1999 04:20:00 PM"), "1999");
    EXPECT_EQ(cleanYear("12345 0099 2101"), "");
    EXPECT_EQ(cleanYear("99"), "");
    EXPECT_EQ(cleanNumber("02/10"), "2");
    EXPECT_EQ(cleanNumber("00"), "");
    EXPECT_EQ(cleanNumber("side B"), "");
    EXPECT_EQ(cleanGenre("hip hop"), "Hip-Hop");
    EXPECT_EQ(cleanGenre("folk"), "Folk");
}

TEST(CleaningRules, DecideWithoutLosingAnything) {
    const Decision cleaned = decide({{"TrackTitle", "song of mine"},
                                     {"TrackArtist", "somebody"},
                                     {"AlbumTitle", "Album"},
                                     {"Year", "1999"},
                                     {"DiskNumber", "01"},
                                     {"DisksInSet", "2"}});
    EXPECT_EQ(cleaned.verdict, Verdict::cleaned);
    EXPECT_THAT(cleaned.fields, Contains(Pair("AlbumArtist", "Somebody")));
    // The count of discs goes along with the number, or it would be cleared.
    EXPECT_THAT(cleaned.fields, Contains(Pair("DisksInSet", "2")));
    // An album artist of its own is never left to the plug-in's rule.
    EXPECT_THAT(decide({{"TrackTitle", "x y"}, {"TrackArtist", "A"}, {"AlbumArtist", "B"}}).fields,
                Contains(Pair("AlbumArtist", "B")));
    for (const auto& [field, value] : cleaned.fields) EXPECT_NE(value, "") << field;

    EXPECT_EQ(decide({{"TrackTitle", "X"}, {"TrackArtist", "Y"}, {"AlbumTitle", "Z"}}).verdict,
              Verdict::dirty);
    EXPECT_THAT(decide({{"TrackTitle", "Track 6"}, {"TrackArtist", "Someone"}}).fields, IsEmpty());
    EXPECT_EQ(decide({{"TrackTitle", "X"}, {"TrackArtist", "Unknown Artist"}}).verdict,
              Verdict::notFound);
    EXPECT_EQ(decide({}).verdict, Verdict::notFound);
}

TEST(ImageInfo, KnowsPicturesByTheirBytes) {
    const auto sample = [](const char* name) {
        return contentOf(pathFrom(std::string(ORVANE_TEST_DATA) + "/" + name)).value_or("");
    };
    const ImageInfo jpeg = imageInfo(sample("cover.jpg"));
    EXPECT_EQ(jpeg.type, "jpeg");
    EXPECT_EQ(jpeg.width, 24u);
    const ImageInfo png = imageInfo(sample("cover.png"));
    EXPECT_EQ(png.type, "png");
    EXPECT_EQ(png.height, 24u);
    EXPECT_EQ(imageInfo("\xFF\xD8\xFF").type, "jpeg");
    EXPECT_EQ(imageInfo("").type, "unknown");
}

// A library that answers as the plug-in does.
class FakeLibrary {
public:
    struct Track {
        Parameters tags;
        std::string picture;
    };
    std::vector<Track> tracks;
    std::map<std::string, std::vector<std::string>> playlists;
    std::string refuseField;  // is accepted, but not written
    std::string silentAfter;  // this command and all after it have no answer

    std::optional<Message> ask(const std::string& name, const Parameters& parameters) {
        if (!silentAfter.empty() && (m_silent = m_silent || name == silentAfter)) return {};
        Message response{Message::Kind::response, name, {}};
        const auto answer = [&](bool result) {
            response.parameters.emplace_back("return_value", result ? "true" : "false");
            return response;
        };
        if (name == "getTrackCount") {
            response.parameters.emplace_back("trackCount", std::to_string(tracks.size()));
            return answer(true);
        }
        if (name.find("addTo") == 0) {
            playlists[name].push_back(valueOf(parameters, "trackPaths0"));
            return answer(true);
        }
        if (name.find("MediaInfo") == std::string::npos) return answer(true);
        Track* track = nullptr;
        for (std::size_t i = 0; i < tracks.size(); ++i)
            if (std::to_string(i) == valueOf(parameters, "trackIndex") ||
                valueOf(tracks[i].tags, "Filename") == valueOf(parameters, "trackPath"))
                track = &tracks[i];
        if (!track) return answer(false);
        return name.find("get") == 0 ? read(*track, parameters, answer)
                                     : write(*track, parameters, answer);
    }

private:
    template <typename Answer>
    Message read(const Track& track, const Parameters& parameters, const Answer& answer) {
        const std::string& art = valueOf(parameters, "albumArtPath");
        if (!art.empty()) {
            if (track.picture.empty()) return answer(false);
            std::ofstream(pathFrom(art), std::ios::binary) << track.picture;
        }
        Message response = answer(true);
        for (const auto& [key, value] : track.tags)
            response.parameters.emplace_back("metadataOut." + key, value);
        response.parameters.emplace_back("metadataOut.AlbumArt", track.picture.empty() ? "0" : "1");
        return response;
    }

    template <typename Answer>
    Message write(Track& track, const Parameters& parameters, const Answer& answer) {
        for (const auto& [key, value] : parameters)
            if (key.find("metadata.") == 0 && key.substr(9) != refuseField)
                set(track.tags, key.substr(9), value);
        const std::string& art = valueOf(parameters, "albumArtPath");
        if (!art.empty()) track.picture = contentOf(pathFrom(art)).value_or("");
        return answer(true);
    }

    bool m_silent = false;
};

class CleanLibrary : public testing::Test {
protected:
    void SetUp() override {
        m_folder = std::filesystem::temp_directory_path() / "orvane-cleaning-tests";
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder / "covers");
        std::ofstream(m_folder / "covers" / "cover.jpg", std::ios::binary) << "\xFF\xD8\xFFgeneral";
        std::ofstream(m_folder / "covers" / "special.png", std::ios::binary) << "\x89PNG special";
        library.tracks = {
            {{{"Filename", "C:\\m\\special.wma"},
              {"TrackTitle", "good song"},
              {"TrackArtist", "somebody"},
              {"AlbumTitle", "Album"},
              {"Year", "1999"}},
             ""},
            {{{"Filename", "C:\\m\\other.wma"}, {"TrackTitle", "A B"}, {"TrackArtist", "C"}},
             "old picture"},
            {{{"Filename", "C:\\m\\none.wma"}, {"TrackTitle", ""}, {"TrackArtist", "D"}}, ""}};
        options.cover = m_folder / "covers";
        options.report = m_folder / "report.tsv";
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    CleanResult run() {
        return cleanLibrary(
            options, [&](const std::string& n, const Parameters& p) { return library.ask(n, p); },
            [&](const std::string& line) { told.push_back(line); });
    }

    FakeLibrary library;
    CleanOptions options;
    std::vector<std::string> told;
    std::filesystem::path m_folder;
};

TEST_F(CleanLibrary, CleansFilesAndReports) {
    const CleanResult result = run();
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.troubled(), 0u);
    ASSERT_EQ(result.tracks.size(), 3u);
    EXPECT_EQ(valueOf(result.tracks[0].after, "TrackTitle"), "Good Song");
    EXPECT_THAT(library.playlists["addToCleanedFolder"], ElementsAre("C:\\m\\special.wma"));
    EXPECT_THAT(library.playlists["addToDirtyFolder"], ElementsAre("C:\\m\\other.wma"));
    EXPECT_THAT(library.playlists["addToNotFoundFolder"], ElementsAre("C:\\m\\none.wma"));
    // Each track's own cover, else the general one; none for a track that was not found.
    EXPECT_EQ(library.tracks[0].picture, "\x89PNG special");
    EXPECT_EQ(library.tracks[1].picture, "\xFF\xD8\xFFgeneral");
    EXPECT_EQ(library.tracks[2].picture, "");
    EXPECT_EQ(result.tracks[1].artBefore.bytes, 11u);
    EXPECT_EQ(result.tracks[1].artAfter.type, "jpeg");
    EXPECT_EQ(valueOf(library.tracks[2].tags, "TrackTitle"), "");
    const std::string report = contentOf(options.report).value_or("");
    EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), 4);
    EXPECT_THAT(report, HasSubstr("good song"));
    EXPECT_THAT(report, HasSubstr("Good Song"));
}

TEST_F(CleanLibrary, TellsAFieldThatWasNotWritten) {
    library.refuseField = "TrackTitle";
    const CleanResult result = run();
    EXPECT_EQ(result.troubled(), 1u);
    EXPECT_THAT(result.tracks[0].problems,
                Contains(HasSubstr("TrackTitle reads back as \"good song\"")));
    EXPECT_THAT(told, Contains(HasSubstr("PROBLEM")));
}

TEST_F(CleanLibrary, StopsWhenThereIsNoAnswerAndKeepsWhatWasDone) {
    library.silentAfter = "addToDirtyFolder";
    const CleanResult result = run();
    EXPECT_THAT(result.error, HasSubstr("no answer about track 2"));
    EXPECT_EQ(result.tracks.size(), 2u);
    EXPECT_THAT(contentOf(options.report).value_or(""), HasSubstr("Good Song"));
}

TEST_F(CleanLibrary, RefusesAMissingCoverBeforeTouchingAnything) {
    options.cover = m_folder / "no such";
    EXPECT_THAT(run().error, HasSubstr("no image or folder"));
    EXPECT_EQ(valueOf(library.tracks[0].tags, "TrackTitle"), "good song");
    library.tracks.clear();
    options.cover.clear();
    EXPECT_THAT(run().error, HasSubstr("no track"));
}

}  // namespace
}  // namespace orvane::standin::app
