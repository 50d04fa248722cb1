#include <gmock/gmock.h>

#include "tests/plugin/plugin_fixture.h"
#include "tests/support/captured_log.h"

namespace orvane::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kPlayTimeout[] =
    "<3> COrVaneWmpPlugin: timeout occured while waiting for the playback to begin\n";
constexpr char kStopTimeout[] =
    "<3> COrVaneWmpPlugin: timeout occured while waiting for the player to stop\n";

class Playback : public PluginTest {
protected:
    bool play(const juce::String& path) {
        return command([&](COrVaneWmpPlugin& plugin) { return plugin.start(path); });
    }
    bool playFirst() { return play(m_player->itemPath(0).c_str()); }
    void expectNothingWorks() {
        CapturedLog log;
        EXPECT_FALSE(command(&COrVaneWmpPlugin::pause));
        EXPECT_FALSE(command(&COrVaneWmpPlugin::stop));
        EXPECT_FALSE(command(&COrVaneWmpPlugin::startCurrent));
        EXPECT_FALSE(playFirst());
        EXPECT_FALSE(command(&COrVaneWmpPlugin::isPlaying));
        EXPECT_FALSE(command(&COrVaneWmpPlugin::isShufflePlay));
        EXPECT_THAT(log.take(), Not(HasSubstr("timeout")));
    }
};

TEST_F(Playback, WaitsASecondForAStateAndSaysWhichItWas) {
    start();
    EXPECT_FALSE(command(&COrVaneWmpPlugin::startCurrent)) << "there is none";
    EXPECT_EQ(m_player->callCount("IWMPCore::get_controls"), 0U);
    ASSERT_TRUE(playFirst());
    CapturedLog log;
    m_player->change([](auto& options) { options.neverReached = {wmppsStopped}; });
    EXPECT_FALSE(command(&COrVaneWmpPlugin::stop));
    EXPECT_THAT(log.take(), HasSubstr(kStopTimeout));
    m_player->change([](auto& options) { options.neverReached = {wmppsPlaying}; });
    const DWORD before = GetTickCount();
    EXPECT_FALSE(command(&COrVaneWmpPlugin::startCurrent));
    EXPECT_GE(GetTickCount() - before, 990U);
    EXPECT_THAT(log.take(), HasSubstr(kPlayTimeout));
    EXPECT_FALSE(playFirst());
    EXPECT_THAT(log.take(), HasSubstr(kPlayTimeout));
}

TEST_F(Playback, StopsEvenForAPathThatThePlayerRefuses) {
    m_options.refusePath = L"refused";
    start();
    ASSERT_TRUE(playFirst());
    CapturedLog log;
    EXPECT_FALSE(play("C:\\refused.wma"));
    EXPECT_THAT(log.take(), Not(HasSubstr("timeout")));
    EXPECT_TRUE(pumpUntil([&] { return m_player->playState() == wmppsStopped; }));
}

TEST_F(Playback, AsksForTheRightModes) {
    const std::pair<const wchar_t*, bool (COrVaneWmpPlugin::*)()> modes[] = {
        {L"shuffle", &COrVaneWmpPlugin::isShufflePlay},
        {L"autoRewind", &COrVaneWmpPlugin::isRepeatTrack},
        {L"loop", &COrVaneWmpPlugin::isRepeatAll}};
    start();
    for (const auto& [on, ignored] : modes) {
        m_player->change([&](standin::PlayerOptions& options) {
            for (auto& [mode, value] : options.modes) value = mode == on;
        });
        for (const auto& [mode, operation] : modes) EXPECT_EQ(command(operation), mode == on);
    }
}

TEST_F(Playback, AnswersFalseWhenThePlayerFailsOrIsNotThere) {
    start();
    ASSERT_TRUE(playFirst());
    m_player->fail({"IWMPCore::get_controls", "IWMPCore::get_playState", "IWMPCore::get_settings"});
    expectNothingWorks();
    m_player->fail({"IWMPControls::pause", "IWMPControls::stop", "IWMPControls::play",
                    "IWMPCore::get_playState", "IWMPSettings::getMode"});
    expectNothingWorks();
    m_plugin->SetCore(nullptr);
    expectNothingWorks();

    CComPtr<COrVaneWmpPlugin> unlinked(new CComObject<COrVaneWmpPlugin>);
    EXPECT_FALSE(unlinked->isInSpecialMode());
    unlinked->close();
}

}  // namespace
}  // namespace orvane::test
