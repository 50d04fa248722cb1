#include "platform/format_runtime.h"
#include "tests/plugin/operations/operations_fixture.h"

namespace orvane {
namespace {

using juce::String;
using juce::StringPairArray;
using test::contentOf;
using test::someImage;
using test::textOf;
namespace fs = std::filesystem;

class MediaInfo : public test::OperationsTest {
protected:
    bool getByPath(const String& path, const String& art = {}) {
        metadata.clear();
        return command([&](COrVaneWmpPlugin& plugin) {
            return plugin.getMediaInfoFromPath(path, metadata, art);
        });
    }
    bool getByIndex(int index, const String& art = {}) {
        metadata.clear();
        return command([&](COrVaneWmpPlugin& plugin) {
            return plugin.getMediaInfoFromIndex(index, metadata, art);
        });
    }
    bool setByPath(const String& path, const StringPairArray& record, const String& art = {},
                   bool emptyOk = false) {
        return command([&](COrVaneWmpPlugin& plugin) {
            return plugin.setMediaInfoToPath(path, record, art, emptyOk);
        });
    }
    bool setByIndex(int index, const StringPairArray& record, const String& art = {},
                    bool emptyOk = false) {
        return command([&](COrVaneWmpPlugin& plugin) {
            return plugin.setMediaInfoToIndex(index, record, art, emptyOk);
        });
    }
    static StringPairArray record(
        std::initializer_list<std::pair<const char*, const char*>> entries) {
        StringPairArray result;
        for (const auto& [key, value] : entries) result.set(key, juce::CharPointer_UTF8(value));
        return result;
    }

    StringPairArray metadata;
};

TEST_F(MediaInfo, IsReadAndWrittenByPathAndByIndex) {
    m_folder.track(L"a.wma");
    const fs::path track = m_folder.track(L"b \u00e9 \u65e5.wma");
    startPlayer();
    EXPECT_EQ(command(&COrVaneWmpPlugin::getTrackCount), 2);

    ASSERT_TRUE(setByPath(textOf(track), record({{"TrackTitle", "T \xC3\xA9 \xF0\x9F\x98\x80"},
                                                 {"TrackArtist", "A"},
                                                 {"Year", "1999"},
                                                 {"DiskNumber", "2"}})));
    ASSERT_TRUE(setByIndex(1, record({{"AlbumTitle", "Album"}})));
    ASSERT_TRUE(getByPath(textOf(track)));
    const auto byPath = metadata;
    ASSERT_TRUE(getByIndex(1));
    EXPECT_EQ(metadata, byPath);
    EXPECT_EQ(metadata["Filename"], textOf(track));
    EXPECT_EQ(metadata["TrackTitle"],
              String(juce::CharPointer_UTF8("T \xC3\xA9 \xF0\x9F\x98\x80")));
    EXPECT_EQ(metadata["AlbumArtist"], String("A"));
    EXPECT_EQ(metadata["AlbumTitle"], String("Album"));
    EXPECT_EQ(metadata["Year"], String("1999"));
    EXPECT_EQ(metadata["DiskNumber"], String("2"));
    const auto header = test::headerOf(track);
    ASSERT_TRUE(header.find(u"Author"));
    EXPECT_EQ(header.find(u"Author")->text(), u"A");
    ASSERT_TRUE(getByIndex(0));
    EXPECT_EQ(metadata["Filename"], textOf(m_folder.path(L"a.wma")));
}

TEST_F(MediaInfo, EmptyValuesNeverClearATag) {
    const fs::path track = m_folder.track();
    startPlayer();
    ASSERT_TRUE(getByIndex(0));
    const auto before = metadata;
    ASSERT_TRUE(before["TrackTitle"].isNotEmpty());
    EXPECT_TRUE(setByIndex(0, record({{"TrackTitle", ""}, {"Composer", "C"}}), {}, true));
    EXPECT_TRUE(setByPath(textOf(track), record({{"Genre", ""}}), {}, true));
    ASSERT_TRUE(getByIndex(0));
    for (const String& key : before.getAllKeys())
        EXPECT_EQ(metadata[key], key == "Composer" ? String("C") : before[key])
            << key.toStdString();
}

TEST_F(MediaInfo, OfNoTrackOrOfTwoIsFalse) {
    m_folder.track(L"twice.wma");
    m_options.listTwice = {L"twice"};
    EXPECT_FALSE(getByIndex(0));
    EXPECT_FALSE(setByIndex(0, record({{"Genre", "G"}})));
    EXPECT_EQ(command(&COrVaneWmpPlugin::getTrackCount), 0);
    startPlayer();
    EXPECT_EQ(command(&COrVaneWmpPlugin::getTrackCount), 2);
    const auto untouched = contentOf(m_folder.path(L"twice.wma"));
    for (const String& path :
         {String(), String("C:\\nowhere.wma"), textOf(m_folder.path(L"twice.wma"))}) {
        EXPECT_FALSE(getByPath(path));
        EXPECT_FALSE(setByPath(path, record({{"Genre", "G"}})));
    }
    for (const int index : {-1, 2, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_FALSE(getByIndex(index));
        EXPECT_FALSE(setByIndex(index, record({{"Genre", "G"}})));
    }
    EXPECT_EQ(metadata.size(), 0);
    EXPECT_EQ(contentOf(m_folder.path(L"twice.wma")), untouched);

    for (const char* call : {"IWMPCore::get_mediaCollection", "IWMPMediaCollection::getAll"}) {
        fail({call});
        EXPECT_FALSE(getByIndex(0));
        EXPECT_EQ(command(&COrVaneWmpPlugin::getTrackCount), 0);
    }
    fail({"IWMPPlaylist::get_count"});
    EXPECT_EQ(command(&COrVaneWmpPlugin::getTrackCount), 0);
}

TEST_F(MediaInfo, OfARefusedWriteIsStillTrue) {
    m_folder.track();
    startPlayer();
    fail({"IWMPMedia::setItemInfo"});
    test::CapturedLog log;
    EXPECT_TRUE(setByIndex(0, record({{"Genre", "G"}, {"TrackTitle", "T"}}), "C:\\missing.jpg"));
    const std::string lines = log.take();
    EXPECT_NE(lines.find("WmpMediaItem::Save: error writing Genre data."), std::string::npos);
    EXPECT_NE(lines.find("WmpMediaItem::setAlbumCoverArt: error opening C:\\missing.jpg for "
                         "reading."),
              std::string::npos);
}

TEST_F(MediaInfo, OfTheCurrentTrack) {
    m_folder.track();
    const auto current = [&] {
        return command(
            [&](COrVaneWmpPlugin& plugin) { return plugin.getCurrentMediaInfo(metadata); });
    };
    EXPECT_FALSE(current());
    startPlayer();
    EXPECT_FALSE(current());
    EXPECT_TRUE(command([&](COrVaneWmpPlugin& plugin) { return plugin.start(pathOf(0)); }));
    ASSERT_TRUE(current());
    EXPECT_EQ(metadata["Filename"], pathOf(0));
    fail({"IWMPCore::get_currentMedia"});
    EXPECT_FALSE(current());
}

TEST_F(MediaInfo, CarriesTheEmbeddedPicture) {
    const fs::path track = m_folder.track();
    startPlayer();
    const auto sound = test::soundOf(track);
    const auto image = test::sample("cover.png");
    const String in = textOf(m_folder.file(L"in \u00e9.png", image));
    const String out = textOf(m_folder.path(L"out \u65e5.jpg"));
    EXPECT_TRUE(setByPath(textOf(track), record({{"Genre", "G"}}), in));
    ASSERT_TRUE(getByPath(textOf(track), out));
    EXPECT_EQ(metadata["AlbumArt"], String("1"));
    EXPECT_EQ(contentOf(m_folder.path(L"out \u65e5.jpg")), image);

    // Tags written by the player afterwards leave the picture where it is.
    EXPECT_TRUE(setByIndex(0, record({{"TrackTitle", "after"}})));
    EXPECT_EQ(test::picturesIn(track), std::vector<test::Bytes>{image});
    EXPECT_EQ(test::soundOf(track), sound);

    EXPECT_TRUE(setByIndex(0, {}, textOf(m_folder.file(L"large.jpg", someImage(90'000)))));
    ASSERT_TRUE(getByIndex(0, out));
    EXPECT_EQ(contentOf(m_folder.path(L"out \u65e5.jpg")), someImage(90'000));
    EXPECT_EQ(metadata["AlbumArt"], String("1"));
}

TEST_F(MediaInfo, CarriesThePictureBesideTheTrack) {
    const fs::path track = m_folder.track();
    startPlayer();
    m_player->change([](auto& options) { options.failReads = {L"WM/WMCollectionID"}; });
    const fs::path out = m_folder.path(L"out.jpg");
    EXPECT_FALSE(getByIndex(0, textOf(out)));
    EXPECT_EQ(metadata["Filename"], textOf(track));
    EXPECT_FALSE(fs::exists(out));

    // The player protects its pictures; the copy is an ordinary file, which the next one replaces.
    const fs::path picture = m_folder.file(L"folder.jpg", someImage(500));
    SetFileAttributesW(picture.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    ASSERT_TRUE(getByIndex(0, textOf(out)));
    EXPECT_EQ(contentOf(out), someImage(500));
    EXPECT_EQ(GetFileAttributesW(out.c_str()) & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN),
              0u);
    SetFileAttributesW(picture.c_str(), FILE_ATTRIBUTE_NORMAL);
    m_folder.file(L"folder.jpg", someImage(300, 2));
    ASSERT_TRUE(getByIndex(0, textOf(out)));
    EXPECT_EQ(contentOf(out), someImage(300, 2));

    // The very file, however it is written, is there already.
    EXPECT_TRUE(getByIndex(0, textOf(picture).toUpperCase()));
    EXPECT_EQ(contentOf(picture), someImage(300, 2));
    EXPECT_FALSE(getByIndex(0, textOf(m_folder.path(L"no folder") / L"out.jpg")));
    const auto whole = contentOf(track);
    EXPECT_FALSE(getByIndex(0, textOf(track)));
    EXPECT_EQ(contentOf(track), whole);
    EXPECT_GT(metadata.size(), 0);
}

TEST_F(MediaInfo, ByIndexCostsThePlayerTheSameInAnyLibrary) {
    m_options.synthetic = 50'000;
    startPlayer();
    EXPECT_EQ(command(&COrVaneWmpPlugin::getTrackCount), 50'000);
    const auto calls = [&](int index) {
        const auto before = m_player->callCount();
        const auto lists = m_player->callCount("IWMPMediaCollection::getAll");
        EXPECT_TRUE(getByIndex(index));
        EXPECT_EQ(m_player->callCount("IWMPMediaCollection::getAll"), lists + 1);
        return m_player->callCount() - before;
    };
    const auto first = calls(0);
    EXPECT_EQ(calls(49'999), first);
    EXPECT_LT(first, 40u);
    const auto before = m_player->callCount("IWMPMedia::setItemInfo");
    EXPECT_TRUE(setByIndex(25'000, record({{"Genre", "G"}, {"Composer", "C"}})));
    EXPECT_EQ(m_player->callCount("IWMPMedia::setItemInfo"), before + 2);
}

TEST_F(MediaInfo, KeepsTheFormatRuntimeForTheObjectsLife) {
    m_folder.track();
    startPlayer();
    EXPECT_FALSE(FormatRuntime::isLoaded());
    EXPECT_TRUE(getByIndex(0));
    EXPECT_TRUE(FormatRuntime::isLoaded());
    m_plugin->SetCore(nullptr);
    m_plugin.Release();
    EXPECT_FALSE(FormatRuntime::isLoaded());
    m_plugin = new CComObject<COrVaneWmpPlugin>;
}

}  // namespace
}  // namespace orvane
