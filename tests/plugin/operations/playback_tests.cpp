#include <gmock/gmock.h>

#include "tests/plugin/operations/operations_fixture.h"

namespace orvane {
namespace {

using juce::String;
using testing::HasSubstr;
using testing::Not;

constexpr long kStopped = wmppsStopped;
constexpr long kPlaying = wmppsPlaying;

constexpr char kPlayTimeout[] =
    "<3> COrVaneWmpPlugin: timeout occured while waiting for the playback to begin\n";

class Playback : public test::OperationsTest {
protected:
    void SetUp() override {
        m_folder.track(L"a.wma");
        m_folder.track(L"b \u00e9 \u65e5.wma");
    }
    bool start(const String& path) {
        return command([&](COrVaneWmpPlugin& plugin) { return plugin.start(path); });
    }
};

TEST_F(Playback, WaitsASecondForAStateAndSaysWhichItWas) {
    startPlayer();
    ASSERT_TRUE(start(pathOf(0)));
    test::CapturedLog log;
    m_player->change([](auto& options) { options.neverReached = {kStopped}; });
    EXPECT_FALSE(command(&COrVaneWmpPlugin::stop));
    EXPECT_THAT(log.take(), HasSubstr("<3> COrVaneWmpPlugin: timeout occured while "
                                      "waiting for the player to stop\n"));
    m_player->change([](auto& options) { options.neverReached = {kPlaying}; });
    const DWORD before = GetTickCount();
    EXPECT_FALSE(command(&COrVaneWmpPlugin::startCurrent));
    EXPECT_GE(GetTickCount() - before, 990U);
    EXPECT_THAT(log.take(), HasSubstr(kPlayTimeout));
    EXPECT_FALSE(start(pathOf(1)));
    EXPECT_THAT(log.take(), HasSubstr(kPlayTimeout));
}

TEST_F(Playback, StopsEvenForAPathThatThePlayerRefuses) {
    m_options.refusePath = L"refused";
    startPlayer();
    ASSERT_TRUE(start(pathOf(0)));
    test::CapturedLog log;
    EXPECT_FALSE(start("C:\\refused.wma"));
    EXPECT_THAT(log.take(), Not(HasSubstr("timeout")));
    EXPECT_TRUE(m_player->pumpUntil([&] { return m_player->playState() == kStopped; }, 3000));
}

TEST_F(Playback, NeedsACurrentTrackToStartIt) {
    startPlayer();
    EXPECT_FALSE(command(&COrVaneWmpPlugin::startCurrent));
    EXPECT_EQ(m_player->callCount("IWMPCore::get_controls"), 0u);
}

TEST_F(Playback, AsksForTheRightModes) {
    startPlayer();
    const struct {
        const wchar_t* mode;
        bool (COrVaneWmpPlugin::*operation)();
    } cases[] = {{L"shuffle", &COrVaneWmpPlugin::isShufflePlay},
                 {L"autoRewind", &COrVaneWmpPlugin::isRepeatTrack},
                 {L"loop", &COrVaneWmpPlugin::isRepeatAll}};
    CComPtr<IWMPSettings> settings;
    ASSERT_EQ(m_player->core()->get_settings(&settings), S_OK);
    for (const auto& on : cases) {
        for (const auto& one : cases)
            ASSERT_EQ(settings->setMode(CComBSTR(one.mode),
                                        one.mode == on.mode ? VARIANT_TRUE : VARIANT_FALSE),
                      S_OK);
        for (const auto& one : cases) EXPECT_EQ(command(one.operation), one.mode == on.mode);
    }
}

TEST_F(Playback, AnswersFalseWhenThePlayerFailsOrIsNotThere) {
    const auto allFail = [&] {
        test::CapturedLog log;
        EXPECT_FALSE(command(&COrVaneWmpPlugin::pause));
        EXPECT_FALSE(command(&COrVaneWmpPlugin::stop));
        EXPECT_FALSE(command(&COrVaneWmpPlugin::startCurrent));
        EXPECT_FALSE(start("x"));
        EXPECT_FALSE(command(&COrVaneWmpPlugin::isPlaying));
        EXPECT_FALSE(command(&COrVaneWmpPlugin::isShufflePlay));
        EXPECT_FALSE(command(&COrVaneWmpPlugin::isInSpecialMode));
        EXPECT_THAT(log.take(), Not(HasSubstr("timeout")));
    };
    allFail();
    m_plugin->close();
    EXPECT_TRUE(m_plugin->supportsRandomTrackAccess());

    startPlayer();
    ASSERT_TRUE(start(pathOf(0)));
    fail({"IWMPCore::get_controls", "IWMPCore::get_playState", "IWMPCore::get_settings"});
    allFail();
    fail({"IWMPControls::pause", "IWMPControls::stop", "IWMPControls::play",
          "IWMPCore::get_playState", "IWMPSettings::getMode"});
    allFail();
}

}  // namespace
}  // namespace orvane
