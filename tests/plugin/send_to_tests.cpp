#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "standins/player/plugin_host.h"
#include "tests/media/fake_media.h"
#include "tests/plugin/linked_plugin.h"
#include "tests/support/captured_log.h"

namespace orvane {
namespace {

using test::FakeMedia;
using standin::ComRef;
using test::CapturedLog;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const wchar_t* mediaName = L"MediaSendTo";
constexpr const wchar_t* playlistName = L"PlaylistSendTo";

// A value of the player's, cleared in the end.
class Value {
public:
    Value() { VariantInit(&m_value); }
    explicit Value(const std::vector<IUnknown*>& objects, LONG lowerBound = 0) : Value() {
        SAFEARRAYBOUND bound{static_cast<ULONG>(objects.size()), lowerBound};
        take(VT_ARRAY | VT_UNKNOWN, SafeArrayCreate(VT_UNKNOWN, 1, &bound));
        for (std::size_t i = 0; i < objects.size(); ++i) {
            LONG index = lowerBound + static_cast<LONG>(i);
            EXPECT_EQ(SafeArrayPutElement(m_value.parray, &index, objects[i]), S_OK);
        }
    }
    ~Value() {
        if (m_mislabelled) {
            SafeArrayDestroy(m_value.parray);
        } else {
            VariantClear(&m_value);
        }
    }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    void take(VARTYPE type, SAFEARRAY* array, bool mislabelled = false) {
        m_value.vt = type;
        m_value.parray = array;
        m_mislabelled = mislabelled;
    }
    [[nodiscard]] VARIANT* get() { return &m_value; }

private:
    VARIANT m_value;
    bool m_mislabelled = false;
};

class SendTo : public test::LinkedPluginTest {
protected:
    using Lists = std::vector<std::vector<std::wstring>>;

    // The path lists of the events that one call gives rise to.
    Lists send(const wchar_t* name, const VARIANT* value, std::size_t expected) {
        EXPECT_EQ(plugin().SetProperty(name, value), S_OK);
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

TEST_F(SendTo, ChosenTracksGoOutAsOneList) {
    const auto first = mediaOf(L"sakura.wma");
    const auto second = mediaOf(L"Déjà vu 日本.wma");
    const auto third = mediaOf(L"Track 06.wma");
    EXPECT_THAT(send(mediaName, {first, second, third}, 1),
                ElementsAre(ElementsAre(pathOf(L"sakura.wma"), pathOf(L"Déjà vu 日本.wma"),
                                        pathOf(L"Track 06.wma"))));
    EXPECT_THAT(send(mediaName, std::vector<IUnknown*>{}, 1), ElementsAre(IsEmpty()));
}

TEST_F(SendTo, WhatIsNoTrackOrHasNoPathIsLeftOut) {
    const auto playlist = makePlaylist(L"a list", {L"sakura.wma"});
    const auto real = mediaOf(L"sakura.wma");
    FakeMedia broken;
    broken.sourcePathFails = true;
    FakeMedia pathless;  // an empty path would end the list for its reader
    pathless.sourcePath.clear();
    FakeMedia fine;
    fine.sourcePath = L"C:\\x.wma";
    EXPECT_THAT(send(mediaName, {nullptr, playlist, &broken, &pathless, real, nullptr, &fine}, 1),
                ElementsAre(ElementsAre(pathOf(L"sakura.wma"), L"C:\\x.wma")));
    EXPECT_THAT(send(mediaName, {nullptr, playlist}, 1), ElementsAre(IsEmpty()));
    EXPECT_EQ(fine.references, 0) << "every reference is given back";
    EXPECT_EQ(broken.references, 0);
}

TEST_F(SendTo, EachPlaylistGoesOutByItself) {
    const auto first = makePlaylist(L"first", {L"sakura.wma", L"Track 06.wma", L"sakura.wma"});
    const auto empty = makePlaylist(L"empty", {});
    EXPECT_THAT(send(playlistName, {first, nullptr, mediaOf(L"sakura.wma"), empty}, 2),
                ElementsAre(ElementsAre(pathOf(L"sakura.wma"), pathOf(L"Track 06.wma"),
                                        pathOf(L"sakura.wma")),
                            IsEmpty()));
    EXPECT_THAT(send(playlistName, std::vector<IUnknown*>{}, 0), IsEmpty());

    m_player->change(
        [](standin::PlayerOptions& options) { options.failCalls = {"IWMPPlaylist::get_Item"}; });
    EXPECT_THAT(send(playlistName, {first}, 1), ElementsAre(IsEmpty()));
    m_player->change(
        [](standin::PlayerOptions& options) { options.failCalls = {"IWMPPlaylist::get_count"}; });
    EXPECT_THAT(send(playlistName, {first}, 0), IsEmpty());
}

TEST_F(SendTo, OtherPropertiesAreNotKnown) {
    Value value({nullptr});
    for (const wchar_t* name : {L"mediasendto", L"MediaSendTo ", L"", L"PlaylistSendto"})
        EXPECT_EQ(plugin().SetProperty(name, value.get()), E_NOTIMPL);
    EXPECT_EQ(plugin().SetProperty(nullptr, value.get()), E_NOTIMPL);
    EXPECT_THAT(events(0), IsEmpty());
}

TEST_F(SendTo, AValueOfAnotherKindSendsNothing) {
    FakeMedia media;
    VARIANT text;
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocString(L"C:\\x.wma");
    VARIANT object;
    object.vt = VT_UNKNOWN;
    object.punkVal = &media;
    VARIANT empty;
    VariantInit(&empty);
    Value objects({&media});
    VARIANT byReference;
    byReference.vt = VT_ARRAY | VT_UNKNOWN | VT_BYREF;
    byReference.pparray = &objects.get()->parray;
    VARIANT dispatchLabel = *objects.get();
    dispatchLabel.vt = VT_ARRAY | VT_DISPATCH;

    SAFEARRAYBOUND bounds[2] = {{2, 0}, {2, 0}};
    Value square;
    square.take(VT_ARRAY | VT_UNKNOWN, SafeArrayCreate(VT_UNKNOWN, 2, bounds));
    // Labelled as objects, but holding numbers that would be taken for addresses.
    Value numbers;
    numbers.take(VT_ARRAY | VT_UNKNOWN, SafeArrayCreate(VT_I4, 1, bounds), true);
    LONG index = 1;
    LONG number = 0x12345678;
    ASSERT_EQ(SafeArrayPutElement(numbers.get()->parray, &index, &number), S_OK);
    Value bytes;
    bytes.take(VT_ARRAY | VT_UNKNOWN, SafeArrayCreate(VT_UI1, 1, bounds), true);
    // Bounds without elements behind them.
    Value hollow;
    SAFEARRAY* descriptor = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_UNKNOWN, 1, &descriptor), S_OK);
    descriptor->rgsabound[0] = {1000, 0};
    hollow.take(VT_ARRAY | VT_UNKNOWN, descriptor, true);

    for (const wchar_t* name : {mediaName, playlistName}) {
        for (const VARIANT* value :
             {static_cast<const VARIANT*>(nullptr), static_cast<const VARIANT*>(&text),
              static_cast<const VARIANT*>(&object), static_cast<const VARIANT*>(&empty),
              static_cast<const VARIANT*>(&byReference),
              static_cast<const VARIANT*>(&dispatchLabel),
              static_cast<const VARIANT*>(square.get()), static_cast<const VARIANT*>(numbers.get()),
              static_cast<const VARIANT*>(bytes.get()), static_cast<const VARIANT*>(hollow.get())})
            EXPECT_EQ(plugin().SetProperty(name, value), S_OK);
    }
    EXPECT_THAT(events(0), IsEmpty());
    descriptor->rgsabound[0].cElements = 0;
    SysFreeString(text.bstrVal);
}

TEST_F(SendTo, EveryElementCountsWhateverTheBounds) {
    FakeMedia first;
    first.sourcePath = L"C:\\1.wma";
    FakeMedia second;
    second.sourcePath = L"C:\\2.wma";
    for (const LONG lowerBound : {-1, 1, 1000000}) {
        Value value({&first, &second}, lowerBound);
        EXPECT_THAT(send(mediaName, value.get(), 1),
                    ElementsAre(ElementsAre(L"C:\\1.wma", L"C:\\2.wma")));
    }
    Value none;
    none.take(VT_ARRAY | VT_UNKNOWN, nullptr);
    EXPECT_THAT(send(mediaName, none.get(), 1), ElementsAre(IsEmpty()));

    CapturedLog log;
    Value value({nullptr, &first});
    plugin().SetProperty(mediaName, value.get());
    EXPECT_THAT(log.take(),
                HasSubstr("<7> test : COrVaneWmpPlugin::SetProperty: item 1: punk: 0x"));
}

TEST_F(SendTo, AWholeLibraryTakesNoTime) {
    constexpr int count = 20000;
    FakeMedia media;
    media.sourcePath = L"C:\\Users\\somebody\\Music\\An artist\\An album\\07 A track.wma";
    Value value(std::vector<IUnknown*>(count, &media));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(plugin().SetProperty(mediaName, value.get()), S_OK);
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_LT(taken, std::chrono::seconds(1));
    const auto sent = events(1);
    ASSERT_EQ(sent.size(), 1u);
    juce::StringArray paths;
    EXPECT_TRUE(sent[0].getList("trackPaths", paths));
    EXPECT_EQ(paths.size(), count);
}

}  // namespace
}  // namespace orvane
