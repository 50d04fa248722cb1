// What commands have the player do, where it goes wrong.

#include <gmock/gmock.h>

#include <algorithm>
#include <thread>

#include "media/file_rewrite.h"
#include "tests/media/track_folder.h"
#include "tests/plugin/plugin_fixture.h"
#include "tests/support/captured_log.h"

namespace orvane::test {
namespace {

using juce::String;
using juce::StringArray;
using juce::StringPairArray;
using testing::HasSubstr;
using testing::Not;
using Plugin = COrVaneWmpPlugin;
namespace fs = std::filesystem;

class Playback : public PluginTest {
protected:
    bool play(const String& path) { return command(&Plugin::start, path); }
    bool playFirst() { return play(m_player->itemPath(0).c_str()); }
    void expectNothingWorks() {
        CapturedLog log;
        for (const auto operation : {&Plugin::pause, &Plugin::stop, &Plugin::startCurrent,
                                     &Plugin::isPlaying, &Plugin::isShufflePlay})
            EXPECT_FALSE(command(operation));
        EXPECT_FALSE(playFirst());
        EXPECT_THAT(log.take(), Not(HasSubstr("timeout")));
    }
};

TEST_F(Playback, WaitsASecondForAStateAndLogsATimeOut) {
    m_options.refusePath = L"refused";
    start();
    EXPECT_FALSE(command(&Plugin::startCurrent)) << "there is none";
    EXPECT_EQ(m_player->callCount("IWMPCore::get_controls"), 0U);
    ASSERT_TRUE(playFirst());
    CapturedLog log;
    EXPECT_FALSE(play("C:\\refused.wma"));
    EXPECT_THAT(log.take(), Not(HasSubstr("timeout")));
    EXPECT_TRUE(pumpUntil([&] { return m_player->playState() == wmppsStopped; }));

    ASSERT_TRUE(playFirst());
    m_player->change([](auto& options) { options.neverReached = {wmppsStopped, wmppsPlaying}; });
    EXPECT_FALSE(command(&Plugin::stop));
    EXPECT_THAT(log.take(), HasSubstr("<3> COrVaneWmpPlugin: timeout occured while waiting for "
                                      "the player to stop\n"));
    const auto began = HasSubstr(
        "<3> COrVaneWmpPlugin: timeout occured while waiting for the playback to begin\n");
    const DWORD before = GetTickCount();
    EXPECT_FALSE(command(&Plugin::startCurrent));
    EXPECT_GE(GetTickCount() - before, 990U);
    EXPECT_THAT(log.take(), began);
    EXPECT_FALSE(playFirst());
    EXPECT_THAT(log.take(), began);
}

TEST_F(Playback, ReturnsFalseWhenThePlayerFailsOrIsMissing) {
    start();
    ASSERT_TRUE(playFirst());
    m_player->fail({"IWMPCore::get_controls", "IWMPCore::get_playState", "IWMPCore::get_settings"});
    expectNothingWorks();
    m_player->fail({"IWMPControls::pause", "IWMPControls::stop", "IWMPControls::play",
                    "IWMPCore::get_playState", "IWMPSettings::getMode"});
    expectNothingWorks();
    m_plugin->SetCore(nullptr);
    expectNothingWorks();

    CComPtr<CComObject<Plugin>> unlinked(new CComObject<Plugin>);
    EXPECT_FALSE(unlinked->isInSpecialMode());
    unlinked->close();
}

class MediaInfo : public PluginTest {
protected:
    MediaInfo() { m_options.library = m_folder.path(); }

    bool get(const String& path) {
        return command(&Plugin::getMediaInfoFromPath, path, m_data, "");
    }
    bool get(int index, const fs::path& picture = {}) {
        m_data.clear();
        return command(&Plugin::getMediaInfoFromIndex, index, m_data, textOf(picture));
    }
    // With emptyOk set, which must change nothing.
    bool set(const String& path, const char* key, const char* value) {
        return command(&Plugin::setMediaInfoToPath, path, record(key, value), "", true);
    }
    bool set(int index, const char* key, const char* value) {
        return command(&Plugin::setMediaInfoToIndex, index, record(key, value), "C:\\no.jpg", true);
    }
    int count() { return command(&Plugin::getTrackCount); }
    static StringPairArray record(const char* key, const char* value) {
        StringPairArray record;
        record.set(key, value);
        record.set("Composer", "C");
        return record;
    }

    const TrackFolder m_folder;
    const fs::path m_track = m_folder.track();
    const Bytes m_whole = contentOf(m_track);
    StringPairArray m_data;
};

TEST_F(MediaInfo, EmptyValuesNeverClearATag) {
    start();
    ASSERT_TRUE(get(0));
    const auto before = m_data;
    ASSERT_TRUE(before["TrackTitle"].isNotEmpty());
    // Nor do a picture that is not there and a write that the player refuses change an answer.
    EXPECT_TRUE(set(0, "TrackTitle", ""));
    EXPECT_TRUE(set(textOf(m_track), "Genre", ""));
    m_player->fail({"IWMPMedia::setItemInfo"});
    EXPECT_TRUE(set(0, "Genre", "G"));
    ASSERT_TRUE(get(0));
    for (const String& key : before.getAllKeys())
        EXPECT_EQ(m_data[key], key == "Composer" ? String("C") : before[key]) << key;
}

TEST_F(MediaInfo, FailsUnlessThePathNamesExactlyOneTrack) {
    const fs::path twice = m_folder.track(L"twice.wma");
    m_options.listTwice = {L"twice"};
    start();
    EXPECT_EQ(count(), 5);
    const auto untouched = contentOf(twice);
    for (const String& path : {String(), String("C:\\nowhere.wma"), textOf(twice)}) {
        EXPECT_FALSE(get(path));
        EXPECT_FALSE(set(path, "Genre", "G"));
    }
    for (const int index : {-1, 5, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_FALSE(get(index));
        EXPECT_FALSE(set(index, "Genre", "G"));
    }
    EXPECT_EQ(m_data.size(), 0);
    EXPECT_EQ(contentOf(twice), untouched);

    for (const char* call : {"IWMPCore::get_mediaCollection", "IWMPMediaCollection::getAll"}) {
        m_player->fail({call});
        EXPECT_FALSE(get(0));
        EXPECT_EQ(count(), 0);
    }
    m_player->fail({"IWMPPlaylist::get_count"});
    EXPECT_EQ(count(), 0);
    m_plugin->SetCore(nullptr);
    EXPECT_FALSE(get(textOf(m_track)));
    EXPECT_EQ(count(), 0);
}

TEST_F(MediaInfo, ReadsAndWritesThePictureFile) {
    m_options.failReads = {L"WM/WMCollectionID"};
    const fs::path other = m_folder.track(L"x.wma");
    start();
    const fs::path out = m_folder.path(L"out.jpg");
    EXPECT_FALSE(get(0, out));
    EXPECT_EQ(m_data["Filename"], textOf(m_track));
    EXPECT_FALSE(fs::exists(out));

    // The player protects its pictures; the copy is an ordinary file, which the next one replaces.
    constexpr DWORD kProtected = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;
    const fs::path picture = m_folder.path(L"folder.jpg");
    for (const unsigned seed : {1U, 2U}) {
        writeFile(picture, someImage(300, seed));
        SetFileAttributesW(picture.c_str(), kProtected);
        ASSERT_TRUE(get(0, out));
        EXPECT_EQ(contentOf(out), someImage(300, seed));
        EXPECT_EQ(GetFileAttributesW(out.c_str()) & kProtected, 0U);
        SetFileAttributesW(picture.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    // The very file, however it is written, is there already.
    EXPECT_TRUE(get(0, m_folder.path(L"FOLDER.JPG")));
    EXPECT_EQ(contentOf(picture), someImage(300, 2));
    EXPECT_FALSE(get(0, m_folder.path(L"no folder") / L"out.jpg"));
    // Over no track of the library, however its path is spelled.
    std::wstring slashes = m_folder.path(L"y/../x.wma").wstring();
    std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
    for (const fs::path& path : {m_track, other, m_folder.path(L"X.WMA"), fs::path(slashes)}) {
        EXPECT_FALSE(get(0, path)) << path;
        EXPECT_EQ(contentOf(m_track), m_whole);
        EXPECT_EQ(contentOf(other), m_whole);
    }

    // A track that nobody can open just now may have a picture of its own.
    const UniqueFile busy(
        CreateFileW(m_track.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(get(0, m_folder.path(L"other.jpg")));
    EXPECT_FALSE(fs::exists(m_folder.path(L"other.jpg")));
}

// The picture's command is in the middle of the file when the player closes.
TEST_F(MediaInfo, ClosingWaitsForAFileThatIsBeingRewritten) {
    start();
    const fs::path image = m_folder.file(L"new.jpg", someImage(40'000));
    const UniqueHandle held(CreateEventW(nullptr, TRUE, FALSE, L"OrVaneStandInFormatHold"));
    OrvaneCommand write("setMediaInfoToIndex");
    write.setValue("trackIndex", "0");
    write.setValue("albumArtPath", textOf(image));
    ASSERT_TRUE(m_app->commands.deliver(write));
    ASSERT_TRUE(pumpUntil([] { return FileRewrite::inProgress(); }));
    std::thread disk([&] {
        Sleep(Pipe::kClosePatienceMs + 500);
        SetEvent(held.get());
    });
    const ULONGLONG begin = GetTickCount64();
    m_plugin.Release();
    EXPECT_GE(GetTickCount64() - begin, Pipe::kClosePatienceMs);
    disk.join();
    EXPECT_EQ(m_app->commands.lines(1), Names{"setMediaInfoToIndex return_value=true"});
    EXPECT_GT(contentOf(m_track).size(), m_whole.size() + 40'000);
}

class Playlists : public PluginTest {
protected:
    bool add(const StringArray& paths) { return command(&Plugin::addToDirtyFolder, "x", paths); }
    [[nodiscard]] String path(std::size_t index) const { return m_player->itemPath(index).c_str(); }
    [[nodiscard]] auto tracks() const { return m_player->playlistPaths(L"OrVane:Dirtyx"); }
};

TEST_F(Playlists, UseTheFirstOfTheirNameAndSkipUnknownOrAmbiguousTracks) {
    m_options.listTwice = {L"twice"};
    const TrackFolder folder;
    folder.track(L"twice.wma");
    m_options.library = folder.path();
    start();
    CComPtr<IWMPPlaylistCollection> playlists;
    ASSERT_EQ(m_player->core()->get_playlistCollection(&playlists), S_OK);
    for (int i = 0; i < 2; ++i) {
        CComPtr<IWMPPlaylist> playlist;
        ASSERT_EQ(playlists->newPlaylist(CComBSTR(L"OrVane:Dirtyx"), &playlist), S_OK);
    }
    EXPECT_TRUE(add({"C:\\nowhere.wma", path(0), "", path(2), path(2)}));
    EXPECT_EQ(m_player->playlistNames().size(), 2U);
    EXPECT_EQ(tracks(), std::vector<std::wstring>(2, m_player->itemPath(2)));
}

TEST_F(Playlists, ReturnFalseWhenThePlayerFails) {
    start();
    const std::pair<const char*, bool> cases[] = {{"IWMPCore::get_playlistCollection", false},
                                                  {"IWMPPlaylistCollection::getByName", false},
                                                  {"IWMPPlaylistArray::get_count", false},
                                                  {"IWMPPlaylistCollection::newPlaylist", false},
                                                  {"IWMPMediaCollection::getByAttribute", true},
                                                  {"IWMPPlaylist::appendItem", true},
                                                  {"IWMPPlaylistArray::Item", false}};
    for (const auto& [call, added] : cases) {
        m_player->fail({call});
        EXPECT_EQ(add({path(0)}), added) << call;
        EXPECT_TRUE(tracks().empty()) << call;
    }
    EXPECT_EQ(m_player->playlistNames().size(), 1U);
    m_plugin->SetCore(nullptr);
    EXPECT_FALSE(add({path(0)}));
}

}  // namespace
}  // namespace orvane::test
