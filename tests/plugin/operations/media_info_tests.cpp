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
    // With emptyOk set, which must change nothing.
    bool setByPath(const String& path, const StringPairArray& record, const String& art = {}) {
        return command([&](COrVaneWmpPlugin& plugin) {
            return plugin.setMediaInfoToPath(path, record, art, true);
        });
    }
    bool setByIndex(int index, const StringPairArray& record, const String& art = {}) {
        return command([&](COrVaneWmpPlugin& plugin) {
            return plugin.setMediaInfoToIndex(index, record, art, true);
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

TEST_F(MediaInfo, EmptyValuesNeverClearATag) {
    const fs::path track = m_folder.track();
    startPlayer();
    ASSERT_TRUE(getByIndex(0));
    const auto before = metadata;
    ASSERT_TRUE(before["TrackTitle"].isNotEmpty());
    EXPECT_TRUE(setByIndex(0, record({{"TrackTitle", ""}, {"Composer", "C"}})));
    EXPECT_TRUE(setByPath(textOf(track), record({{"Genre", ""}})));
    // A write that the player refuses, and a picture that is not there, change no answer.
    fail({"IWMPMedia::setItemInfo"});
    EXPECT_TRUE(setByIndex(0, record({{"Genre", "G"}}), "C:\\missing.jpg"));
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

}  // namespace
}  // namespace orvane
