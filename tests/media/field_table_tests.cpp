#include "media/field_table.h"

#include <gtest/gtest.h>

#include "media/picture_files.h"

namespace orvane {
namespace {

using juce::String;

TEST(FieldTable, TranslatesFieldsIgnoringCaseAndNothingElse) {
    EXPECT_EQ(fields::attributeFor("albumtitle"), String("WM/AlbumTitle"));
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
    // Without a backslash all of the path counts as the folder.
    for (const auto& [path, folder] :
         {std::pair{"C:\\Mus\xC3\xA9\\b\\a.wma", "C:\\Mus\xC3\xA9\\b"}, {"a.wma", "a.wma"}}) {
        const String track = String::fromUTF8(path);
        const String start = String::fromUTF8(folder);
        EXPECT_EQ(albumPictureFiles(track, "{12-AB}").joinIntoString("|"),
                  start + "\\albumart_{12-AB}_large.jpg|" + start + "\\albumart_{12-AB}_small.jpg");
        EXPECT_EQ(folderPictureFile(track), start + "\\folder.jpg");
    }
}

TEST(PictureFiles, AnIdThatIsNoFileNameGivesNoNames) {
    for (const char* id : {"..\\..\\secret", "x/y", "a*", "a?", "c:x", "a|b", "<", ">", "\"", "\n"})
        EXPECT_TRUE(albumPictureFiles("C:\\m\\a.wma", id).isEmpty()) << id;
    EXPECT_TRUE(albumPictureFiles("", "id").isEmpty());
    EXPECT_TRUE(folderPictureFile("").isEmpty());
}

}  // namespace
}  // namespace orvane
