#include <gmock/gmock.h>

#include "tests/media/fake_media.h"
#include "tests/plugin/plugin_fixture.h"

namespace orvane {
namespace {

using test::FakeMedia;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const wchar_t* kMediaName = L"MediaSendTo";
constexpr const wchar_t* kPlaylistName = L"PlaylistSendTo";

// A safe array of the player's, given back in the end.
class Value {
public:
    explicit Value(const std::vector<IUnknown*>& objects, LONG lowerBound = 0) {
        SAFEARRAYBOUND bound{static_cast<ULONG>(objects.size()), lowerBound};
        m_value.vt = VT_ARRAY | VT_UNKNOWN;
        m_value.parray = SafeArrayCreate(VT_UNKNOWN, 1, &bound);
        for (std::size_t i = 0; i < objects.size(); ++i) {
            LONG index = lowerBound + static_cast<LONG>(i);
            EXPECT_EQ(SafeArrayPutElement(m_value.parray, &index, objects[i]), S_OK);
        }
    }
    ~Value() { VariantClear(&m_value); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;
    [[nodiscard]] VARIANT* get() { return &m_value; }

private:
    VARIANT m_value{};
};

class SendTo : public test::LinkedPluginTest {
protected:
    using Lists = std::vector<std::vector<std::wstring>>;

    // The path lists of the events that one call gives rise to.
    Lists send(const wchar_t* name, const VARIANT* value, std::size_t expected) {
        EXPECT_EQ(m_plugin->SetProperty(name, value), S_OK);
        Lists lists;
        for (const OrvaneMessage& event : events(expected)) {
            EXPECT_EQ(event.getName(), "CleanTracks");
            EXPECT_EQ(event.getValue("Player"), "wmp");
            juce::StringArray paths;
            event.getList("trackPaths", paths);
            lists.emplace_back();
            for (const juce::String& path : paths) lists.back().push_back(path.toWideCharPointer());
        }
        return lists;
    }
    Lists send(const wchar_t* name, const std::vector<IUnknown*>& objects, std::size_t expected) {
        Value value(objects);
        return send(name, value.get(), expected);
    }

    CComPtr<IWMPPlaylist> makePlaylist(const wchar_t* name,
                                       const std::vector<std::wstring>& fileNames) {
        CComPtr<IWMPPlaylistCollection> collection;
        EXPECT_EQ(m_player->core()->get_playlistCollection(&collection), S_OK);
        CComPtr<IWMPPlaylist> playlist;
        EXPECT_EQ(collection->newPlaylist(CComBSTR(name), &playlist), S_OK);
        for (const std::wstring& fileName : fileNames)
            EXPECT_EQ(playlist->appendItem(mediaOf(fileName)), S_OK);
        return playlist;
    }
};

TEST_F(SendTo, WhatIsNoTrackOrHasNoPathIsLeftOut) {
    const auto playlist = makePlaylist(L"a list", {L"sakura.wma"});
    const auto real = mediaOf(L"sakura.wma");
    FakeMedia broken;
    broken.sourcePathFails = true;
    FakeMedia pathless;  // an empty path would end the list for its reader
    pathless.sourcePath.clear();
    FakeMedia fine;
    fine.sourcePath = L"C:\\x.wma";
    EXPECT_THAT(send(kMediaName, {nullptr, playlist, &broken, &pathless, real, nullptr, &fine}, 1),
                ElementsAre(ElementsAre(pathOf(L"sakura.wma"), L"C:\\x.wma")));
    EXPECT_THAT(send(kMediaName, {nullptr, playlist}, 1), ElementsAre(IsEmpty()));
    EXPECT_EQ(fine.references, 0) << "every reference is given back";
    EXPECT_EQ(broken.references, 0);
}

TEST_F(SendTo, EachPlaylistGoesOutByItself) {
    const auto first = makePlaylist(L"first", {L"sakura.wma", L"Track 06.wma", L"sakura.wma"});
    const auto empty = makePlaylist(L"empty", {});
    EXPECT_THAT(send(kPlaylistName, {first, nullptr, mediaOf(L"sakura.wma"), empty}, 2),
                ElementsAre(ElementsAre(pathOf(L"sakura.wma"), pathOf(L"Track 06.wma"),
                                        pathOf(L"sakura.wma")),
                            IsEmpty()));
    EXPECT_THAT(send(kPlaylistName, std::vector<IUnknown*>{}, 0), IsEmpty());

    m_player->change(
        [](standin::PlayerOptions& options) { options.failCalls = {"IWMPPlaylist::get_Item"}; });
    EXPECT_THAT(send(kPlaylistName, {first}, 1), ElementsAre(IsEmpty()));
    m_player->change(
        [](standin::PlayerOptions& options) { options.failCalls = {"IWMPPlaylist::get_count"}; });
    EXPECT_THAT(send(kPlaylistName, {first}, 0), IsEmpty());
}

TEST_F(SendTo, AValueOfAnotherKindSendsNothing) {
    FakeMedia media;
    Value objects({&media});
    const VARIANT& real = *objects.get();
    VARIANT values[7] = {};
    values[1].vt = VT_BSTR;
    values[2].vt = VT_UNKNOWN;
    values[2].punkVal = &media;
    values[3].vt = VT_ARRAY | VT_UNKNOWN | VT_BYREF;
    values[3].pparray = &objects.get()->parray;
    values[4] = real;
    values[4].vt = VT_ARRAY | VT_DISPATCH;
    // Labelled as objects, but of two dimensions, or holding what would be taken for addresses.
    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    values[5].vt = values[6].vt = VT_ARRAY | VT_UNKNOWN;
    values[5].parray = SafeArrayCreate(VT_UNKNOWN, 2, bounds);
    values[6].parray = SafeArrayCreate(VT_I4, 1, bounds);
    LONG index = 1;
    LONG number = 0x12345678;
    ASSERT_EQ(SafeArrayPutElement(values[6].parray, &index, &number), S_OK);
    // Bounds without elements behind them.
    VARIANT hollow = values[5];
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_UNKNOWN, 1, &hollow.parray), S_OK);
    hollow.parray->rgsabound[0] = {1000, 0};

    for (const wchar_t* name : {kMediaName, kPlaylistName}) {
        for (const VARIANT& value : values) EXPECT_EQ(m_plugin->SetProperty(name, &value), S_OK);
        EXPECT_EQ(m_plugin->SetProperty(name, &hollow), S_OK);
        EXPECT_EQ(m_plugin->SetProperty(name, nullptr), S_OK);
    }
    for (const wchar_t* name : {L"mediasendto", L"MediaSendTo ", L"", L"PlaylistSendto"})
        EXPECT_EQ(m_plugin->SetProperty(name, &real), E_NOTIMPL);
    EXPECT_EQ(m_plugin->SetProperty(nullptr, &real), E_NOTIMPL);
    EXPECT_THAT(events(0), IsEmpty());
    hollow.parray->rgsabound[0].cElements = 0;
    for (const VARIANT* value : {&values[5], &values[6], &hollow}) SafeArrayDestroy(value->parray);
}

TEST_F(SendTo, EveryElementCountsWhateverTheBounds) {
    FakeMedia first;
    first.sourcePath = L"C:\\1.wma";
    FakeMedia second;
    second.sourcePath = L"C:\\2.wma";
    for (const LONG lowerBound : {-1, 1, 1000000}) {
        Value value({&first, &second}, lowerBound);
        EXPECT_THAT(send(kMediaName, value.get(), 1),
                    ElementsAre(ElementsAre(L"C:\\1.wma", L"C:\\2.wma")));
    }
    VARIANT none{};
    none.vt = VT_ARRAY | VT_UNKNOWN;
    EXPECT_THAT(send(kMediaName, &none, 1), ElementsAre(IsEmpty()));
}

TEST_F(SendTo, AWholeLibraryGoesOut) {
    constexpr int count = 20000;
    FakeMedia media;
    media.sourcePath = L"C:\\Users\\somebody\\Music\\An artist\\An album\\07 A track.wma";
    Value value(std::vector<IUnknown*>(count, &media));
    EXPECT_EQ(m_plugin->SetProperty(kMediaName, value.get()), S_OK);
    const auto sent = events(1);
    ASSERT_EQ(sent.size(), 1u);
    juce::StringArray paths;
    EXPECT_TRUE(sent[0].getList("trackPaths", paths));
    EXPECT_EQ(paths.size(), count);
}

// The player may close in the middle of a command that would take minutes.
TEST_F(SendTo, AReleaseEndsALongCommandEarly) {
    m_player->change([](standin::PlayerOptions& options) { options.serveOnOwnThread = true; });
    OrvaneCommand add("addToCleanedFolder");
    juce::StringArray paths;
    for (int i = 0; i < 50'000; ++i) paths.add("C:\\nowhere.wma");
    add.addList("trackPaths", paths);
    ASSERT_TRUE(m_app->commands.deliver(add));
    const auto lookups = [&] { return m_player->callCount("IWMPMediaCollection::getByAttribute"); };
    ASSERT_TRUE(test::pumpUntil([&] { return lookups() > 5; }));
    ASSERT_EQ(m_plugin->SetCore(nullptr), S_OK);
    m_sink.Release();
    m_plugin.Release();
    EXPECT_LT(lookups(), 25'000u);
}

}  // namespace
}  // namespace orvane
