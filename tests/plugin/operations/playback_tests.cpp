#include <gmock/gmock.h>

#include "tests/plugin/operations/operations_fixture.h"

namespace orvane {
namespace {

using juce::String;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr long kStopped = wmppsStopped;
constexpr long kPaused = wmppsPaused;
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
    // How long `work` takes, in milliseconds.
    template <typename Work>
    static DWORD timeOf(Work work) {
        const DWORD before = GetTickCount();
        work();
        return GetTickCount() - before;
    }
};

TEST_F(Playback, StartsPausesAndStops) {
    startPlayer();
    test::CapturedLog log;
    ASSERT_TRUE(start(pathOf(1)));
    EXPECT_EQ(m_player->playState(), kPlaying);
    EXPECT_TRUE(command(&COrVaneWmpPlugin::isPlaying));
    EXPECT_FALSE(command(&COrVaneWmpPlugin::isPaused));
    EXPECT_TRUE(command(&COrVaneWmpPlugin::pause));
    ASSERT_TRUE(m_player->pumpUntil([&] { return m_player->playState() == kPaused; }, 3000));
    EXPECT_TRUE(command(&COrVaneWmpPlugin::isPaused));
    EXPECT_FALSE(command(&COrVaneWmpPlugin::isPlaying));
    EXPECT_TRUE(command(&COrVaneWmpPlugin::startCurrent));
    EXPECT_EQ(m_player->playState(), kPlaying);
    EXPECT_TRUE(command(&COrVaneWmpPlugin::stop));
    EXPECT_EQ(m_player->playState(), kStopped);
    EXPECT_FALSE(command(&COrVaneWmpPlugin::isPlaying));
    const std::string lines = log.take();
    for (const char* line :
         {"StartTrack called (succeeded)", "IsPlaying called (yes)", "IsPaused called (no)",
          "Pause called (succeeded)", "IsPaused called (yes)", "StartCurrent called (succeeded)",
          "Stop called (succeeded)", "IsPlaying called (no)"})
        EXPECT_THAT(lines, HasSubstr(std::string("<7> COrVaneWmpPlugin: ") + line + "\n"));

    // Stopped already: the first look is enough.
    EXPECT_LT(timeOf([&] { EXPECT_TRUE(command(&COrVaneWmpPlugin::stop)); }), 500u);
}

TEST_F(Playback, WorksOnAPlayerThatServesCallsOnItsOwnThread) {
    m_options.serveOnOwnThread = true;
    startPlayer();
    EXPECT_TRUE(start(pathOf(0)));
    EXPECT_TRUE(command(&COrVaneWmpPlugin::stop));
}

TEST_F(Playback, WaitsASecondForASlowStart) {
    m_options.startDelayMs = 1600;
    startPlayer();
    test::CapturedLog log;
    const DWORD time = timeOf([&] { EXPECT_FALSE(start(pathOf(0))); });
    EXPECT_GE(time, 990u);
    EXPECT_LT(time, 1500u);
    EXPECT_THAT(log.take(), AllOf(HasSubstr(kPlayTimeout),
                                  HasSubstr("COrVaneWmpPlugin: StartTrack called (failed)")));
    EXPECT_TRUE(m_player->pumpUntil([&] { return m_player->playState() == kPlaying; }, 3000));
}

TEST_F(Playback, GivesUpOnAPlayerThatNeverGetsThere) {
    startPlayer();
    ASSERT_TRUE(start(pathOf(0)));
    test::CapturedLog log;
    m_player->change([](auto& options) { options.neverReached = {kStopped}; });
    EXPECT_FALSE(command(&COrVaneWmpPlugin::stop));
    EXPECT_THAT(log.take(), AllOf(HasSubstr("<3> COrVaneWmpPlugin: timeout occured while "
                                            "waiting for the player to stop\n"),
                                  HasSubstr("COrVaneWmpPlugin: Stop called (failed)")));
    m_player->change([](auto& options) { options.neverReached = {}; });
    ASSERT_TRUE(start(pathOf(0)));
    ASSERT_TRUE(command(&COrVaneWmpPlugin::stop));
    m_player->change([](auto& options) { options.neverReached = {kPlaying}; });
    EXPECT_FALSE(command(&COrVaneWmpPlugin::startCurrent));
    EXPECT_THAT(log.take(), AllOf(HasSubstr(kPlayTimeout),
                                  HasSubstr("COrVaneWmpPlugin: StartCurrent called (failed)")));
}

TEST_F(Playback, StopsEvenForAPathThatThePlayerRefuses) {
    m_options.refusePath = L"refused";
    startPlayer();
    ASSERT_TRUE(start(pathOf(0)));
    test::CapturedLog log;
    EXPECT_LT(timeOf([&] { EXPECT_FALSE(start("C:\\refused.wma")); }), 500u);
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
        const char* line;
    } cases[] = {{L"shuffle", &COrVaneWmpPlugin::isShufflePlay, "IsShuffleEnabled"},
                 {L"autoRewind", &COrVaneWmpPlugin::isRepeatTrack, "IsLoopTrackEnabled"},
                 {L"loop", &COrVaneWmpPlugin::isRepeatAll, "IsLoopAllEnabled"}};
    CComPtr<IWMPSettings> settings;
    ASSERT_EQ(m_player->core()->get_settings(&settings), S_OK);
    test::CapturedLog log;
    for (const auto& on : cases) {
        for (const auto& one : cases)
            ASSERT_EQ(settings->setMode(CComBSTR(one.mode),
                                        one.mode == on.mode ? VARIANT_TRUE : VARIANT_FALSE),
                      S_OK);
        for (const auto& one : cases) {
            const bool expected = one.mode == on.mode;
            EXPECT_EQ(command(one.operation), expected) << one.line;
            EXPECT_THAT(log.take(), HasSubstr(std::string("COrVaneWmpPlugin: ") + one.line +
                                              " called (" + (expected ? "enabled)" : "disabled)")));
        }
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
        const std::string lines = log.take();
        for (const char* line :
             {"Pause called (failed)", "Stop called (failed)", "StartCurrent called (failed)",
              "StartTrack called (failed)", "IsPlaying called (no)",
              "IsShuffleEnabled called (disabled)", "IsInSpecialMode called (false)"})
            EXPECT_THAT(lines, HasSubstr(std::string("COrVaneWmpPlugin: ") + line));
        EXPECT_THAT(lines, Not(HasSubstr("timeout")));
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
