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
    WmpMediaItem item(record({{"TrackTitle", "old"}, {"Mood", "blue"}}));
    EXPECT_FALSE(item.Load(nullptr));
    EXPECT_EQ(item.getTrackTitle(), String("old"));
    EXPECT_TRUE(item.Load(&media));
    item.addCoverArtCount(TrackSource(&media));
    StringPairArray out;
    item.getMetadata(out);
    EXPECT_FALSE(out.containsKey("Mood"));
    EXPECT_TRUE(media.isLeftAlone());
    return out;
}

TEST(LoadMediaItem, FillsTheRecordInOrderWithWhateverFilesHold) {
    FakeMedia media;
    media.attributes = {{L"Title", L"A \u65e5\u672c \u00e9 \U0001F600"},
                        {L"Author", L"\xD83D"},
                        {L"ReleaseDateYear", L"1999"},
                        {L"UserRating", std::wstring(L"a\0b", 3)},
                        {L"UserPlayCount", L"7"},
                        {L"UserLastPlayedTime", L"then"},
                        {L"WM/Genre", std::wstring(L"\xD83D\xE000\x0001\xFFFF", 4)},
                        {L"Description", std::wstring(1 << 20, L'x')},
                        {L"WM/PartOfSet", L"3/12"}};
    const auto metadata = loaded(media);

    juce::StringArray expected{"Filename"};
    for (const char* field : fields::kLoaded) expected.add(field);
    expected.addArray({"DiskNumber", "DisksInSet", "AlbumArt"});
    EXPECT_EQ(metadata.getAllKeys(), expected);

    for (const auto& [field, text] : {std::pair{"Filename", L"C:\\Music\\track.wma"},
                                      {"tracktitle", L"A \u65e5\u672c \u00e9 \U0001F600"},
                                      {"TrackArtist", L"\xD83D"},
                                      {"Year", L"1999"},
                                      {"Rating", L"a"},
                                      {"PlayCount", L"7"},
                                      {"LastPlayed", L"then"},
                                      {"Genre", L"\xD83D\xE000\x0001\xFFFF"},
                                      {"PartOfSet", L"3/12"},
                                      {"DiskNumber", L"3"},
                                      {"DisksInSet", L"12"},
                                      {"AlbumArt", L"0"}})
        EXPECT_EQ(std::wstring(metadata[field].toWideCharPointer()), text) << field;
    EXPECT_EQ(metadata["Comments"].length(), 1 << 20);
}

TEST(LoadMediaItem, SkipsFieldsThatCannotBeRead) {
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

TEST(SaveMediaItem, ClearsMissingFieldsOnlyWithEmptyOk) {
    FakeMedia media;
    EXPECT_TRUE(WmpMediaItem(record({{"DiskNumber", "2"}, {"Genre", ""}})).Save(&media, false));
    EXPECT_TRUE(WmpMediaItem(record({{"DisksInSet", "4"}})).Save(&media, false));
    EXPECT_EQ(media.writes, (Writes{{L"WM/PartOfSet", L"2/"}}));

    media.writes.clear();
    EXPECT_TRUE(WmpMediaItem(record({{"TrackTitle", "T"}})).Save(&media, true));
    ASSERT_EQ(media.writes.size(), fields::kSaved.size());
    EXPECT_EQ(media.attributes[L"Title"], L"T");
    EXPECT_EQ(media.writes[1].second, L"");
    EXPECT_EQ(media.attributes[L"WM/PartOfSet"], L"/");
    EXPECT_EQ(media.attributes[L"ReleaseDate"], L"1/1/ 04:20:00 PM");
}

TEST(SaveMediaItem, DoesNotWriteTheFirstOfSeveralValues) {
    FakeMedia media;
    media.attributes = {{L"Author", L"A"}, {L"WM/AlbumArtist", L"A"}, {L"WM/Genre", L"G"}};
    media.severalValues = {L"Author", L"WM/Genre"};
    EXPECT_TRUE(WmpMediaItem(record({{"TrackArtist", "A"}, {"Genre", "G"}})).Save(&media, false));
    EXPECT_EQ(media.writes, (Writes{{L"WM/AlbumArtist", L"A"}}));
    media.writes.clear();
    EXPECT_TRUE(WmpMediaItem(record({{"TrackArtist", "B"}, {"Genre", "a"}})).Save(&media, false));
    EXPECT_EQ(media.writes,
              (Writes{{L"WM/AlbumArtist", L"B"}, {L"Author", L"B"}, {L"WM/Genre", L"a"}}));
    EXPECT_TRUE(media.isLeftAlone());
}

TEST(MediaItemRecord, TakesTheTrackArtistForAMissingAlbumArtist) {
    StringPairArray caseful(false);  // keys ignore case here whatever they did where they come from
    caseful.set("trackartist", "T");
    for (const auto& [metadata, artist] :
         {std::pair{caseful, "T"},
          {record({{"TrackArtist", "T"}, {"albumartist", ""}}), "T"},
          {record({{"TrackArtist", "T"}, {"AlbumArtist", "A"}}), "A"}})
        EXPECT_EQ(WmpMediaItem(metadata).getAlbumArtist(), String(artist));
}

TEST(MediaItemFields, AreSpecialByTheirExactNamesOnly) {
    FakeMedia media;
    const WmpMediaItem dated(record({{"Year", "1999"}, {"DiskNumber", "2"}}));
    for (const char* field : {"Filename", "year", "disknumber"})
        EXPECT_TRUE(dated.writeField(&media, field));
    EXPECT_EQ(media.writes, (Writes{{L"ReleaseDateYear", L"1999"}, {L"WM/PartOfSet", L"2"}}));
}

}  // namespace
}  // namespace orvane
