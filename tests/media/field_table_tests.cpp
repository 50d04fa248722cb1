#include "media/field_table.h"

#include <gtest/gtest.h>

#include "media/picture_files.h"

namespace orvane {
namespace {

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

TEST(PictureFiles, AnIdThatLeadsElsewhereNamesNothing) {
    for (const char* id : {"..\\..\\secret", "x/y", "a*", "a?", "c:x", "a|b", "<", ">", "\"", "\n"})
        EXPECT_TRUE(albumPictureFiles("C:\\m\\a.wma", id).isEmpty()) << id;
    EXPECT_TRUE(albumPictureFiles("", "id").isEmpty());
    // Without a backslash all of the path counts as the folder.
    EXPECT_EQ(folderPictureFile("a.wma"), String("a.wma\\folder.jpg"));
    EXPECT_EQ(albumPictureFiles("a.wma", "")[0], String("a.wma\\albumart__large.jpg"));
    EXPECT_TRUE(folderPictureFile("").isEmpty());
}

}  // namespace
}  // namespace orvane
