#include <type_traits>

#include "tests/media/track_folder.h"
#include "tests/plugin/plugin_fixture.h"

namespace orvane::test {
namespace {

using juce::String;
using juce::StringPairArray;
namespace fs = std::filesystem;

class MediaInfo : public PluginTest {
protected:
    MediaInfo() {
        m_options.library = m_folder.path();
        m_options.synthetic = 0;
    }
    // Of the track at a path or an index.
    template <typename Where>
    bool get(Where where, const String& art = {}) {
        metadata.clear();
        return command([&](COrVaneWmpPlugin& plugin) {
            if constexpr (std::is_same_v<Where, int>)
                return plugin.getMediaInfoFromIndex(where, metadata, art);
            else
                return plugin.getMediaInfoFromPath(where, metadata, art);
        });
    }
    // With emptyOk set, which must change nothing.
    template <typename Where>
    bool set(Where where, const StringPairArray& record, const String& art = {}) {
        return command([&](COrVaneWmpPlugin& plugin) {
            if constexpr (std::is_same_v<Where, int>)
                return plugin.setMediaInfoToIndex(where, record, art, true);
            else
                return plugin.setMediaInfoToPath(where, record, art, true);
        });
    }
    int count() { return command(&COrVaneWmpPlugin::getTrackCount); }
    static StringPairArray record(
        std::initializer_list<std::pair<const char*, const char*>> entries) {
        StringPairArray result;
        for (const auto& [key, value] : entries) result.set(key, value);
        return result;
    }

    const TrackFolder m_folder;
    const fs::path m_track = m_folder.track();
    const StringPairArray m_genre = record({{"Genre", "G"}});
    StringPairArray metadata;
};

TEST_F(MediaInfo, EmptyValuesNeverClearATag) {
    start();
    ASSERT_TRUE(get(0));
    const auto before = metadata;
    ASSERT_TRUE(before["TrackTitle"].isNotEmpty());
    EXPECT_TRUE(set(0, record({{"TrackTitle", ""}, {"Composer", "C"}})));
    EXPECT_TRUE(set(textOf(m_track), record({{"Genre", ""}})));
    // A write that the player refuses, and a picture that is not there, change no answer.
    m_player->fail({"IWMPMedia::setItemInfo"});
    EXPECT_TRUE(set(0, m_genre, "C:\\missing.jpg"));
    ASSERT_TRUE(get(0));
    for (const String& key : before.getAllKeys())
        EXPECT_EQ(metadata[key], key == "Composer" ? String("C") : before[key]) << key;
}

TEST_F(MediaInfo, OfNoTrackOrOfTwoIsFalse) {
    const fs::path twice = m_folder.track(L"twice.wma");
    m_options.listTwice = {L"twice"};
    start();
    EXPECT_EQ(count(), 3);
    const auto untouched = contentOf(twice);
    for (const String& path : {String(), String("C:\\nowhere.wma"), textOf(twice)}) {
        EXPECT_FALSE(get(path));
        EXPECT_FALSE(set(path, m_genre));
    }
    for (const int index : {-1, 3, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_FALSE(get(index));
        EXPECT_FALSE(set(index, m_genre));
    }
    EXPECT_EQ(metadata.size(), 0);
    EXPECT_EQ(contentOf(twice), untouched);

    for (const char* call : {"IWMPCore::get_mediaCollection", "IWMPMediaCollection::getAll"}) {
        m_player->fail({call});
        EXPECT_FALSE(get(0));
        EXPECT_EQ(count(), 0);
    }
    m_player->fail({"IWMPPlaylist::get_count"});
    EXPECT_EQ(count(), 0);
    m_plugin->SetCore(nullptr);
    EXPECT_FALSE(get(0));
    EXPECT_FALSE(get(textOf(m_track)));
    EXPECT_FALSE(set(0, m_genre));
    EXPECT_EQ(count(), 0);
}

TEST_F(MediaInfo, CarriesThePictureBesideTheTrack) {
    m_options.failReads = {L"WM/WMCollectionID"};
    start();
    const fs::path out = m_folder.path(L"out.jpg");
    EXPECT_FALSE(get(0, textOf(out)));
    EXPECT_EQ(metadata["Filename"], textOf(m_track));
    EXPECT_FALSE(fs::exists(out));

    // The player protects its pictures; the copy is an ordinary file, which the next one replaces.
    constexpr DWORD kProtected = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;
    fs::path picture;
    for (const unsigned seed : {1U, 2U}) {
        picture = m_folder.file(L"folder.jpg", someImage(300, seed));
        SetFileAttributesW(picture.c_str(), kProtected);
        ASSERT_TRUE(get(0, textOf(out)));
        EXPECT_EQ(contentOf(out), someImage(300, seed));
        EXPECT_EQ(GetFileAttributesW(out.c_str()) & kProtected, 0U);
        SetFileAttributesW(picture.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    // The very file, however it is written, is there already.
    EXPECT_TRUE(get(0, textOf(picture).toUpperCase()));
    EXPECT_EQ(contentOf(picture), someImage(300, 2));
    EXPECT_FALSE(get(0, textOf(m_folder.path(L"no folder") / L"out.jpg")));
    const auto whole = contentOf(m_track);
    EXPECT_FALSE(get(0, textOf(m_track)));
    EXPECT_EQ(contentOf(m_track), whole);
    EXPECT_GT(metadata.size(), 0);
}

TEST_F(MediaInfo, ByIndexCostsThePlayerTheSameInAnyLibrary) {
    m_options.synthetic = 50'000;
    start();
    const auto calls = [&](int index) {
        const auto before = m_player->callCount();
        EXPECT_TRUE(get(index));
        return m_player->callCount() - before;
    };
    const auto first = calls(1);
    EXPECT_EQ(calls(50'000), first);
    EXPECT_LT(first, 40U);
    EXPECT_EQ(m_player->callCount("IWMPMediaCollection::getAll"), 2U);
    EXPECT_TRUE(set(25'000, record({{"Genre", "G"}, {"Composer", "C"}})));
    EXPECT_EQ(m_player->callCount("IWMPMedia::setItemInfo"), 2U);
}

}  // namespace
}  // namespace orvane::test
