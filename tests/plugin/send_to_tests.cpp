#include <gmock/gmock.h>

#include "tests/plugin/plugin_fixture.h"

namespace orvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const wchar_t* kMediaName = L"MediaSendTo";
constexpr const wchar_t* kPlaylistName = L"PlaylistSendTo";

// A safe array of the player's, given back in the end.
class Value : public VARIANT {
public:
    explicit Value(const std::vector<IUnknown*>& objects, LONG lowerBound = 0) : VARIANT{} {
        vt = VT_ARRAY | VT_UNKNOWN;
        parray = SafeArrayCreateVector(VT_UNKNOWN, lowerBound, static_cast<ULONG>(objects.size()));
        for (LONG index = lowerBound; IUnknown * object : objects) {
            EXPECT_EQ(SafeArrayPutElement(parray, &index, object), S_OK);
            ++index;
        }
    }
    ~Value() { SafeArrayDestroy(parray); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
};

class SendTo : public PluginTest {
protected:
    void SetUp() override { start(); }

    // The paths of each event that one call gives rise to, as "1.wma|2.wma".
    Names send(const wchar_t* name, const VARIANT& value, std::size_t expected) {
        EXPECT_EQ(m_plugin->SetProperty(name, &value), S_OK);
        Names lists;
        for (const OrvaneMessage& event : events(expected)) {
            EXPECT_EQ(event.getName(), "CleanTracks");
            juce::StringArray paths;
            event.getList("trackPaths", paths);
            lists.push_back(paths.joinIntoString("|").replace("M:\\Synthetic\\", "").toStdString());
        }
        return lists;
    }
    CComPtr<IWMPPlaylist> playlistOf(const std::vector<IWMPMedia*>& tracks) {
        CComPtr<IWMPPlaylistCollection> collection;
        EXPECT_EQ(m_player->core()->get_playlistCollection(&collection), S_OK);
        CComPtr<IWMPPlaylist> playlist;
        EXPECT_EQ(collection->newPlaylist(CComBSTR(L"a list"), &playlist), S_OK);
        for (IWMPMedia* track : tracks) EXPECT_EQ(playlist->appendItem(track), S_OK);
        return playlist;
    }
};

TEST_F(SendTo, ItemsThatAreNoTracksOrHaveNoPathAreSkipped) {
    const auto one = m_player->item(0);
    const auto two = m_player->item(1);
    const auto list = playlistOf({one});
    int asked = 0;
    m_player->during("IWMPMedia::get_sourceURL", [&] {
        // An empty path would end the list for its reader.
        return ++asked == 1 ? E_FAIL : asked == 2 ? S_FALSE : S_OK;
    });
    EXPECT_THAT(send(kMediaName, Value({nullptr, list, one, two, one, nullptr, two}), 1),
                ElementsAre("1.wma|2.wma"));
    EXPECT_THAT(send(kMediaName, Value({nullptr, list}), 1), ElementsAre(""));
    for (const LONG lowerBound : {-1, 1, 1000000})
        EXPECT_THAT(send(kMediaName, Value({two, one}, lowerBound), 1), ElementsAre("2.wma|1.wma"));
    VARIANT none{};
    none.vt = VT_ARRAY | VT_UNKNOWN;
    EXPECT_THAT(send(kMediaName, none, 1), ElementsAre(""));
}

TEST_F(SendTo, EachPlaylistIsSentSeparately) {
    const auto one = m_player->item(0);
    const auto two = m_player->item(1);
    const auto first = playlistOf({one, two, one});
    const auto empty = playlistOf({});
    EXPECT_THAT(send(kPlaylistName, Value({first, nullptr, one, empty}), 2),
                ElementsAre("1.wma|2.wma|1.wma", ""));
    EXPECT_THAT(send(kPlaylistName, Value({}), 0), IsEmpty());
    m_player->fail({"IWMPPlaylist::get_Item"});
    EXPECT_THAT(send(kPlaylistName, Value({first}), 1), ElementsAre(""));
    m_player->fail({"IWMPPlaylist::get_count"});
    EXPECT_THAT(send(kPlaylistName, Value({first}), 0), IsEmpty());
}

TEST_F(SendTo, AValueOfAnotherTypeSendsNothing) {
    const auto track = m_player->item(0);
    const Value real({track});
    VARIANT values[8] = {};
    values[1].vt = VT_BSTR;
    values[2].vt = VT_UNKNOWN;
    values[2].punkVal = m_plugin;
    values[3].vt = VT_ARRAY | VT_UNKNOWN | VT_BYREF;
    values[3].pparray = const_cast<SAFEARRAY**>(&real.parray);
    values[4] = real;
    values[4].vt = VT_ARRAY | VT_DISPATCH;
    // Labelled as objects, but of two dimensions, or holding what would be taken for addresses, or
    // with bounds and no elements behind them.
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    for (int i : {5, 6, 7}) values[i].vt = VT_ARRAY | VT_UNKNOWN;
    values[5].parray = SafeArrayCreate(VT_UNKNOWN, 2, bounds);
    values[6].parray = SafeArrayCreate(VT_I4, 1, bounds);
    LONG index = 1;
    LONG number = 0x12345678;
    ASSERT_EQ(SafeArrayPutElement(values[6].parray, &index, &number), S_OK);
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_UNKNOWN, 1, &values[7].parray), S_OK);
    values[7].parray->rgsabound[0] = {1000, 0};

    for (const wchar_t* name : {kMediaName, kPlaylistName}) {
        for (const VARIANT& value : values) EXPECT_EQ(m_plugin->SetProperty(name, &value), S_OK);
        EXPECT_EQ(m_plugin->SetProperty(name, nullptr), S_OK);
    }
    for (const wchar_t* name :
         {L"mediasendto", L"MediaSendTo ", L"", L"PlaylistSendto", static_cast<LPCWSTR>(nullptr)})
        EXPECT_EQ(m_plugin->SetProperty(name, &real), E_NOTIMPL);
    EXPECT_THAT(events(0), IsEmpty());
    values[7].parray->rgsabound[0].cElements = 0;
    for (int i : {5, 6, 7}) SafeArrayDestroy(values[i].parray);
}

// The player may close in the middle of a command that would take minutes.
TEST_F(SendTo, AReleaseEndsALongCommandEarly) {
    OrvaneCommand add("addToCleanedFolder");
    juce::StringArray paths;
    for (int i = 0; i < 200'000; ++i) paths.add("C:\\x.wma");
    add.addList("trackPaths", paths);
    ASSERT_TRUE(m_app->commands.deliver(add));
    const auto lookups = [&] { return m_player->callCount("IWMPMediaCollection::getByAttribute"); };
    // One message at a time: the command's next step is posted before this one is over.
    for (MSG message; lookups() <= 5 && GetMessageW(&message, nullptr, 0, 0);)
        DispatchMessageW(&message);
    ASSERT_EQ(m_plugin->SetCore(nullptr), S_OK);
    m_plugin.Release();
    EXPECT_LT(lookups(), 150'000u);
}

}  // namespace
}  // namespace orvane::test
