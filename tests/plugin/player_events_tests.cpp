#include <gmock/gmock.h>

#include <functional>

#include "tests/plugin/plugin_fixture.h"
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
    void failCall(const char* call) {
        m_player->change([&](standin::PlayerOptions& options) { options.failCalls = {call}; });
    }
};

TEST_F(PlayerEvents, PlaybackReachesTheApplicationWithTheTrack) {
    choose(L"sakura.wma");
    play();
    control(&IWMPControls::pause, wmppsPaused);
    play();
    control(&IWMPControls::stop, wmppsStopped);
    const auto lines = m_app->events.lines(5);
    const std::string started =
        ("PlayStarted Player=wmp TrackTitle=" + juce::String(L"さくら 🌸") + " TrackArtist=" +
         juce::String(L"東京少年合唱団") + " AlbumTitle=" + juce::String(L"春の歌 🎵") +
         " Genre_2=J-Pop Filename=" + juce::String(pathOf(L"sakura.wma").c_str()) +
         " Year=2004 TrackNumber=4")
            .toStdString();
    EXPECT_THAT(lines,
                ElementsAre(started, "PlayStopped Player=wmp", started, "PlayStopped Player=wmp"));
}

TEST_F(PlayerEvents, TheAlbumsArtistStandsInForTheTracks) {
    m_player->change([](standin::PlayerOptions& options) { options.failReads = {L"Author"}; });
    for (const auto& [track, artist] :
         {std::pair(L"sakura.wma", "VARIOUS ARTISTS"), std::pair(L"Track 06.wma", "")}) {
        choose(track);
        play();
        const auto started = events(1);
        ASSERT_FALSE(started.empty());
        EXPECT_EQ(started.back().getName(), "PlayStarted");
        EXPECT_EQ(started.back().getValue("TrackArtist"), artist);
    }
}

TEST_F(PlayerEvents, OnlyThreeStatesAreReportedAndOnlyWithATrack) {
    for (const long state :
         {wmppsUndefined, wmppsScanForward, wmppsScanReverse, wmppsBuffering, wmppsWaiting,
          wmppsMediaEnded, wmppsTransitioning, wmppsReady, wmppsReconnecting, WMPPlayState(-1)})
        m_sink->PlayStateChange(state);
    m_sink->PlayStateChange(wmppsPlaying);  // no current track
    choose(L"Track 06.wma");
    failCall("IWMPCore::get_currentMedia");
    m_sink->PlayStateChange(wmppsPlaying);
    EXPECT_THAT(eventNames(0), IsEmpty());

    // A state that comes again is reported again.
    m_sink->PlayStateChange(wmppsStopped);
    m_sink->PlayStateChange(wmppsStopped);
    EXPECT_THAT(eventNames(2), ElementsAre("PlayStopped", "PlayStopped"));
}

TEST_F(PlayerEvents, TheFirstErrorIsLogged) {
    CapturedLog log;
    const auto line = [&] {
        log.take();
        m_sink->Error();
        return log.take();
    };
    const auto unknown = EndsWith("<6> COrVaneWmpPlugin: unknown error occured\n");
    EXPECT_THAT(line(), unknown);
    m_player->change([](standin::PlayerOptions& options) {
        options.errors = {static_cast<long>(0xC00D1199), 5};
    });
    EXPECT_THAT(line(), EndsWith("<6> COrVaneWmpPlugin: error 0xc00d1199 occured\n"));
    for (const char* call :
         {"IWMPCore::get_Error", "IWMPError::get_Item", "IWMPErrorItem::get_errorCode"}) {
        failCall(call);
        EXPECT_THAT(line(), unknown) << call;
    }

    // The player may call once more after it took its core back.
    ASSERT_EQ(m_plugin->SetCore(nullptr), S_OK);
    EXPECT_THAT(line(), EndsWith("COrVaneWmpPlugin: error 0x00000000 occured\n"));
    m_sink->PlayStateChange(wmppsPlaying);
    EXPECT_THAT(eventNames(1), ElementsAre("PlayerGoodbye"));
}

TEST_F(PlayerEvents, TracesAreWrittenWordForWord) {
    CComBSTR odd(L"one é %s");
    CComBSTR a(L"two");
    CComBSTR b(L"three");
    const auto object = reinterpret_cast<IDispatch*>(0x1234ABCDu);
    using E = IWMPEvents;
    struct Trace {
        std::function<void(E&)> event;
        const char* line;  // after the class name
    };
    const Trace traces[] = {
        {[](E& e) { e.OpenStateChange(13); }, "open state=13"},
        {[](E& e) { e.PlayStateChange(9); }, "play state=9"},
        {[&](E& e) { e.ScriptCommand(a, b); }, "script command \"two\" with param \"three\""},
        {[&](E& e) { e.Warning(1, 2, a); }, "warning occured - two"},
        {[](E& e) { e.DurationUnitChange(1); }, "duration unit changed"},
        {[](E& e) { e.CdromMediaChange(1); }, "CDROM media chaged"},
        {[](E& e) { e.CurrentPlaylistChange(wmplcMove); }, "current playlist change = 3"},
        {[&](E& e) { e.CurrentPlaylistItemAvailable(a); },
         "current playlist item \"two\" becomes available"},
        {[&](E& e) { e.MediaChange(object); }, "media changed"},
        {[&](E& e) { e.CurrentMediaItemAvailable(a); },
         "current media item \"two\" becomes available"},
        {[&](E& e) { e.CurrentItemChange(object); }, "current item changed, ptr=0x1234abcd"},
        {[](E& e) { e.MediaCollectionChange(); }, "media collection changed"},
        {[&](E& e) { e.MediaCollectionAttributeStringAdded(a, b); },
         "media collection attr.string \"two\" added, value=\"three\""},
        {[&](E& e) { e.MediaCollectionAttributeStringRemoved(a, b); },
         "media collection attr.string \"two\" removed, value=\"three\""},
        {[&](E& e) { e.MediaCollectionAttributeStringChanged(a, b, a); },
         "media collection attr.string \"two\" changed, old.val=\"three\" "
         "new.val=\"two\""},
        {[](E& e) { e.PlaylistCollectionChange(); }, "playlist collection changed"},
        {[&](E& e) { e.PlaylistCollectionPlaylistAdded(a); },
         "playlist \"two\" added to collection"},
        {[&](E& e) { e.PlaylistCollectionPlaylistRemoved(a); },
         "playlist \"two\" removed from collection"},
        {[&](E& e) { e.PlaylistCollectionPlaylistSetAsDeleted(a, VARIANT_TRUE); },
         "playlist \"two\" checked as deleted"},
        {[&](E& e) { e.PlaylistCollectionPlaylistSetAsDeleted(a, VARIANT_FALSE); },
         "playlist \"two\" unchecked as deleted"},
        {[&](E& e) { e.ModeChange(a, VARIANT_TRUE); }, "mode changed, two=on"},
        {[&](E& e) { e.ModeChange(a, VARIANT_FALSE); }, "mode changed, two=off"},
        {[&](E& e) { e.MediaError(object); }, "media error occured"},
        {[&](E& e) { e.OpenPlaylistSwitch(object); }, "open playlist switched to 0x1234abcd"},
        {[&](E& e) { e.DomainChange(a); }, "domain changed to \"two\""},
        {[](E& e) { e.SwitchedToPlayerApplication(); }, "player switched to application"},
        {[](E& e) { e.SwitchedToControl(); }, "player switched to control"},
        {[](E& e) { e.PlayerDockedStateChange(); }, "player docked state changed"},
        {[](E& e) { e.PlayerReconnect(); }, "player reconnected"},
        {[](E& e) { e.Click(2, 1, -5, 6); }, "mouse button 2 clicked at (-5,6)"},
    };
    CapturedLog log;
    for (const Trace& trace : traces) {
        log.take();
        trace.event(*m_sink);
        EXPECT_THAT(log.take(), AllOf(HasSubstr("<7> COrVaneWmpPlugin"),
                                      EndsWith(": " + std::string(trace.line) + "\n")));
    }

    // In the thread's code page, and never taken for a format.
    m_sink->DomainChange(odd);
    char narrow[32] = {};
    WideCharToMultiByte(CP_THREAD_ACP, 0, odd, -1, narrow, sizeof(narrow), nullptr, nullptr);
    EXPECT_THAT(log.take(), HasSubstr("domain changed to \"" + std::string(narrow) + "\""));

    // Nothing is written of these, nor of any with the plug-in's own mask.
    E& e = *m_sink;
    e.AudioLanguageChange(1), e.StatusChange(), e.NewStream(), e.Disconnect(1);
    e.Buffering(VARIANT_TRUE), e.EndOfStream(0), e.PositionChange(1.0, 2.0), e.MarkerHit(1);
    e.PlaylistChange(object, wmplcMove), e.DoubleClick(1, 0, 1, 1), e.KeyDown(1, 0);
    e.KeyPress(1), e.KeyUp(1, 0), e.MouseDown(1, 0, 1, 1), e.MouseMove(1, 0, 1, 1);
    e.MouseUp(1, 0, 1, 1);
    setlogmask(63);
    for (const Trace& trace : traces) trace.event(e);
    EXPECT_THAT(log.take(), IsEmpty());
}

}  // namespace
}  // namespace orvane
