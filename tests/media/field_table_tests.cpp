#include "media/field_table.h"

#include <gtest/gtest.h>

#include "media/picture_files.h"

namespace orvane {
namespace {

using juce::CharPointer_UTF8;
using juce::String;

TEST(FieldTable, TranslatesFieldsIgnoringCaseAndNothingElse) {
    for (const char* field : fields::kLoaded)
        EXPECT_TRUE(fields::attributeFor(field).isNotEmpty()) << field;
    EXPECT_EQ(fields::attributeFor("Year"), String("ReleaseDateYear"));
    EXPECT_EQ(fields::attributeFor("albumtitle"), String("WM/AlbumTitle"));
    EXPECT_EQ(fields::attributeFor("DiskNumber"), fields::attributeFor("PartOfSet"));
    for (const char* field : {"Filename", "DisksInSet", "AlbumArt", "", "Title", "TrackTitle "})
        EXPECT_TRUE(fields::attributeFor(field).isEmpty()) << field;
}

TEST(FieldTable, SplitsThePartOfASetAtItsFirstSlash) {
    const struct {
        const char* text;
        const char* number;
        const char* count;
    } cases[] = {{"3/12", "3", "12"}, {"3", "3", ""},  {"3/12/1", "3", "12/1"},
                 {"/12", "", "12"},   {"3/", "3", ""}, {"/", "", ""}};
    for (const auto& one : cases) {
        const auto part = fields::splitPartOfSet(one.text);
        EXPECT_EQ(part.diskNumber, String(one.number)) << one.text;
        EXPECT_EQ(part.disksInSet, String(one.count)) << one.text;
    }
}

TEST(PictureFiles, LieInTheTracksFolder) {
    const String track(CharPointer_UTF8("C:\\Mus\xC3\xA9\\\xE6\x97\xA5\xE6\x9C\xAC\\a.wma"));
    const auto files = albumPictureFiles(track, "{12-AB}");
    ASSERT_EQ(files.size(), 2);
    const String folder(CharPointer_UTF8("C:\\Mus\xC3\xA9\\\xE6\x97\xA5\xE6\x9C\xAC"));
    EXPECT_EQ(files[0], folder + "\\albumart_{12-AB}_large.jpg");
    EXPECT_EQ(files[1], folder + "\\albumart_{12-AB}_small.jpg");
    EXPECT_EQ(folderPictureFile(track), folder + "\\folder.jpg");
    // Without a backslash all of the path counts as the folder.
    EXPECT_EQ(folderPictureFile("a.wma"), String("a.wma\\folder.jpg"));
    EXPECT_EQ(albumPictureFiles("a.wma", "")[0], String("a.wma\\albumart__large.jpg"));
}

TEST(PictureFiles, AnIdThatLeadsElsewhereNamesNothing) {
    for (const char* id : {"..\\..\\secret", "x/y", "a*", "a?", "c:x", "a|b", "<", ">", "\"", "\n"})
        EXPECT_TRUE(albumPictureFiles("C:\\m\\a.wma", id).isEmpty()) << id;
    EXPECT_TRUE(albumPictureFiles("", "id").isEmpty());
    EXPECT_TRUE(folderPictureFile("").isEmpty());
}

}  // namespace
}  // namespace orvane
