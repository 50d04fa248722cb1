#include <algorithm>
#include <thread>

#include "tests/standins/player/event_log.h"
#include "tests/standins/player/fixture.h"

namespace orvane::standin {
namespace {

class PlaybackTest : public PlayerTest {
protected:
    // A player of one track, with a log advised on its events.
    void startPlayer(PlayerOptions options = {}) {
        if (!std::filesystem::exists(m_folder / "one.wma")) sample(L"one.wma");
        start(std::move(options));
        m_core = m_player->core();
        ASSERT_TRUE(SUCCEEDED(m_core->get_controls(m_controls.put())));
        m_log = makeObject<EventLog>();
        DWORD cookie = 0;
        ASSERT_EQ(eventsOf(m_core)->Advise(m_log.get(), &cookie), S_OK);
        ASSERT_NE(cookie, 0U);
    }
    void TearDown() override {
        m_controls.reset();
        m_log.reset();
        PlayerTest::TearDown();
    }
    HRESULT open(const std::wstring& path) { return m_core->put_URL(Text(path).get()); }
    bool reaches(long state, unsigned milliseconds = 3000) {
        return m_player->pumpUntil([&] { return m_player->playState() == state; }, milliseconds);
    }

    IWMPCore* m_core = nullptr;
    ComRef<IWMPControls> m_controls;
    ComRef<EventLog> m_log;
};

TEST_F(PlaybackTest, StatesFollowOneAnotherOverTimeAndAreReported) {
    PlayerOptions options;
    options.startDelayMs = 150;
    startPlayer(options);
    const ULONGLONG begin = GetTickCount64();
    ASSERT_EQ(open(m_player->itemPath(0)), S_OK);
    ASSERT_EQ(m_controls->play(), S_OK);
    EXPECT_EQ(m_player->playState(), wmppsTransitioning);
    ASSERT_TRUE(reaches(wmppsPlaying));
    EXPECT_GE(GetTickCount64() - begin, 130U);

    ASSERT_EQ(m_controls->pause(), S_OK);
    ASSERT_TRUE(reaches(wmppsPaused));
    double paused = 0;
    m_controls->get_currentPosition(&paused);
    m_player->pump(60);
    double later = 0;
    m_controls->get_currentPosition(&later);
    EXPECT_EQ(later, paused) << "a paused track goes on";
    ASSERT_EQ(m_controls->play(), S_OK);
    ASSERT_TRUE(reaches(wmppsPlaying));
    ASSERT_EQ(m_controls->stop(), S_OK);
    ASSERT_TRUE(reaches(wmppsStopped));
    m_player->pump(20);
    const std::vector<long> expected = {wmppsReady,  wmppsTransitioning, wmppsPlaying,
                                        wmppsPaused, wmppsPlaying,       wmppsStopped};
    EXPECT_EQ(m_log->playStates, expected);
    EXPECT_TRUE(m_log->has("CurrentItemChange"));
    EXPECT_TRUE(m_log->has("OpenStateChange 13"));
}

TEST_F(PlaybackTest, AnotherTrackWhileOnePlaysStopsThatOneFirst) {
    PlayerOptions options;
    options.stopDelayMs = 500;
    startPlayer(options);
    ASSERT_EQ(open(m_player->itemPath(0)), S_OK);
    m_controls->play();
    ASSERT_TRUE(reaches(wmppsPlaying));
    m_log->playStates.clear();
    // Without waiting for the stop, as somebody in a hurry does.
    m_controls->stop();
    ASSERT_EQ(open(L"C:\\nowhere\\unknown.wma"), S_OK);
    m_controls->play();
    ASSERT_TRUE(reaches(wmppsPlaying));
    m_player->pump(600);
    const std::vector<long> expected = {wmppsStopped, wmppsTransitioning, wmppsPlaying};
    EXPECT_EQ(m_log->playStates, expected) << "the old stop came late and stopped the new track";

    ComRef<IWMPMedia> current;
    ASSERT_EQ(m_core->get_currentMedia(current.put()), S_OK);
    EXPECT_EQ(read(current, L"SourceURL"), L"C:\\nowhere\\unknown.wma");
    EXPECT_EQ(read(current, L"Title"), L"");
}

TEST_F(PlaybackTest, SlowRefusedNeverAndNothingToPlay) {
    startPlayer();
    ComRef<IWMPMedia> none;
    EXPECT_EQ(m_core->get_currentMedia(none.put()), S_OK);
    EXPECT_FALSE(none);
    EXPECT_EQ(m_controls->play(), S_OK);
    EXPECT_FALSE(reaches(wmppsPlaying, 200));

    m_player->change([](PlayerOptions& o) { o.refusePath = L"ONE"; });
    EXPECT_TRUE(FAILED(open(m_player->itemPath(0))));
    EXPECT_EQ(m_core->get_currentMedia(none.put()), S_OK);
    EXPECT_FALSE(none);

    m_player->change([](PlayerOptions& o) {
        o.refusePath.clear();
        o.neverReached = {wmppsPlaying};
    });
    EXPECT_EQ(open(m_player->itemPath(0)), S_OK);
    m_controls->play();
    EXPECT_FALSE(reaches(wmppsPlaying, 300));
    EXPECT_EQ(m_player->playState(), wmppsTransitioning);

    m_player->change([](PlayerOptions& o) {
        o.neverReached.clear();
        o.startDelayMs = 400;
    });
    m_controls->stop();
    ASSERT_TRUE(reaches(wmppsStopped));
    m_controls->play();
    EXPECT_FALSE(reaches(wmppsPlaying, 200));
    EXPECT_TRUE(reaches(wmppsPlaying));
}

TEST_F(PlaybackTest, ATrackEndsByItself) {
    PlayerOptions options;
    options.startDelayMs = 1;
    options.trackLengthMs = 150;
    startPlayer(options);
    open(m_player->itemPath(0));
    m_controls->play();
    ASSERT_TRUE(reaches(wmppsPlaying));
    ASSERT_TRUE(reaches(wmppsStopped));
    m_player->pump(20);
    EXPECT_TRUE(m_log->has("PlayStateChange 8"));
}

TEST_F(PlaybackTest, EventsStayOnThePlayersThreadWhoeverAsks) {
    for (const bool own : {false, true}) {
        PlayerOptions options;
        options.serveOnOwnThread = own;
        options.startDelayMs = 10;
        startPlayer(options);
        std::atomic<bool> done{false};
        std::thread worker([&] {
            m_core->put_URL(Text(m_player->itemPath(0)).get());
            m_controls->play();
            ComRef<IWMPSettings> settings;
            m_core->get_settings(settings.put());
            settings->setMode(Text(L"loop").get(), VARIANT_TRUE);
            done = true;
        });
        EXPECT_TRUE(
            m_player->pumpUntil([&] { return done && m_log->has("PlayStateChange 3"); }, 3000));
        worker.join();
        EXPECT_TRUE(m_log->has("ModeChange loop -1"));
        EXPECT_FALSE(m_log->wrongThread);
        m_controls.reset();
    }
}

}  // namespace
}  // namespace orvane::standin
