// Cover art in real files, by way of the stand-in Format runtime beside this program.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <io.h>

#include "media/file_rewrite.h"
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
        EXPECT_TRUE(media.isLeftAlone());
        CoUninitialize();
        // The media is no object of its own, so its last reference never goes.
    }  // NOLINT(clang-analyzer-cplusplus.NewDelete)

    void use(const fs::path& path) {
        track = path;
        media.sourcePath = path.wstring();
    }
    bool retrieve(const fs::path& to) { return retrieved(to) == WmpMediaItem::Retrieved::written; }
    WmpMediaItem::Retrieved retrieved(const fs::path& to) {
        return WmpMediaItem::retrieveTrackCoverArt(TrackSource(&media), textOf(to));
    }
    bool embed(const fs::path& image) {
        return WmpMediaItem::setAlbumCoverArt(TrackSource(&media), textOf(image));
    }
    int count() { return WmpMediaItem::countCoverArt(TrackSource(&media)); }
    String found() {
        String path;
        return WmpMediaItem::findCoverArtFile(TrackSource(&media), path) ? path : String("none");
    }
    // What a failing call logs: one line.
    template <typename Work>
    static std::string logOf(Work work) {
        CapturedLog log;
        EXPECT_FALSE(work());
        const auto lines = log.lines();
        EXPECT_EQ(lines.size(), 1U);
        return lines.empty() ? "" : lines[0];
    }
    // Somebody else has the file open.
    static UniqueFile opened(const fs::path& path, DWORD access, DWORD share) {
        UniqueFile file(CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
        EXPECT_TRUE(file);
        return file;
    }

    TrackFolder folder;
    fs::path track;
    FakeMedia media;
};

constexpr std::size_t kRecord = 17;  // a picture record of the platform in a 32-bit process

TEST_F(CoverArt, ReplacesAllPicturesAndIsReadBackByteForByte) {
    const Bytes sound = soundOf(track);
    const auto tags = tagsOf(track);
    for (const std::size_t size : {100, 80'000, 300}) addPicture(track, someImage(size));
    const std::size_t aroundTheLimit = 0xFFFF - kRecord - 2 * sizeof(L"image/jpeg");
    std::vector<Bytes> images{sample("cover.jpg"), sample("cover.png"), Bytes{0},
                              someImage(20 << 20)};
    for (std::size_t size = aroundTheLimit; size < 0x10000 + 16; size += 13)
        images.push_back(someImage(size));

    const fs::path out = folder.path(L"out \u65e5\u672c.jpg");
    ASSERT_TRUE(retrieve(out));
    EXPECT_EQ(contentOf(out), someImage(100));
    for (const Bytes& image : images) {
        ASSERT_TRUE(embed(folder.file(L"in \u00e9.jpg", image))) << image.size();
        EXPECT_EQ(count(), 1) << image.size();
        ASSERT_TRUE(retrieve(out)) << image.size();
        EXPECT_TRUE(contentOf(out) == image) << image.size();
    }
    EXPECT_EQ(soundOf(track), sound);
    EXPECT_EQ(tagsOf(track), tags);
    const auto header = headerOf(track);
    EXPECT_EQ(header.attributes().size(), tags.size() + 1);
    const auto picture = asf::Picture::parse(header.find(asf::kPictureName)->value);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->mimeType, u"image/jpeg");
    EXPECT_EQ(picture->type, 0);
    EXPECT_TRUE(picture->description.empty());
}

TEST_F(CoverArt, IsUnchangedWhenTheImageIsUnusable) {
    addPicture(track, someImage(100));
    const Bytes before = contentOf(track);

    const fs::path busy = folder.file(L"busy.jpg", someImage(100));
    const UniqueFile writer = opened(busy, GENERIC_WRITE, 0);
    for (const fs::path& path : {folder.path(L"missing \u00e9.jpg"), folder.path(), busy})
        EXPECT_THAT(logOf([&] { return embed(path); }),
                    HasSubstr("WmpMediaItem::setAlbumCoverArt: error opening " + utf8(path) +
                              " for reading."));
    const fs::path huge = folder.file(L"huge.jpg", {});
    fs::resize_file(huge, static_cast<std::uintmax_t>(kMaxImageBytes) + 1);
    for (const auto& [path, step] :
         {std::pair{folder.file(L"empty.jpg", {}), "size of the image failed"},
          {fs::path(L"NUL"), "GetFileType failed for NUL"},
          {huge, "size limit failed"}})
        EXPECT_THAT(logOf([&] { return embed(path); }), HasSubstr(step));
    {
        const fs::path image = folder.file(L"in.jpg", someImage(50));
        const UniqueFile reader = opened(track, GENERIC_READ, FILE_SHARE_READ);
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(logOf([&] { return embed(image); }),
                  "<3> WmpMediaItem::setAlbumCoverArt: OpenEx failed for " + utf8(track) +
                      " (0xc00d001d)");
        EXPECT_GE(GetTickCount64() - start, 990U);
        EXPECT_EQ(count(), 1);
    }
    EXPECT_EQ(contentOf(track), before);
    EXPECT_EQ(count(), 1);
}

TEST_F(CoverArt, IsNotWrittenToAnUnwritableFileOrOverItsTrack) {
    addPicture(track, someImage(70'000));
    const Bytes before = contentOf(track);
    const fs::path busy = folder.file(L"busy.jpg", someImage(10));
    {
        const UniqueFile reader = opened(busy, GENERIC_READ, FILE_SHARE_READ);
        for (const fs::path& path : {folder.path(L"none\\out.jpg"), folder.path(), busy})
            EXPECT_THAT(logOf([&] { return retrieve(path); }),
                        HasSubstr("WmpMediaItem::retrieveTrackCoverArt: error opening " +
                                  utf8(path) + " for writing."));
    }
    {
        // It may be written, but nothing may take its place.
        const UniqueFile reader = opened(busy, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        EXPECT_THAT(logOf([&] { return retrieve(busy); }), HasSubstr("MoveFileExW failed for "));
    }
    EXPECT_EQ(contentOf(busy), someImage(10));
    const auto files = fs::directory_iterator(folder.path());
    EXPECT_EQ(std::distance(begin(files), end(files)), 2) << "half a picture is left";
    // Not even tried: what the stand-in keeps open and locked, another runtime may not.
    const fs::path upperCase = textOf(track).toUpperCase().toWideCharPointer();
    for (const fs::path& path :
         {fs::path(L"NUL"), track, upperCase, folder.path() / L"." / L"track.wma"})
        EXPECT_EQ(retrieved(path), WmpMediaItem::Retrieved::failed) << path;
    EXPECT_EQ(contentOf(track), before);

    const fs::path longer = folder.file(L"longer.jpg", someImage(200'000));
    EXPECT_TRUE(retrieve(longer));
    EXPECT_EQ(contentOf(longer), someImage(70'000));
}

TEST_F(CoverArt, IsNoneForAFileThatIsNotATrack) {
    const fs::path out = folder.path(L"out.jpg");
    const fs::path image = folder.file(L"in.jpg", someImage(50));
    EXPECT_EQ(count(), 0);
    EXPECT_FALSE(retrieve(out));

    const Bytes whole = contentOf(track);
    std::vector<Bytes> contents{{}, someImage(5000), Bytes(whole.begin(), whole.begin() + 100)};
    // A header that claims to be larger than any memory.
    contents.push_back(whole);
    std::fill_n(contents.back().begin() + 16, 8, std::uint8_t{0x7F});
    const auto expectNone = [&] {
        EXPECT_EQ(count(), 0);
        EXPECT_FALSE(retrieve(out));
        EXPECT_FALSE(fs::exists(out));
        EXPECT_FALSE(embed(image));
        EXPECT_EQ(found(), String("none"));
    };
    for (const Bytes& content : contents) {
        use(folder.file(L"odd.wma", content));
        expectNone();
        EXPECT_EQ(contentOf(track), content);
    }
    for (const fs::path& path : {folder.path(L"missing.wma"), folder.path(), fs::path(),
                                 fs::path(L"http://127.0.0.1:1/a.wma"), folder.track()}) {
        use(path);
        media.sourcePathFails = path == folder.path(L"track.wma");
        expectNone();
    }
    EXPECT_EQ(WmpMediaItem::countCoverArt(TrackSource(nullptr)), 0);
}

TEST_F(CoverArt, IsFoundBesideTheTrackByCollectionIdOrAsTheFoldersPicture) {
    struct Row {
        const wchar_t* id;  // null: it cannot be read
        std::vector<const wchar_t*> files;
        int count;
        const wchar_t* found;
    };
    constexpr const wchar_t* small = L"albumart_{0A-1B}_small.jpg";
    constexpr const wchar_t* large = L"albumart_{0A-1B}_large.jpg";
    for (const Row& row : {Row{nullptr, {L"folder.jpg", small}, 1, L"folder.jpg"},
                           // An id that is there but empty counts the folder's picture, and looks
                           // for one named by the id.
                           Row{L"", {L"folder.jpg"}, 1, nullptr},
                           Row{L"", {L"albumart__small.jpg"}, 0, L"albumart__small.jpg"},
                           Row{L"{0A-1B}", {L"folder.jpg"}, 0, nullptr},
                           Row{L"{0A-1B}", {L"folder.jpg", small}, 1, small},
                           Row{L"{0A-1B}", {small, large}, 2, large}}) {
        const TrackFolder own;
        use(own.track());
        for (const wchar_t* file : row.files) own.file(file, someImage(10));
        media.unreadable.clear();
        if (row.id == nullptr) media.unreadable = {L"WM/WMCollectionID"};
        media.attributes[L"WM/WMCollectionID"] = row.id == nullptr ? L"" : row.id;
        EXPECT_EQ(count(), row.count);
        EXPECT_EQ(found(), row.found == nullptr ? "none" : textOf(own.path(row.found)));
        if (row.count < 2) continue;

        addPicture(track, someImage(10));
        EXPECT_EQ(count(), 1);
        media.offersMedia3 = false;
        EXPECT_EQ(count(), 1);
        EXPECT_EQ(found(), String("none"));
        EXPECT_NE(own.track(), fs::path());  // anew, without a picture
        EXPECT_EQ(count(), 0);
    }
}

TEST_F(CoverArt, WorksWithPathsLongerThan260Characters) {
    const fs::path deep = folder.deep(280);
    const fs::path in = deep / L"in \u00e9.jpg";
    use(deep / L"tr\u00e4ck \u65e5.wma");
    TrackFolder::copySample(track);
    media.unreadable = {L"WM/WMCollectionID"};
    EXPECT_EQ(count(), 0);
    writeFile(deep / L"folder.jpg", someImage(10));
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(found(), textOf(deep / L"folder.jpg"));

    writeFile(in, someImage(70'000));
    ASSERT_TRUE(embed(in));
    fs::remove(openable(deep / L"folder.jpg"));
    EXPECT_EQ(count(), 1);
    ASSERT_TRUE(retrieve(in));
    EXPECT_EQ(contentOf(in), someImage(70'000));
    EXPECT_FALSE(retrieve(track));
}

// Lets the track go in a message of the waiting thread.
UniqueFile player;
bool marked = false;
void CALLBACK letGo(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    marked = FileRewrite::inProgress();
    player.reset();
}

TEST_F(CoverArt, WaitsForAFileInUseAndMarksTheRewrite) {
    addPicture(track, someImage(100));
    const fs::path out = folder.path(L"out.jpg");
    for (const bool embeds : {true, false}) {
        player = opened(track, GENERIC_READ, 0);
        SetTimer(nullptr, 0, 300, &letGo);
        EXPECT_TRUE(embeds ? embed(folder.file(L"in.jpg", someImage(50))) : retrieve(out));
        EXPECT_EQ(marked, embeds);
        EXPECT_FALSE(FileRewrite::inProgress());
    }
    EXPECT_EQ(contentOf(out), someImage(50));
    player = opened(track, GENERIC_READ, 0);
    EXPECT_EQ(retrieved(out), WmpMediaItem::Retrieved::failed) << "it may have a picture";
    player.reset();
}

TEST(FileRewriteMark, EndsWhenTheLastMarkIsReleased) {
    EXPECT_FALSE(FileRewrite::ended());
    auto first = std::make_unique<FileRewrite>();
    const UniqueHandle ended = FileRewrite::ended();
    auto second = std::make_unique<FileRewrite>();
    first.reset();
    EXPECT_EQ(WaitForSingleObject(ended.get(), 0), DWORD{WAIT_TIMEOUT});
    EXPECT_TRUE(FileRewrite::inProgress());
    second.reset();
    EXPECT_EQ(WaitForSingleObject(ended.get(), 0), DWORD{WAIT_OBJECT_0});
}

TEST(WriteImage, SucceedsOnlyWhenTheWholeImageIsWritten) {
    const TrackFolder folder;
    const Bytes image = someImage(100);
    std::FILE* stream = nullptr;
    const fs::path a = folder.file(L"a.jpg", {});
    // Accepted into the stream's buffer, refused when that is written out at the end.
    ASSERT_EQ(_wfopen_s(&stream, folder.path(L"b.jpg").c_str(), L"wb"), 0);
    const int otherFile = _wopen(a.c_str(), _O_RDONLY | _O_BINARY);
    ASSERT_EQ(_dup2(otherFile, _fileno(stream)), 0);
    _close(otherFile);
    EXPECT_FALSE(writeWhole(stream, image));

    ASSERT_EQ(_wfopen_s(&stream, a.c_str(), L"rb"), 0);
    EXPECT_FALSE(writeWhole(stream, image));
}

}  // namespace
}  // namespace orvane
