// What independent readers see in files that we wrote: ffprobe, ffmpeg and exiftool.

#include <gtest/gtest.h>
#include <stdio.h>

#include <memory>
#include <numeric>

#include "standins/asf/picture.h"
#include "tests/asf/asf_test_files.h"

namespace orvane::asf::test {
namespace {

Bytes outputOf(const std::string& command) {
    const auto close = [](FILE* pipe) { ::pclose(pipe); };
    const std::unique_ptr<FILE, decltype(close)> pipe(::popen(command.c_str(), "r"), close);
    Bytes output;
    std::uint8_t buffer[65'536];
    while (pipe) {
        const std::size_t got = std::fread(buffer, 1, sizeof(buffer), pipe.get());
        if (got == 0) break;
        putBytes(output, std::span(buffer).first(got));
    }
    return output;
}

std::string textOutputOf(const std::string& command) {
    const Bytes output = outputOf(command);
    return {output.begin(), output.end()};
}

bool isThere(const std::string& tool) {
    return !outputOf("command -v " + tool + " 2>/dev/null").empty();
}

class AsfTools : public testing::Test {
protected:
    // A copy of every sample with new tags and pictures.
    void SetUp() override {
        if (!isThere("ffprobe") || !isThere("exiftool"))
            GTEST_SKIP() << "ffprobe or exiftool missing";
        for (const auto& from : samples()) {
            const auto path = m_folder.path() / from.filename();
            writeAll(path, readAll(from));
            std::string error;
            auto header = readHeader(path, error);
            ASSERT_TRUE(header) << error;
            header->setText(u"Title", u"Tïtle 日本 🎵");
            header->setText(u"Author", u"Artist é");
            header->setText(u"WM/AlbumArtist", u"Album Artist");
            header->setText(u"WM/AlbumTitle", u"Album");
            header->setText(u"WM/PartOfSet", u"2/3");
            header->setText(u"WM/TrackNumber", u"11");
            header->setText(u"WM/Year", u"1999");
            header->setText(u"WM/Genre", u"");
            header->setText(u"WM/Lyrics", std::u16string(40'000, u'l'));
            for (const Bytes& data : {m_small, m_large})
                header->attributes().push_back(bytesAttribute(
                    pictureName, Picture{3, u"image/png", u"cover", data}.serialise()));
            ASSERT_TRUE(replaceHeader(path, *header, error)) << error;
            m_tracks.emplace_back(from, path);
        }
    }

    static std::string quoted(const std::filesystem::path& path) {
        return "'" + path.string() + "'";
    }

    TempFolder m_folder;
    Bytes m_small = sample("cover.png");
    Bytes m_large = [] {
        Bytes data = sample("cover.png");
        const std::size_t start = data.size();
        data.resize(70'000);
        std::iota(data.begin() + static_cast<std::ptrdiff_t>(start), data.end(), std::uint8_t{0});
        return data;
    }();
    std::vector<std::pair<std::filesystem::path, std::filesystem::path>> m_tracks;
};

TEST_F(AsfTools, FfprobeShowsTheNewTagsAndTheOldSound) {
    for (const auto& [from, path] : m_tracks) {
        const std::string shown = textOutputOf(
            "ffprobe -v error -show_entries format_tags:format=size " + quoted(path) + " 2>&1");
        for (const char* expected : {"TAG:title=Tïtle 日本 🎵\n", "TAG:artist=Artist é\n",
                                     "TAG:album_artist=Album Artist\n", "TAG:album=Album\n",
                                     "TAG:disc=2/3\n", "TAG:track=11\n", "TAG:WM/Year=1999\n"})
            EXPECT_NE(shown.find(expected), std::string::npos) << path << expected << shown;
        EXPECT_EQ(shown.find("TAG:genre"), std::string::npos) << shown;
        const auto sound = [](const std::filesystem::path& file) {
            return textOutputOf("ffmpeg -v error -i " + quoted(file) +
                                " -map 0:a -c copy -f md5 - 2>&1");
        };
        EXPECT_EQ(sound(path).rfind("MD5=", 0), 0U) << sound(path);
        EXPECT_EQ(sound(path), sound(from));
    }
}

TEST_F(AsfTools, ExiftoolGivesThePicturesBackByteForByte) {
    for (const auto& [from, path] : m_tracks) {
        const std::string shown = textOutputOf(
            "exiftool -s -s -Title -Author -AlbumArtist -Year -PartOfSet -PictureMIMEType "
            "-PictureDescription -PictureType -FileLength -Warning " +
            quoted(path));
        for (const char* expected :
             {"Author: Artist é\n", "AlbumArtist: Album Artist\n", "Year: 1999\n",
              "PartOfSet: 2/3\n", "PictureMIMEType: image/png\n", "PictureDescription: cover\n",
              "PictureType: Front Cover\n"})
            EXPECT_NE(shown.find(expected), std::string::npos) << path << expected << shown;
        EXPECT_NE(shown.find("FileLength: " + std::to_string(std::filesystem::file_size(path))),
                  std::string::npos)
            << shown;
        EXPECT_EQ(shown.find("Warning"), std::string::npos) << shown;
        // It shows them in the order of the objects that hold them.
        Bytes both = m_large;
        putBytes(both, m_small);
        EXPECT_TRUE(outputOf("exiftool -a -b -Picture " + quoted(path)) == both) << path;
    }
}

}  // namespace
}  // namespace orvane::asf::test
