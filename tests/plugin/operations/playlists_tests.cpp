#include "tests/plugin/plugin_fixture.h"
#include "tests/support/temp_folder.h"

namespace orvane::test {
namespace {

using juce::String;
using juce::StringArray;
using Paths = std::vector<std::wstring>;

class Playlists : public PluginTest {
protected:
    using Add = bool (COrVaneWmpPlugin::*)(const String&, const StringArray&);
    bool add(Add operation, const String& name, const StringArray& paths) {
        return command([&](COrVaneWmpPlugin& plugin) { return (plugin.*operation)(name, paths); });
    }
    [[nodiscard]] String path(std::size_t index) const { return m_player->itemPath(index).c_str(); }
};

TEST_F(Playlists, TakeTheFirstOfTheirNameAndTracksThatAreThereOnce) {
    const TempFolder folder;
    m_options.library = folder.path();
    m_options.listTwice = {L"twice"};
    writeFile(folder.path(L"twice.wma"), "");
    start();
    ASSERT_EQ(m_player->itemCount(), 4U);
    CComPtr<IWMPPlaylistCollection> playlists;
    ASSERT_EQ(m_player->core()->get_playlistCollection(&playlists), S_OK);
    for (int i = 0; i < 2; ++i) {
        CComPtr<IWMPPlaylist> playlist;
        ASSERT_EQ(playlists->newPlaylist(CComBSTR(L"OrVane:Dirtyx"), &playlist), S_OK);
    }
    EXPECT_TRUE(add(&COrVaneWmpPlugin::addToDirtyFolder, "x",
                    {"C:\\nowhere.wma", path(0), "", path(2), path(2)}));
    EXPECT_EQ(m_player->playlistNames().size(), 2U);
    EXPECT_EQ(m_player->playlistPaths(L"OrVane:Dirtyx"),
              (Paths{m_player->itemPath(2), m_player->itemPath(2)}));
}

TEST_F(Playlists, AnswerFalseWhenThePlayerFails) {
    start();
    const struct {
        const char* call;
        bool added;
    } cases[] = {{"IWMPCore::get_playlistCollection", false},
                 {"IWMPPlaylistCollection::getByName", false},
                 {"IWMPPlaylistArray::get_count", false},
                 {"IWMPPlaylistCollection::newPlaylist", false},
                 {"IWMPMediaCollection::getByAttribute", true},
                 {"IWMPPlaylist::appendItem", true},
                 {"IWMPPlaylistArray::Item", false}};
    for (const auto& [call, added] : cases) {
        m_player->fail({call});
        EXPECT_EQ(add(&COrVaneWmpPlugin::addToCleanedFolder, "", {path(0)}), added) << call;
        EXPECT_TRUE(m_player->playlistPaths(L"OrVane:Cleaned").empty()) << call;
    }
    EXPECT_EQ(m_player->playlistNames().size(), 1U);
    m_plugin->SetCore(nullptr);
    EXPECT_FALSE(add(&COrVaneWmpPlugin::addToDirtyFolder, "", {path(0)}));
}

TEST_F(Playlists, CostTheSameForEachTrackHoweverLargeTheLibrary) {
    m_options.synthetic = 50'000;
    start();
    const auto calls = [&](int tracks) {
        StringArray paths;
        for (int i = 0; i < tracks; ++i) paths.add(path(static_cast<std::size_t>(49'000 + i)));
        const auto before = m_player->callCount();
        EXPECT_TRUE(add(&COrVaneWmpPlugin::addToCleanedFolder, String(tracks), paths));
        return m_player->callCount() - before;
    };
    const auto one = calls(1);
    const auto two = calls(2);
    EXPECT_EQ(calls(11), one + 10 * (two - one));
    EXPECT_EQ(m_player->playlistPaths(L"OrVane:Cleaned11").size(), 11U);
}

}  // namespace
}  // namespace orvane::test
