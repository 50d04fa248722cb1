// What independent readers see in files that we wrote: ffprobe, ffmpeg and exiftool.

#include <gtest/gtest.h>
#include <stdio.h>

#include <memory>
#include <numeric>

#include "standins/asf/picture.h"
#include "tests/standins/asf/asf_test_files.h"

namespace orvane::asf::test {
namespace {

std::string outputOf(const std::string& command) {
    const auto close = [](FILE* pipe) { ::pclose(pipe); };
    const std::unique_ptr<FILE, decltype(close)> pipe(::popen(command.c_str(), "r"), close);
    std::string output;
    char buffer[65'536];
    while (pipe) {
        const std::size_t got = std::fread(buffer, 1, sizeof(buffer), pipe.get());
        if (got == 0) break;
        output.append(buffer, got);
    }
    return output;
}

std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

std::string soundOf(const std::filesystem::path& path) {
    return outputOf("ffmpeg -v error -i " + quoted(path) + " -map 0:a -c copy -f md5 - 2>&1");
}

void expectAll(const std::string& shown, std::initializer_list<std::string> expected) {
    for (const std::string& line : expected)
        EXPECT_NE(shown.find(line + "\n"), std::string::npos) << line << " in\n" << shown;
}

TEST(AsfTools, ReadTheNewTagsThePicturesAndTheOldSound) {
    if (outputOf("command -v ffprobe").empty() || outputOf("command -v exiftool").empty())
        GTEST_SKIP() << "ffprobe or exiftool missing";
    const Bytes small = sample("cover.png");
    Bytes large = small;
    large.resize(70'000);
    std::iota(large.begin() + std::ssize(small), large.end(), std::uint8_t{0});
    const TempFolder folder;
    for (const char* name : {"sakura.wma", "Track 06.wma", "Déjà vu 日本.wma"}) {
        const auto from = dataFolder() / name;
        const auto path = folder.path() / from.filename();
        writeAll(path, readAll(from));
        std::string error;
        auto header = readHeader(path, error);
        ASSERT_TRUE(header) << error;
        header->setText(u"Title", u"Tïtle 日本 🎵");
        header->setText(u"Author", u"Artist é");
        header->setText(u"WM/AlbumArtist", u"Album Artist");
        header->setText(u"WM/PartOfSet", u"2/3");
        header->setText(u"WM/TrackNumber", u"11");
        header->setText(u"WM/Year", u"1999");
        header->setText(u"WM/Genre", u"");
        header->setText(u"WM/Lyrics", std::u16string(40'000, u'l'));
        for (const Bytes& data : {small, large})
            header->attributes().push_back(
                bytesAttribute(kPictureName, Picture{3, u"image/png", u"cover", data}.serialise()));
        ASSERT_TRUE(replaceHeader(path, *header, error)) << error;

        const std::string probed =
            outputOf("ffprobe -v error -show_entries format_tags " + quoted(path) + " 2>&1");
        expectAll(probed,
                  {"TAG:title=Tïtle 日本 🎵", "TAG:artist=Artist é", "TAG:album_artist=Album Artist",
                   "TAG:disc=2/3", "TAG:track=11", "TAG:WM/Year=1999"});
        EXPECT_EQ(probed.find("TAG:genre"), std::string::npos) << probed;
        EXPECT_EQ(soundOf(path).rfind("MD5=", 0), 0U) << soundOf(path);
        EXPECT_EQ(soundOf(path), soundOf(from));

        const std::string shown = outputOf(
            "exiftool -s -s -Author -Year -PictureMIMEType -PictureDescription -PictureType "
            "-FileLength -Warning " +
            quoted(path));
        expectAll(shown, {"Author: Artist é", "Year: 1999", "PictureMIMEType: image/png",
                          "PictureDescription: cover", "PictureType: Front Cover",
                          "FileLength: " + std::to_string(std::filesystem::file_size(path))});
        EXPECT_EQ(shown.find("Warning"), std::string::npos) << shown;
        // It shows them in the order of the objects that hold them.
        std::string both(large.begin(), large.end());
        both.append(small.begin(), small.end());
        EXPECT_TRUE(outputOf("exiftool -a -b -Picture " + quoted(path)) == both) << path;
    }
}

}  // namespace
}  // namespace orvane::asf::test
