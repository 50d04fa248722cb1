#include "media/wmp_media_item.h"

#include <gtest/gtest.h>

#include "media/field_table.h"
#include "tests/media/fake_media.h"

namespace orvane {
namespace {

using juce::String;
using juce::StringPairArray;
using test::FakeMedia;

using Writes = std::vector<std::pair<std::wstring, std::wstring>>;

StringPairArray record(std::initializer_list<std::pair<const char*, const char*>> entries) {
    StringPairArray result;
    for (const auto& [key, value] : entries) result.set(key, value);
    return result;
}

StringPairArray loaded(FakeMedia& media) {
    WmpMediaItem item;
    EXPECT_TRUE(item.Load(&media));
    StringPairArray out;
    item.getMetadata(out);
    return out;
}

TEST(LoadMediaItem, FillsTheRecordInOrder) {
    FakeMedia media;
    media.attributes = {{L"Title", L"A \u65e5\u672c \u00e9 \U0001F600"},
                        {L"Author", L"Somebody"},
                        {L"ReleaseDateYear", L"1999"},
                        {L"WM/PartOfSet", L"3/12"}};
    const auto metadata = loaded(media);

    juce::StringArray expected{"Filename"};
    for (const char* field : fields::kLoaded) expected.add(field);
    expected.addArray({"DiskNumber", "DisksInSet", "AlbumArt"});
    EXPECT_EQ(metadata.getAllKeys(), expected);

    EXPECT_EQ(metadata["Filename"], String("C:\\Music\\track.wma"));
    EXPECT_EQ(metadata["tracktitle"], String(L"A \u65e5\u672c \u00e9 \U0001F600"));
    EXPECT_EQ(metadata["TrackArtist"], String("Somebody"));
    EXPECT_EQ(metadata["Year"], String("1999"));
    EXPECT_EQ(metadata["DiskNumber"], String("3"));
    EXPECT_EQ(metadata["DisksInSet"], String("12"));
    EXPECT_EQ(metadata["AlbumArt"], String("0"));
    EXPECT_EQ(media.references, 0);
}

TEST(LoadMediaItem, GoesOnWithoutWhatCannotBeRead) {
    FakeMedia media;
    media.sourcePathFails = true;
    media.attributes = {{L"Title", L"T"}, {L"Author", L"A"}};
    media.unreadable = {L"Title", L"WM/PartOfSet"};
    const auto metadata = loaded(media);

    EXPECT_EQ(metadata.getAllKeys()[0], String("TrackTitle"));
    EXPECT_EQ(metadata.size(), static_cast<int>(fields::kLoaded.size()) + 1);
    EXPECT_TRUE(metadata["TrackTitle"].isEmpty());
    EXPECT_EQ(metadata["TrackArtist"], String("A"));
    EXPECT_FALSE(metadata.containsKey("DiskNumber"));
}

TEST(LoadMediaItem, KeepsItsRecordWithoutAnItemAndForgetsItWithOne) {
    WmpMediaItem item(record({{"TrackTitle", "T"}, {"Mood", "blue"}}));
    EXPECT_FALSE(item.Load(nullptr));
    EXPECT_EQ(item.getTrackTitle(), String("T"));
    FakeMedia media;
    EXPECT_TRUE(item.Load(&media));
    StringPairArray out;
    item.getMetadata(out);
    EXPECT_FALSE(out.containsKey("Mood"));
    EXPECT_TRUE(item.getTrackTitle().isEmpty());
}

TEST(LoadMediaItem, SurvivesWhatFilesMayHold) {
    FakeMedia media;
    media.attributes = {{L"Title", std::wstring(L"a\0b", 3)},
                        {L"Author", L"\xD83D"},
                        {L"WM/Genre", std::wstring(L"\xD83D\xE000\x0001\xFFFF", 4)},
                        {L"Description", std::wstring(1 << 20, L'x')}};
    const auto metadata = loaded(media);
    EXPECT_EQ(metadata["TrackTitle"], String("a"));
    EXPECT_EQ(std::wstring(metadata["TrackArtist"].toWideCharPointer()), L"\xD83D");
    EXPECT_EQ(std::wstring(metadata["Genre"].toWideCharPointer()), L"\xD83D\xE000\x0001\xFFFF");
    EXPECT_EQ(metadata["Comments"].length(), 1 << 20);
}

TEST(SaveMediaItem, WritesEveryFieldOnceInOrder) {
    FakeMedia media;
    const WmpMediaItem item(record(
        {{"Comments", "c"},     {"Composer", "p"},    {"DiskNumber", "2"},  {"DisksInSet", "3"},
         {"OVID", "o"},         {"BitRate", "b"},     {"RelYear", "1998"},  {"Year", "1999"},
         {"Genre_2", "g2"},     {"Genre", "g"},       {"TrackNumber", "7"}, {"TrackArtist", "ta"},
         {"AlbumArtist", "aa"}, {"AlbumTitle", "at"}, {"tracktitle", "tt"}, {"LastPlayed", "never"},
         {"PlayCount", "9"},    {"Rating", "99"},     {"PartOfSet", "8/8"}, {"Filename", "x"},
         {"AlbumArt", "1"},     {"Unknown", "u"}}));
    EXPECT_TRUE(item.Save(&media, false));
    const Writes expected{{L"Title", L"tt"},
                          {L"WM/AlbumTitle", L"at"},
                          {L"WM/AlbumArtist", L"aa"},
                          {L"Author", L"ta"},
                          {L"WM/TrackNumber", L"7"},
                          {L"WM/Genre", L"g"},
                          {L"WM/Genre", L"g2"},
                          {L"ReleaseDate", L"1/1/1999 04:20:00 PM"},
                          {L"WM/OriginalReleaseYear", L"1998"},
                          {L"Bitrate", L"b"},
                          {L"WM/UniqueFileIdentifier", L"o"},
                          {L"WM/PartOfSet", L"2/3"},
                          {L"WM/Composer", L"p"},
                          {L"Description", L"c"}};
    EXPECT_EQ(media.writes, expected);
}

TEST(SaveMediaItem, LeavesAloneWhatTheRecordDoesNotName) {
    FakeMedia media;
    media.attributes = {{L"Title", L"kept"}, {L"WM/Genre", L"kept"}};
    EXPECT_TRUE(WmpMediaItem(record({{"DiskNumber", "2"}, {"Genre", ""}})).Save(&media, false));
    EXPECT_EQ(media.writes, (Writes{{L"WM/PartOfSet", L"2/"}}));

    media.writes.clear();
    EXPECT_TRUE(WmpMediaItem(record({{"DisksInSet", "4"}})).Save(&media, false));
    EXPECT_TRUE(media.writes.empty());
}

TEST(SaveMediaItem, ClearsWhenEmptyIsMeant) {
    FakeMedia media;
    EXPECT_TRUE(WmpMediaItem(record({{"TrackTitle", "T"}})).Save(&media, true));
    ASSERT_EQ(media.writes.size(), fields::kSaved.size());
    EXPECT_EQ(media.writes[0], std::make_pair(std::wstring(L"Title"), std::wstring(L"T")));
    EXPECT_EQ(media.writes[1], std::make_pair(std::wstring(L"WM/AlbumTitle"), std::wstring()));
    EXPECT_EQ(media.attributes[L"WM/PartOfSet"], L"/");
    EXPECT_EQ(media.attributes[L"ReleaseDate"], L"1/1/ 04:20:00 PM");
}

TEST(MediaItemRecord, TakesTheTrackArtistForAMissingAlbumArtist) {
    EXPECT_EQ(WmpMediaItem(record({{"TrackArtist", "T"}})).getAlbumArtist(), String("T"));
    EXPECT_EQ(WmpMediaItem(record({{"trackartist", "T"}, {"albumartist", ""}})).getAlbumArtist(),
              String("T"));
    EXPECT_EQ(WmpMediaItem(record({{"TrackArtist", "T"}, {"AlbumArtist", "A"}})).getAlbumArtist(),
              String("A"));

    // Keys ignore case here whatever they did where they come from.
    StringPairArray caseful(false);
    caseful.set("tracktitle", "T");
    EXPECT_EQ(WmpMediaItem(caseful).getTrackTitle(), String("T"));
}

TEST(MediaItemFields, AreSpecialByTheirExactNamesOnly) {
    FakeMedia media;
    const WmpMediaItem dated(record({{"Year", "1999"}, {"DiskNumber", "2"}}));
    EXPECT_TRUE(dated.writeField(&media, "Filename"));
    EXPECT_TRUE(dated.writeField(&media, "year"));
    EXPECT_TRUE(dated.writeField(&media, "disknumber"));
    EXPECT_EQ(media.writes, (Writes{{L"ReleaseDateYear", L"1999"}, {L"WM/PartOfSet", L"2"}}));
}

}  // namespace
}  // namespace orvane
