#include "tests/plugin/operations/operations_fixture.h"

namespace orvane {
namespace {

using juce::String;
using juce::StringArray;

class Playlists : public test::OperationsTest {
protected:
    using Add = bool (COrVaneWmpPlugin::*)(const String&, const StringArray&);
    bool add(Add operation, const String& name, const StringArray& paths) {
        return command([&](COrVaneWmpPlugin& plugin) { return (plugin.*operation)(name, paths); });
    }
};

TEST_F(Playlists, TakeTheFirstOfTheirNameAndTracksThatAreThereOnce) {
    m_folder.track(L"a.wma");
    m_folder.track(L"twice.wma");
    m_options.listTwice = {L"twice"};
    startPlayer();
    const String twice = test::textOf(m_folder.path(L"twice.wma"));
    const String once = test::textOf(m_folder.path(L"a.wma"));
    CComPtr<IWMPPlaylistCollection> playlists;
    ASSERT_EQ(m_player->core()->get_playlistCollection(&playlists), S_OK);
    for (int i = 0; i < 2; ++i) {
        CComPtr<IWMPPlaylist> playlist;
        ASSERT_EQ(playlists->newPlaylist(CComBSTR(L"OrVane:Dirtyx"), &playlist), S_OK);
    }
    EXPECT_TRUE(
        add(&COrVaneWmpPlugin::addToDirtyFolder, "x", {"C:\\nowhere.wma", twice, "", once, once}));
    EXPECT_EQ(playlistNames().size(), 2);
    EXPECT_EQ(pathsIn(L"OrVane:Dirtyx"), (StringArray{once, once}));
}

TEST_F(Playlists, AnswerFalseWhenThePlayerFails) {
    m_folder.track(L"a.wma");
    EXPECT_FALSE(add(&COrVaneWmpPlugin::addToDirtyFolder, "", {"a"}));
    startPlayer();
    for (const char* call :
         {"IWMPCore::get_playlistCollection", "IWMPPlaylistCollection::getByName",
          "IWMPPlaylistArray::get_count", "IWMPPlaylistCollection::newPlaylist"}) {
        fail({call});
        EXPECT_FALSE(add(&COrVaneWmpPlugin::addToCleanedFolder, "", {pathOf(0)})) << call;
    }
    EXPECT_TRUE(playlistNames().isEmpty());
    for (const char* call : {"IWMPMediaCollection::getByAttribute", "IWMPPlaylist::appendItem"}) {
        fail({call});
        EXPECT_TRUE(add(&COrVaneWmpPlugin::addToCleanedFolder, "", {pathOf(0)})) << call;
    }
    EXPECT_TRUE(pathsIn(L"OrVane:Cleaned").isEmpty());
    fail({"IWMPPlaylistArray::Item"});
    EXPECT_FALSE(add(&COrVaneWmpPlugin::addToCleanedFolder, "", {pathOf(0)}));
}

TEST_F(Playlists, CostTheSameForEachTrackHoweverLargeTheLibrary) {
    m_options.synthetic = 50'000;
    startPlayer();
    ASSERT_EQ(m_player->itemCount(), 50'000u);
    const auto calls = [&](int tracks) {
        StringArray paths;
        for (int i = 0; i < tracks; ++i) paths.add(pathOf(static_cast<size_t>(49'000 + i)));
        const auto before = m_player->callCount();
        EXPECT_TRUE(add(&COrVaneWmpPlugin::addToCleanedFolder, String(tracks), paths));
        return m_player->callCount() - before;
    };
    const auto one = calls(1);
    const auto two = calls(2);
    EXPECT_EQ(calls(11), one + 10 * (two - one));
    EXPECT_EQ(pathsIn(L"OrVane:Cleaned11").size(), 11);
}

}  // namespace
}  // namespace orvane
