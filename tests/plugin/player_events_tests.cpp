#include <gmock/gmock.h>

#include <algorithm>

#include "media/format_runtime.h"
#include "tests/plugin/plugin_fixture.h"
#include "tests/support/captured_log.h"

namespace orvane::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class PlayerEvents : public PluginTest {
protected:
    void SetUp() override { start(); }
    HRESULT choose(std::size_t track) {
        return m_player->core()->put_URL(CComBSTR(m_player->itemPath(track).c_str()));
    }
};

TEST_F(PlayerEvents, AStartIsReportedWithoutOpeningTheFile) {
    ASSERT_EQ(m_player->item(0)->setItemInfo(CComBSTR(L"WM/AlbumArtist"), CComBSTR(L"Various")),
              S_OK);
    for (const char* artist : {"Various", ""}) {
        choose(*artist == '\0' ? 1 : 0);
        const unsigned long reads = m_player->callCount("IWMPMedia::getItemInfo");
        sink()->PlayStateChange(wmppsPlaying);
        const auto started = events(1);
        ASSERT_EQ(started.size(), 1U);
        EXPECT_EQ(started[0].getName(), "PlayStarted");
        EXPECT_EQ(started[0].getValue("TrackArtist"), artist);
        EXPECT_EQ(m_player->callCount("IWMPMedia::getItemInfo") - reads, 7U) << "what is sent";
    }
    EXPECT_FALSE(FormatRuntime::isLoaded());
}

TEST_F(PlayerEvents, OnlyThreeStatesAreReportedAndOnlyWithATrack) {
    for (const long state :
         {wmppsUndefined, wmppsScanForward, wmppsScanReverse, wmppsBuffering, wmppsWaiting,
          wmppsMediaEnded, wmppsTransitioning, wmppsReady, wmppsReconnecting, WMPPlayState(-1)})
        sink()->PlayStateChange(state);
    sink()->PlayStateChange(wmppsPlaying);  // no current track
    choose(0);
    m_player->fail({"IWMPCore::get_currentMedia"});
    sink()->PlayStateChange(wmppsPlaying);
    // A state that comes again is reported again.
    sink()->PlayStateChange(wmppsStopped);
    sink()->PlayStateChange(wmppsStopped);
    EXPECT_EQ(lines(2), Names(2, "PlayStopped Player=wmp"));
}

TEST_F(PlayerEvents, TheFirstErrorIsLogged) {
    CapturedLog log;
    const auto line = [&] {
        log.take();
        sink()->Error();
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
        m_player->fail({call});
        EXPECT_THAT(line(), unknown) << call;
    }
    // The player may call once more after it took its core back.
    ASSERT_EQ(m_plugin->SetCore(nullptr), S_OK);
    EXPECT_THAT(line(), EndsWith("COrVaneWmpPlugin: error 0x00000000 occured\n"));
    sink()->PlayStateChange(wmppsPlaying);
    EXPECT_EQ(lines(1), Names{kGoodbye});
}

// The lines themselves are masked in a player; what is handed in must do no harm on the way there.
TEST_F(PlayerEvents, NoHandlerFailsOnUnusualTextsAndObjects) {
    CComBSTR percent(L"one é %s%n%d");
    CComBSTR hole(3, L"a\0b");
    CComBSTR half(L"\xD83C");
    auto* const object =
        reinterpret_cast<IDispatch*>(0x1234ABCDu);  // only its value is of interest
    CapturedLog log;
    for (const BSTR text : {percent.m_str, hole.m_str, half.m_str, static_cast<BSTR>(nullptr)}) {
        IWMPEvents& e = *sink();
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
        e.PositionChange(1.0, 2.0), e.PlaylistChange(object, wmplcMove), e.EndOfStream(0);
        const std::string lines = log.take();
        EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 28) << lines;
    }
    sink()->DomainChange(percent);
    EXPECT_THAT(log.take(), HasSubstr(" %s%n%d\"")) << "never taken for a format";
    EXPECT_EQ(lines(0), Names());
}

}  // namespace
}  // namespace orvane::test
