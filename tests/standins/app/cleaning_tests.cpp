#include <gtest/gtest.h>

#include "standins/app/cleaning_rules.h"

namespace orvane::standin::app {
namespace {

TEST(CleaningRules, PutTextsAndNumbersRight) {
    const struct {
        std::string (*rule)(std::string_view);
        const char *found, *right;
    } cases[] = {
        {cleanTitle, "scarborough FAIR", "Scarborough Fair"},
        {cleanTitle, "  GREENSLEEVES  ", "Greensleeves"},
        {cleanTitle, "the house of the rising sun", "The House of the Rising Sun"},
        {cleanTitle, "d\xC3\xA9j\xC3\xA0 vu (\xE6\x97\xA5)",
         "D\xC3\xA9j\xC3\xA0 Vu (\xE6\x97\xA5)"},
        {cleanTitle, "\xC3\xA9t\xC3\xA9", "\xC3\x89t\xC3\xA9"},
        {cleanTitle, "ABBA", "ABBA"},
        {cleanTitle, "McCartney II", "McCartney II"},
        {cleanTitle, "auld lang syne [HQ] www.example.com", "Auld Lang Syne"},
        {cleanTitle, "", ""},
        {cleanName, "Burns, Robert", "Robert Burns"},
        {cleanName, "Earth, Wind & Fire", "Earth, Wind & Fire"},
        {cleanYear, "1/1/1999 04:20:00 PM", "1999"},
        {cleanYear, "12345 0099 2101", ""},
        {cleanNumber, "02/10", "2"},
        {cleanNumber, "00", ""},
        {cleanNumber, "side B", ""},
        {cleanGenre, "hip hop", "Hip-Hop"},
        {cleanGenre, "folk", "Folk"},
    };
    for (const auto& one : cases) EXPECT_EQ(one.rule(one.found), one.right);
}

TEST(CleaningRules, DecideWithoutLosingAnything) {
    const struct {
        Parameters tags;
        Verdict verdict;
        Parameters fields;
    } cases[] = {
        // The artist stands in for the album's, and the count of discs goes along with the number.
        {{{"TrackTitle", "song of mine"},
          {"TrackArtist", "somebody"},
          {"AlbumTitle", "Album"},
          {"Year", "1999"},
          {"DiskNumber", "01"},
          {"DisksInSet", "2"}},
         Verdict::cleaned,
         {{"TrackTitle", "Song of Mine"},
          {"AlbumTitle", "Album"},
          {"AlbumArtist", "Somebody"},
          {"TrackArtist", "Somebody"},
          {"Year", "1999"},
          {"DiskNumber", "1"},
          {"DisksInSet", "2"}}},
        // An album artist of its own stays.
        {{{"TrackTitle", "X"}, {"TrackArtist", "A"}, {"AlbumArtist", "B"}},
         Verdict::dirty,
         {{"TrackTitle", "X"}, {"AlbumArtist", "B"}, {"TrackArtist", "A"}}},
        {{{"TrackTitle", "Track 6"}, {"TrackArtist", "Someone"}}, Verdict::notFound, {}},
        {{{"TrackTitle", "X"}, {"TrackArtist", "Unknown Artist"}}, Verdict::notFound, {}},
        {{}, Verdict::notFound, {}},
    };
    for (const auto& one : cases) {
        const Decision decision = decide(one.tags);
        EXPECT_EQ(decision.verdict, one.verdict);
        EXPECT_EQ(decision.fields, one.fields);
    }
}

}  // namespace
}  // namespace orvane::standin::app
