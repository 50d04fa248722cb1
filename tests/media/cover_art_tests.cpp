// Cover art in real files, by way of the stand-in Format runtime beside this program.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <io.h>

#include "media/format_runtime.h"
#include "media/image_file.h"
#include "media/wmp_media_item.h"
#include "platform/handles.h"
#include "tests/media/fake_media.h"
#include "tests/media/track_folder.h"
#include "tests/support/captured_log.h"

namespace orvane {
namespace {

using juce::String;
using namespace test;
using testing::HasSubstr;
namespace fs = std::filesystem;

class CoverArt : public testing::Test {
protected:
    CoverArt() {
        EXPECT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
        use(folder.track());
    }
    ~CoverArt() override {
        // Every operation gives the module back.
        EXPECT_FALSE(FormatRuntime::isLoaded());
        EXPECT_EQ(media.references, 0);
        CoUninitialize();
    }

    void use(const fs::path& path) {
        track = path;
        media.sourcePath = path.wstring();
    }
    bool retrieve(const fs::path& to) {
        return WmpMediaItem::retrieveTrackCoverArt(&media, textOf(to));
    }
    bool embed(const fs::path& image) {
        return WmpMediaItem::setAlbumCoverArt(&media, textOf(image));
    }
    int count() { return WmpMediaItem::countCoverArt(&media); }
    String found() {
        String path;
        return WmpMediaItem::findCoverArtFile(&media, path) ? path : String("none");
    }
    // What a failing call logs.
    template <typename Work>
    static std::string logOf(Work work) {
        CapturedLog log;
        EXPECT_FALSE(work());
        return log.take();
    }
    TrackFolder folder;
    fs::path track;
    FakeMedia media;
};

constexpr std::size_t kRecord = 17;  // a picture record of the platform in a 32-bit process

TEST_F(CoverArt, ComesBackByteForByteWhateverItIs) {
    const Bytes sound = soundOf(track);
    const auto tags = headerOf(track).attributes().size();
    const std::size_t aroundTheLimit = 0xFFFF - kRecord - 2 * sizeof(L"image/jpeg");
    std::vector<Bytes> images{sample("cover.jpg"), sample("cover.png"), Bytes{0}};
    for (std::size_t size = aroundTheLimit; size < 0x10000 + 16; size += 13)
        images.push_back(someImage(size));
    images.push_back(someImage(20 << 20));

    for (const Bytes& image : images) {
        ASSERT_FALSE(image.empty());
        ASSERT_TRUE(embed(folder.file(L"in \u00e9.jpg", image))) << image.size();
        EXPECT_EQ(count(), 1) << image.size();
        ASSERT_TRUE(retrieve(folder.path(L"out \u65e5\u672c.jpg"))) << image.size();
        EXPECT_TRUE(contentOf(folder.path(L"out \u65e5\u672c.jpg")) == image) << image.size();
    }
    EXPECT_EQ(soundOf(track), sound);
    EXPECT_EQ(headerOf(track).attributes().size(), tags + 1);
}

TEST_F(CoverArt, TakesThePlaceOfAllThatWereThere) {
    const auto tags = headerOf(track).attributes();
    for (const std::size_t size : {100, 80'000, 300}) addPicture(track, someImage(size));
    ASSERT_TRUE(retrieve(folder.path(L"first.jpg")));
    EXPECT_EQ(contentOf(folder.path(L"first.jpg")), picturesIn(track).front());

    const Bytes sound = soundOf(track);
    const Bytes image = someImage(1000, 9);
    ASSERT_TRUE(embed(folder.file(L"new.png", image)));
    EXPECT_EQ(picturesIn(track), std::vector<Bytes>{image});
    EXPECT_EQ(soundOf(track), sound);
    auto after = headerOf(track).attributes();
    ASSERT_EQ(after.size(), tags.size() + 1);
    std::erase_if(after, [](const auto& one) { return one.name == asf::kPictureName; });
    for (std::size_t i = 0; i < tags.size(); ++i) {
        EXPECT_EQ(after[i].name, tags[i].name);
        EXPECT_EQ(after[i].value, tags[i].value);
    }
    const auto header = headerOf(track);
    const auto picture = asf::Picture::parse(header.find(asf::kPictureName)->value);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->mimeType, u"image/jpeg");
    EXPECT_EQ(picture->type, 0);
    EXPECT_TRUE(picture->description.empty());
}

TEST_F(CoverArt, IsLeftAloneByAnImageThatCannotBeTaken) {
    addPicture(track, someImage(100));
    const Bytes before = contentOf(track);

    // Busy: unreadable while another program writes it.
    const fs::path busy = folder.file(L"busy.jpg", someImage(100));
    const UniqueFile writer(CreateFileW(busy.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(writer);
    for (const fs::path& path : {folder.path(L"missing \u00e9.jpg"), folder.path(), busy})
        EXPECT_THAT(logOf([&] { return embed(path); }),
                    HasSubstr("WmpMediaItem::setAlbumCoverArt: error opening " + utf8(path) +
                              " for reading.\n"));
    EXPECT_EQ(logOf([&] { return embed(folder.file(L"empty.jpg", {})); }), "");
    EXPECT_FALSE(embed(L"NUL"));
    const fs::path huge = folder.file(L"huge.jpg", {});
    fs::resize_file(huge, static_cast<std::uintmax_t>(kMaxImageBytes) + 1);
    EXPECT_FALSE(embed(huge));

    EXPECT_EQ(contentOf(track), before);
    EXPECT_EQ(count(), 1);
}

TEST_F(CoverArt, IsNotWrittenWhereItCannotBe) {
    addPicture(track, someImage(70'000));
    const fs::path busy = folder.file(L"busy.jpg", someImage(10));
    {
        const UniqueFile reader(CreateFileW(busy.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(reader);
        for (const fs::path& path : {folder.path(L"none\\out.jpg"), folder.path(), busy})
            EXPECT_THAT(logOf([&] { return retrieve(path); }),
                        HasSubstr("WmpMediaItem::retrieveTrackCoverArt: error opening " +
                                  utf8(path) + " for writing.\n"));
    }
    EXPECT_EQ(contentOf(busy), someImage(10));
    EXPECT_FALSE(retrieve(L"NUL"));

    const fs::path longer = folder.file(L"longer.jpg", someImage(200'000));
    EXPECT_TRUE(retrieve(longer));
    EXPECT_EQ(contentOf(longer), someImage(70'000));
}

TEST_F(CoverArt, NeverOverwritesTheTrack) {
    addPicture(track, someImage(100));
    const Bytes before = contentOf(track);
    // Not even tried: what the stand-in keeps open and locked, another runtime may not.
    const fs::path upperCase = textOf(track).toUpperCase().toWideCharPointer();
    for (const fs::path& path : {track, upperCase, folder.path() / L"." / L"track.wma"})
        EXPECT_EQ(logOf([&] { return retrieve(path); }), "");
    EXPECT_EQ(contentOf(track), before);
}

TEST_F(CoverArt, IsNoneInWhatIsNoTrack) {
    EXPECT_EQ(count(), 0);
    EXPECT_FALSE(retrieve(folder.path(L"out.jpg")));
    EXPECT_FALSE(fs::exists(folder.path(L"out.jpg")));

    const fs::path image = folder.file(L"in.jpg", someImage(50));
    const Bytes whole = contentOf(track);
    std::vector<Bytes> contents{{}, someImage(5000), Bytes(whole.begin(), whole.begin() + 100)};
    // A header that claims to be larger than any memory.
    contents.push_back(whole);
    std::fill_n(contents.back().begin() + 16, 8, std::uint8_t{0x7F});
    for (const Bytes& content : contents) {
        use(folder.file(L"odd.wma", content));
        EXPECT_EQ(count(), 0);
        EXPECT_FALSE(retrieve(folder.path(L"out.jpg")));
        EXPECT_FALSE(embed(image));
        EXPECT_EQ(contentOf(track), content);
    }
    for (const fs::path& path : {folder.path(L"missing.wma"), folder.path(), fs::path(),
                                 fs::path(L"http://127.0.0.1:1/a.wma"), folder.track()}) {
        use(path);
        media.sourcePathFails = path == folder.path(L"track.wma");
        EXPECT_EQ(count(), 0);
        EXPECT_FALSE(retrieve(folder.path(L"out.jpg")));
        EXPECT_FALSE(embed(image));
        EXPECT_EQ(found(), String("none"));
    }
    EXPECT_EQ(WmpMediaItem::countCoverArt(nullptr), 0);
}

TEST_F(CoverArt, IsNotEmbeddedInATrackThatCannotBeWritten) {
    const fs::path image = folder.file(L"in.jpg", someImage(50));
    const Bytes before = contentOf(track);
    {
        const UniqueFile other(CreateFileW(track.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_FALSE(embed(image));
        EXPECT_EQ(count(), 0);
    }
    EXPECT_EQ(contentOf(track), before);
    EXPECT_TRUE(embed(image));
}

TEST_F(CoverArt, LiesBesideTheTrackUnderTheCollectionsName) {
    media.attributes[L"WM/WMCollectionID"] = L"{0A-1B}";
    folder.file(L"folder.jpg", someImage(10));
    EXPECT_EQ(count(), 0);
    EXPECT_EQ(found(), String("none"));

    const fs::path small = folder.file(L"albumart_{0A-1B}_small.jpg", someImage(10));
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(found(), textOf(small));
    const fs::path large = folder.file(L"albumart_{0A-1B}_large.jpg", someImage(10));
    EXPECT_EQ(count(), 2);
    EXPECT_EQ(found(), textOf(large));

    addPicture(track, someImage(10));
    EXPECT_EQ(count(), 1);
    media.offersMedia3 = false;
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(found(), String("none"));
    use(folder.track());
    EXPECT_EQ(count(), 0);
}

TEST_F(CoverArt, LiesBesideTheTrackAsTheFoldersPicture) {
    const fs::path picture = folder.file(L"folder.jpg", someImage(10));
    media.unreadable = {L"WM/WMCollectionID"};
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(found(), textOf(picture));

    // An id that is there but empty counts the folder's picture, and looks for one named by the id.
    media.unreadable.clear();
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(found(), String("none"));
    folder.file(L"albumart__small.jpg", someImage(10));
    EXPECT_EQ(found(), textOf(folder.path(L"albumart__small.jpg")));
}

TEST_F(CoverArt, WorksBeyond260Characters) {
    const fs::path deep = folder.deep(280);
    TrackFolder::copySample(deep / L"tr\u00e4ck \u65e5.wma");
    use(deep / L"tr\u00e4ck \u65e5.wma");
    writeFile(deep / L"in \u00e9.jpg", someImage(70'000));
    EXPECT_EQ(count(), 0);
    ASSERT_TRUE(embed(deep / L"in \u00e9.jpg"));
    EXPECT_EQ(count(), 1);
    ASSERT_TRUE(retrieve(deep / L"out \u65e5.jpg"));
    EXPECT_EQ(contentOf(deep / L"out \u65e5.jpg"), someImage(70'000));
    EXPECT_FALSE(retrieve(track));

    TrackFolder::copySample(track);
    media.unreadable = {L"WM/WMCollectionID"};
    writeFile(deep / L"folder.jpg", someImage(10));
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(found(), textOf(deep / L"folder.jpg"));
}

TEST(WriteImage, IsOnlyClaimedWhenAllOfItIsInTheFile) {
    const TrackFolder folder;
    const Bytes image = someImage(100);
    std::FILE* stream = nullptr;
    const fs::path a = folder.file(L"a.jpg", {});
    const fs::path b = folder.path(L"b.jpg");
    // Accepted into the stream's buffer, refused when that is written out at the end.
    ASSERT_EQ(_wfopen_s(&stream, b.c_str(), L"wb"), 0);
    const int otherFile = _wopen(a.c_str(), _O_RDONLY | _O_BINARY);
    ASSERT_EQ(_dup2(otherFile, _fileno(stream)), 0);
    _close(otherFile);
    EXPECT_FALSE(writeWholeOrDelete(stream, textOf(b), image));
    EXPECT_FALSE(fs::exists(b));

    ASSERT_EQ(_wfopen_s(&stream, a.c_str(), L"rb"), 0);
    EXPECT_FALSE(writeWholeOrDelete(stream, textOf(a), image));
    EXPECT_FALSE(fs::exists(a)) << "nobody may take half of a picture for the whole";

    ASSERT_EQ(_wfopen_s(&stream, b.c_str(), L"wb"), 0);
    EXPECT_TRUE(writeWholeOrDelete(stream, textOf(b), image));
    EXPECT_EQ(contentOf(b), image);
}

}  // namespace
}  // namespace orvane
