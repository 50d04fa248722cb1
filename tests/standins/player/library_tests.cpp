#include "tests/standins/player/event_log.h"
#include "tests/standins/player/fixture.h"

namespace orvane::standin {
namespace {

class LibraryTest : public PlayerTest {
protected:
    ComRef<IWMPMediaCollection> media() {
        ComRef<IWMPMediaCollection> collection;
        EXPECT_EQ(m_player->core()->get_mediaCollection(collection.put()), S_OK);
        return collection;
    }
    ComRef<IWMPPlaylistCollection> playlists() {
        ComRef<IWMPPlaylistCollection> collection;
        EXPECT_EQ(m_player->core()->get_playlistCollection(collection.put()), S_OK);
        return collection;
    }
    ComRef<IWMPPlaylist> all() {
        ComRef<IWMPPlaylist> list;
        EXPECT_EQ(media()->getAll(list.put()), S_OK);
        return list;
    }
    ComRef<IWMPPlaylist> withPath(const std::wstring& path) {
        ComRef<IWMPPlaylist> list;
        EXPECT_EQ(media()->getByAttribute(Text(L"SourceURL").get(), Text(path).get(), list.put()),
                  S_OK);
        return list;
    }
    static LONG countOf(const ComRef<IWMPPlaylist>& list) {
        LONG count = -1;
        EXPECT_EQ(list->get_count(&count), S_OK);
        return count;
    }
};

TEST_F(LibraryTest, FiftyThousandItemsCostNoMoreThanFew) {
    PlayerOptions options;
    options.synthetic = 50'000;
    Player& player = start(options);
    const ULONGLONG begin = GetTickCount64();
    const long before = liveObjects();
    for (int i = 0; i < 20'000; ++i) {
        const auto list = all();
        ComRef<IWMPMedia> item;
        ASSERT_EQ(list->get_Item(49'999 - i, item.put()), S_OK);
    }
    const ULONGLONG indexed = GetTickCount64();
    for (size_t i = 0; i < 20'000; ++i) ASSERT_EQ(countOf(withPath(player.itemPath(i * 2))), 1);
    const ULONGLONG byPath = GetTickCount64();
    EXPECT_EQ(liveObjects(), before);
    // Each is some 0.1 s; a copy of the list, or a scan of it, for each would be minutes.
    EXPECT_LT(indexed - begin, 5000U);
    EXPECT_LT(byPath - indexed, 5000U);
}

TEST_F(LibraryTest, ListedByPathInAStableOrderAndWithinBounds) {
    sample(L"b.wma");
    std::filesystem::create_directories(m_folder / "A");
    sample(L"A\\z.WMA");
    sample(L"C.wma");
    PlayerOptions options;
    options.library = m_folder;
    options.listTwice = {L"B.WMA"};
    Player& player = start(options);
    const std::wstring root = m_folder.wstring() + L"\\";
    ASSERT_EQ(player.itemCount(), 4U);
    EXPECT_EQ(player.itemPath(0), root + L"A\\z.WMA");
    EXPECT_EQ(player.itemPath(1), root + L"b.wma");
    EXPECT_EQ(player.itemPath(2), root + L"b.wma");
    EXPECT_EQ(player.itemPath(3), root + L"C.wma");

    const auto list = all();
    ComRef<IWMPMedia> item;
    EXPECT_TRUE(FAILED(list->get_Item(4, item.put())));
    EXPECT_TRUE(FAILED(list->get_Item(-1, item.put())));
    EXPECT_EQ(countOf(withPath(root + L"B.wma")), 2);
    EXPECT_EQ(countOf(withPath(root + L"c.WMA")), 1);
    EXPECT_EQ(countOf(withPath(root + L"d.wma")), 0);
    EXPECT_EQ(countOf(withPath(L"")), 0);

    // The two entries of one file are two items, and a list that was given out stays as it was.
    ComRef<IWMPMedia> one = player.item(1);
    VARIANT_BOOL same = VARIANT_TRUE;
    EXPECT_EQ(one->get_isIdentical(player.item(2).get(), &same), S_OK);
    EXPECT_EQ(same, VARIANT_FALSE);
    EXPECT_EQ(one->get_isIdentical(player.item(1).get(), &same), S_OK);
    EXPECT_EQ(same, VARIANT_TRUE);
    player.addToLibrary(root + L"d.wma");
    EXPECT_EQ(countOf(list), 4);
    EXPECT_EQ(countOf(all()), 5);
    EXPECT_EQ(countOf(withPath(root + L"d.wma")), 1);
    options.library = m_folder / "missing";
    std::string error;
    EXPECT_FALSE(Player(options).openLibrary(error));
    EXPECT_NE(error.find("missing"), std::string::npos);
}

TEST_F(LibraryTest, PlaylistsKeepWhatIsAddedInOrder) {
    PlayerOptions options;
    options.synthetic = 3;
    Player& player = start(options);
    const auto log = makeObject<EventLog>();
    DWORD cookie = 0;
    ASSERT_EQ(eventsOf(player.core())->Advise(log.get(), &cookie), S_OK);

    ComRef<IWMPPlaylistArray> named;
    LONG count = -1;
    ASSERT_EQ(playlists()->getByName(Text(L"OrVane:Dirty").get(), named.put()), S_OK);
    EXPECT_EQ(named->get_count(&count), S_OK);
    EXPECT_EQ(count, 0);
    ComRef<IWMPPlaylist> made;
    ASSERT_EQ(playlists()->newPlaylist(Text(L"OrVane:Dirty").get(), made.put()), S_OK);
    for (size_t index : {2U, 0U, 2U}) EXPECT_EQ(made->appendItem(player.item(index).get()), S_OK);
    ComRef<IWMPPlaylist> second;
    ASSERT_EQ(playlists()->newPlaylist(Text(L"OrVane:Dirty").get(), second.put()), S_OK);

    ASSERT_EQ(playlists()->getByName(Text(L"OrVane:Dirty").get(), named.put()), S_OK);
    EXPECT_EQ(named->get_count(&count), S_OK);
    EXPECT_EQ(count, 2);
    ComRef<IWMPPlaylist> found;
    EXPECT_TRUE(FAILED(named->Item(2, found.put())));
    ASSERT_EQ(named->Item(0, found.put()), S_OK);
    EXPECT_EQ(countOf(found), 3) << "the first of the name comes first";
    const std::vector<std::wstring> paths = {player.itemPath(2), player.itemPath(0),
                                             player.itemPath(2)};
    EXPECT_EQ(player.playlistPaths(L"OrVane:Dirty"), paths);

    EXPECT_EQ(made->appendItem(nullptr), E_INVALIDARG);
    EXPECT_EQ(all()->appendItem(player.item(0).get()), E_ACCESSDENIED);
    EXPECT_EQ(player.itemCount(), 3U);
    EXPECT_EQ(playlists()->remove(second.get()), S_OK);
    EXPECT_EQ(player.playlistNames().size(), 1U);
    player.pump(50);
    EXPECT_TRUE(log->has("PlaylistAdded OrVane:Dirty"));
    EXPECT_TRUE(log->has("PlaylistChange 6"));
    EXPECT_TRUE(log->has("PlaylistRemoved OrVane:Dirty"));
}

}  // namespace
}  // namespace orvane::standin
