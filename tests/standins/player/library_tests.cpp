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
    ComRef<IWMPPlaylist> all() {
        ComRef<IWMPPlaylist> list;
        EXPECT_EQ(media()->getAll(list.put()), S_OK);
        return list;
    }
    static LONG countOf(const ComRef<IWMPPlaylist>& list) {
        LONG count = -1;
        EXPECT_EQ(list->get_count(&count), S_OK);
        return count;
    }
    LONG countWithPath(const std::wstring& path) {
        ComRef<IWMPPlaylist> list;
        EXPECT_EQ(media()->getByAttribute(Text(L"SourceURL").get(), Text(path).get(), list.put()),
                  S_OK);
        return countOf(list);
    }
};

TEST_F(LibraryTest, FiftyThousandItemsCostNoMoreThanFew) {
    PlayerOptions options;
    options.synthetic = 50'000;
    Player& player = start(options);
    const long before = liveObjects();
    const ULONGLONG begin = GetTickCount64();
    for (int i = 0; i < 20'000; ++i) {
        ComRef<IWMPMedia> item;
        ASSERT_EQ(all()->get_Item(49'999 - i, item.put()), S_OK);
        ASSERT_EQ(countWithPath(player.itemPath(static_cast<size_t>(i) * 2)), 1);
    }
    // Some 0.2 s; a copy of the list, or a scan of it, for each would be minutes.
    EXPECT_LT(GetTickCount64() - begin, 8000U);
    EXPECT_EQ(liveObjects(), before);
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
    size_t index = 0;
    for (const wchar_t* name : {L"A\\z.WMA", L"b.wma", L"b.wma", L"C.wma"})
        EXPECT_EQ(player.itemPath(index++), root + name);
    const auto list = all();
    ComRef<IWMPMedia> item;
    EXPECT_TRUE(FAILED(list->get_Item(4, item.put())));
    EXPECT_TRUE(FAILED(list->get_Item(-1, item.put())));
    for (const auto& [name, count] :
         {std::pair{L"B.wma", 2}, {L"c.WMA", 1}, {L"d.wma", 0}, {L"", 0}})
        EXPECT_EQ(countWithPath(root + name), count) << toUtf8(name);

    // The two entries of one file are two items, and a list that was given out stays as it was.
    VARIANT_BOOL same = VARIANT_TRUE;
    EXPECT_EQ(player.item(1)->get_isIdentical(player.item(2).get(), &same), S_OK);
    EXPECT_EQ(same, VARIANT_FALSE);
    EXPECT_EQ(player.item(1)->get_isIdentical(player.item(1).get(), &same), S_OK);
    EXPECT_EQ(same, VARIANT_TRUE);
    player.addToLibrary(root + L"d.wma");
    EXPECT_EQ(countOf(list), 4);
    EXPECT_EQ(countOf(all()), 5);
    EXPECT_EQ(countWithPath(root + L"d.wma"), 1);
}

}  // namespace
}  // namespace orvane::standin
