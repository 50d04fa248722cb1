#include <gmock/gmock.h>

#include <algorithm>

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

// The lines themselves are masked in a player; what is handed in must do no harm on the way there.
TEST_F(PlayerEvents, OddTextsAndObjectsDoNoHarmInAnyHandler) {
    CComBSTR percent(L"one é %s%n%d");
    CComBSTR hole(3, L"a\0b");
    CComBSTR half(L"\xD83C");
    auto* const object =
        reinterpret_cast<IDispatch*>(0x1234ABCDu);  // only its value is of interest
    CapturedLog log;
    for (const BSTR text : {percent.m_str, hole.m_str, half.m_str, static_cast<BSTR>(nullptr)}) {
        IWMPEvents& e = *m_sink;
        e.OpenStateChange(-1), e.PlayStateChange(99), e.ScriptCommand(text, text);
        e.Warning(1, 2, text), e.DurationUnitChange(1), e.CdromMediaChange(-1);
        e.CurrentPlaylistChange(wmplcMove), e.CurrentPlaylistItemAvailable(text);
        e.MediaChange(object), e.CurrentMediaItemAvailable(text), e.CurrentItemChange(object);
        e.MediaCollectionChange(), e.MediaCollectionAttributeStringAdded(text, text);
        e.MediaCollectionAttributeStringRemoved(text, text);
        e.MediaCollectionAttributeStringChanged(text, text, text);
        e.PlaylistCollectionChange(), e.PlaylistCollectionPlaylistAdded(text);
        e.PlaylistCollectionPlaylistRemoved(text);
        e.PlaylistCollectionPlaylistSetAsDeleted(text, VARIANT_TRUE);
        e.ModeChange(text, VARIANT_FALSE), e.MediaError(object), e.OpenPlaylistSwitch(object);
        e.DomainChange(text), e.SwitchedToPlayerApplication(), e.SwitchedToControl();
        e.PlayerDockedStateChange(), e.PlayerReconnect(), e.Click(2, 1, -5, 6);
        e.AudioLanguageChange(1), e.StatusChange(), e.NewStream(), e.Disconnect(1);
        e.Buffering(VARIANT_TRUE), e.EndOfStream(0), e.PositionChange(1.0, 2.0), e.MarkerHit(1);
        e.PlaylistChange(object, wmplcMove), e.DoubleClick(1, 0, 1, 1), e.KeyDown(1, 0);
        e.KeyPress(1), e.KeyUp(1, 0), e.MouseDown(1, 0, 1, 1), e.MouseMove(1, 0, 1, 1);
        e.MouseUp(1, 0, 1, 1);
        const std::string lines = log.take();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 28) << lines;
    }
    m_sink->DomainChange(percent);
    EXPECT_THAT(log.take(), HasSubstr(" %s%n%d\"")) << "never taken for a format";
    EXPECT_THAT(eventNames(0), IsEmpty());
}

}  // namespace
}  // namespace orvane
