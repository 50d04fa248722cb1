#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "tests/plugin/linked_plugin.h"
#include "tests/support/captured_log.h"

namespace orvane {
namespace {

using test::CapturedLog;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

class PlayerEvents : public test::LinkedPluginTest {
protected:
    void choose(const std::wstring& fileName) {
        ASSERT_EQ(m_player->core()->put_URL(CComBSTR(pathOf(fileName).c_str())), S_OK);
    }
    void control(HRESULT (STDMETHODCALLTYPE IWMPControls::*command)(), long state) {
        CComPtr<IWMPControls> controls;
        ASSERT_EQ(m_player->core()->get_controls(&controls), S_OK);
        ASSERT_EQ((controls.p->*command)(), S_OK);
        EXPECT_TRUE(m_player->pumpUntil([&] { return m_player->playState() == state; }, 3000));
    }
    void play() { control(&IWMPControls::play, wmppsPlaying); }
};

TEST_F(PlayerEvents, PlaybackReachesTheApplication) {
    choose(L"sakura.wma");
    play();
    control(&IWMPControls::pause, wmppsPaused);
    play();
    control(&IWMPControls::stop, wmppsStopped);
    EXPECT_THAT(eventNames(4),
                ElementsAre("PlayStarted", "PlayStopped", "PlayStarted", "PlayStopped"));
}

TEST_F(PlayerEvents, AStartTellsOfTheTrack) {
    choose(L"sakura.wma");
    play();
    const auto started = events(1);
    ASSERT_EQ(started.size(), 1u);
    std::vector<std::pair<juce::String, juce::String>> parameters;
    for (const auto& parameter : started[0].getParameters())
        parameters.emplace_back(parameter.key, parameter.value);
    const auto pair = [](const char* key, const wchar_t* value) {
        return std::make_pair(juce::String(key), juce::String(value));
    };
    EXPECT_THAT(parameters, ElementsAre(pair("Player", L"wmp"), pair("TrackTitle", L"さくら 🌸"),
                                        pair("TrackArtist", L"東京少年合唱団"),
                                        pair("AlbumTitle", L"春の歌 🎵"), pair("Genre_2", L"J-Pop"),
                                        pair("Filename", pathOf(L"sakura.wma").c_str()),
                                        pair("Year", L"2004"), pair("TrackNumber", L"4")));
}

TEST_F(PlayerEvents, TheAlbumsArtistStandsInForTheTracks) {
    m_player->change([](standin::PlayerOptions& options) { options.failReads = {L"Author"}; });
    choose(L"sakura.wma");
    play();
    auto started = events(1);
    ASSERT_EQ(started.size(), 1u);
    EXPECT_EQ(started[0].getValue("TrackArtist"), "VARIOUS ARTISTS");

    choose(L"Track 06.wma");
    play();
    started = events(1);
    ASSERT_FALSE(started.empty());
    EXPECT_EQ(started.back().getName(), "PlayStarted");
    EXPECT_TRUE(started.back().getValue("TrackArtist").isEmpty());
}

TEST_F(PlayerEvents, OnlyThreeStatesAreReportedAndOnlyWithATrack) {
    for (const long state :
         {wmppsUndefined, wmppsScanForward, wmppsScanReverse, wmppsBuffering, wmppsWaiting,
          wmppsMediaEnded, wmppsTransitioning, wmppsReady, wmppsReconnecting, WMPPlayState(-1)})
        sink().PlayStateChange(state);
    sink().PlayStateChange(wmppsPlaying);  // no current track
    choose(L"Track 06.wma");
    m_player->change([](standin::PlayerOptions& options) {
        options.failCalls = {"IWMPCore::get_currentMedia"};
    });
    sink().PlayStateChange(wmppsPlaying);
    EXPECT_THAT(eventNames(0), IsEmpty());

    // A state that comes again is reported again.
    sink().PlayStateChange(wmppsStopped);
    sink().PlayStateChange(wmppsStopped);
    EXPECT_THAT(eventNames(2), ElementsAre("PlayStopped", "PlayStopped"));
}

TEST_F(PlayerEvents, SurviveWhatComesAfterThePlayerIsGone) {
    ASSERT_EQ(plugin().SetCore(nullptr), S_OK);
    EXPECT_THAT(eventNames(1), ElementsAre("PlayerGoodbye"));
    CapturedLog log;
    sink().PlayStateChange(wmppsPlaying);
    EXPECT_THAT(eventNames(0), IsEmpty());
    log.take();
    sink().Error();
    EXPECT_THAT(log.take(), EndsWith("COrVaneWmpPlugin: error 0x00000000 occured\n"));
}

TEST_F(PlayerEvents, TheFirstErrorIsLogged) {
    CapturedLog log;
    const auto line = [&] {
        log.take();
        sink().Error();
        return log.take();
    };
    EXPECT_THAT(line(), EndsWith("<6> test : COrVaneWmpPlugin: unknown error occured\n"));
    m_player->change([](standin::PlayerOptions& options) {
        options.errors = {static_cast<long>(0xC00D1199), 5};
    });
    EXPECT_THAT(line(), EndsWith("<6> test : COrVaneWmpPlugin: error 0xc00d1199 occured\n"));
    for (const char* call :
         {"IWMPCore::get_Error", "IWMPError::get_Item", "IWMPErrorItem::get_errorCode"}) {
        m_player->change([&](standin::PlayerOptions& options) { options.failCalls = {call}; });
        EXPECT_THAT(line(), EndsWith("COrVaneWmpPlugin: unknown error occured\n")) << call;
    }
}

TEST_F(PlayerEvents, TracesAreWrittenWordForWord) {
    CComBSTR first(L"one é %s");
    CComBSTR second(L"two");
    CComBSTR third(L"three");
    const auto object = reinterpret_cast<IDispatch*>(0x1234ABCDu);
    struct Trace {
        std::function<void(IWMPEvents&)> event;
        const char* line;
    };
    const Trace traces[] = {
        {[](IWMPEvents& e) { e.OpenStateChange(13); }, "COrVaneWmpPlugin: open state=13"},
        {[](IWMPEvents& e) { e.PlayStateChange(9); }, "COrVaneWmpPlugin: play state=9"},
        {[&](IWMPEvents& e) { e.ScriptCommand(second, third); },
         "COrVaneWmpPlugin: script command \"two\" with param \"three\""},
        {[&](IWMPEvents& e) { e.ScriptCommand(nullptr, nullptr); },
         "COrVaneWmpPlugin: script command \"\" with param \"\""},
        {[&](IWMPEvents& e) { e.Warning(1, 2, second); },
         "COrVaneWmpPlugin: warning occured - two"},
        {[](IWMPEvents& e) { e.DurationUnitChange(1); }, "COrVaneWmpPlugin: duration unit changed"},
        {[](IWMPEvents& e) { e.CdromMediaChange(1); }, "COrVaneWmpPlugin: CDROM media chaged"},
        {[](IWMPEvents& e) { e.CurrentPlaylistChange(wmplcMove); },
         "COrVaneWmpPlugin: current playlist change = 3"},
        {[&](IWMPEvents& e) { e.CurrentPlaylistItemAvailable(second); },
         "COrVaneWmpPlugin: current playlist item \"two\" becomes available"},
        {[&](IWMPEvents& e) { e.MediaChange(object); }, "COrVaneWmpPlugin: media changed"},
        {[&](IWMPEvents& e) { e.CurrentMediaItemAvailable(second); },
         "COrVaneWmpPlugin: current media item \"two\" becomes available"},
        {[&](IWMPEvents& e) { e.CurrentItemChange(object); },
         "COrVaneWmpPlugin: current item changed, ptr=0x1234abcd"},
        {[](IWMPEvents& e) { e.MediaCollectionChange(); },
         "COrVaneWmpPlugin: media collection changed"},
        {[&](IWMPEvents& e) { e.MediaCollectionAttributeStringAdded(second, third); },
         "COrVaneWmpPlugin: media collection attr.string \"two\" added, value=\"three\""},
        {[&](IWMPEvents& e) { e.MediaCollectionAttributeStringRemoved(second, third); },
         "COrVaneWmpPlugin: media collection attr.string \"two\" removed, value=\"three\""},
        {[&](IWMPEvents& e) { e.MediaCollectionAttributeStringChanged(second, third, second); },
         "COrVaneWmpPluging: media collection attr.string \"two\" changed, old.val=\"three\" "
         "new.val=\"two\""},
        {[](IWMPEvents& e) { e.PlaylistCollectionChange(); },
         "COrVaneWmpPlugin: playlist collection changed"},
        {[&](IWMPEvents& e) { e.PlaylistCollectionPlaylistAdded(second); },
         "COrVaneWmpPlugin: playlist \"two\" added to collection"},
        {[&](IWMPEvents& e) { e.PlaylistCollectionPlaylistRemoved(second); },
         "COrVaneWmpPlugin: playlist \"two\" removed from collection"},
        {[&](IWMPEvents& e) { e.PlaylistCollectionPlaylistSetAsDeleted(second, VARIANT_TRUE); },
         "COrVaneWmpPlugin: playlist \"two\" checked as deleted"},
        {[&](IWMPEvents& e) { e.PlaylistCollectionPlaylistSetAsDeleted(second, VARIANT_FALSE); },
         "COrVaneWmpPlugin: playlist \"two\" unchecked as deleted"},
        {[&](IWMPEvents& e) { e.ModeChange(second, VARIANT_TRUE); },
         "COrVaneWmpPlugin: mode changed, two=on"},
        {[&](IWMPEvents& e) { e.ModeChange(second, VARIANT_FALSE); },
         "COrVaneWmpPlugin: mode changed, two=off"},
        {[&](IWMPEvents& e) { e.MediaError(object); }, "COrVaneWmpPlugin: media error occured"},
        {[&](IWMPEvents& e) { e.OpenPlaylistSwitch(object); },
         "COrVaneWmpPlugin: open playlist switched to 0x1234abcd"},
        {[&](IWMPEvents& e) { e.DomainChange(second); },
         "COrVaneWmpPlugin: domain changed to \"two\""},
        {[](IWMPEvents& e) { e.SwitchedToPlayerApplication(); },
         "COrVaneWmpPlugin: player switched to application"},
        {[](IWMPEvents& e) { e.SwitchedToControl(); },
         "COrVaneWmpPlugin: player switched to control"},
        {[](IWMPEvents& e) { e.PlayerDockedStateChange(); },
         "COrVaneWmpPlugin: player docked state changed"},
        {[](IWMPEvents& e) { e.PlayerReconnect(); }, "COrVaneWmpPlugin: player reconnected"},
        {[](IWMPEvents& e) { e.Click(2, 1, -5, 6); },
         "COrVaneWmpPlugin: mouse button 2 clicked at (-5,6)"},
    };
    CapturedLog log;
    for (const Trace& trace : traces) {
        log.take();
        trace.event(sink());
        EXPECT_THAT(log.take(), EndsWith("<7> test : " + std::string(trace.line) + "\n"));
    }

    // In the thread's code page, and never taken for a format.
    sink().DomainChange(first);
    char narrow[32] = {};
    WideCharToMultiByte(CP_THREAD_ACP, 0, first, -1, narrow, sizeof(narrow), nullptr, nullptr);
    EXPECT_THAT(log.take(), HasSubstr("domain changed to \"" + std::string(narrow) + "\""));

    // Nothing is written of these, nor of any with the plug-in's own mask.
    sink().AudioLanguageChange(1);
    sink().StatusChange();
    sink().NewStream();
    sink().Disconnect(1);
    sink().Buffering(VARIANT_TRUE);
    sink().EndOfStream(0);
    sink().PositionChange(1.0, 2.0);
    sink().MarkerHit(1);
    sink().PlaylistChange(object, wmplcMove);
    sink().DoubleClick(1, 0, 1, 1);
    sink().KeyDown(1, 0);
    sink().KeyPress(1);
    sink().KeyUp(1, 0);
    sink().MouseDown(1, 0, 1, 1);
    sink().MouseMove(1, 0, 1, 1);
    sink().MouseUp(1, 0, 1, 1);
    setlogmask(63);
    for (const Trace& trace : traces) trace.event(sink());
    EXPECT_THAT(log.take(), IsEmpty());
}

}  // namespace
}  // namespace orvane
