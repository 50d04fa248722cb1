// Play states over time, and where and when calls are served.

#include <atomic>
#include <thread>

#include "standins/player/script.h"
#include "tests/standins/player/fixture.h"

namespace orvane::standin {
namespace {

class PlaybackTest : public PlayerTest {
protected:
    Player& startSynthetic(PlayerOptions options = {}) {
        options.synthetic = 2;
        start(std::move(options));
        EXPECT_EQ(m_player->core()->get_controls(m_controls.put()), S_OK);
        return *m_player;
    }
    void TearDown() override {
        m_controls.reset();
        PlayerTest::TearDown();
    }
    HRESULT open(size_t index) {
        return m_player->core()->put_URL(Text(m_player->itemPath(index)).get());
    }
    bool reaches(long state, unsigned milliseconds = 3000) {
        return m_player->pumpUntil([&] { return m_player->playState() == state; }, milliseconds);
    }

    ComRef<IWMPControls> m_controls;
};

TEST_F(PlaybackTest, StatesFollowOneAnotherOverTime) {
    PlayerOptions options;
    options.startDelayMs = 150;
    options.stopDelayMs = 300;
    startSynthetic(options);
    const ULONGLONG begin = GetTickCount64();
    ASSERT_EQ(open(0), S_OK);
    EXPECT_EQ(m_player->playState(), wmppsReady);
    ASSERT_EQ(m_controls->play(), S_OK);
    EXPECT_EQ(m_player->playState(), wmppsTransitioning);
    ASSERT_TRUE(reaches(wmppsPlaying));
    EXPECT_GE(GetTickCount64() - begin, 130U);
    m_controls->pause();
    ASSERT_TRUE(reaches(wmppsPaused));
    m_controls->play();
    ASSERT_TRUE(reaches(wmppsPlaying));
    // Another track without waiting for the stop, as somebody in a hurry does: the old stop must
    // not come late and stop the new track.
    m_controls->stop();
    ASSERT_EQ(open(1), S_OK);
    EXPECT_EQ(m_player->playState(), wmppsStopped);
    m_controls->play();
    ASSERT_TRUE(reaches(wmppsPlaying));
    EXPECT_FALSE(reaches(wmppsStopped, 400));
    m_controls->stop();
    ASSERT_TRUE(reaches(wmppsStopped));
}

TEST_F(PlaybackTest, RefusedNeverReachedAndAtItsEnd) {
    PlayerOptions options;
    options.trackLengthMs = 100;
    Player& player = startSynthetic(options);
    EXPECT_EQ(m_controls->play(), S_OK);
    EXPECT_FALSE(reaches(wmppsPlaying, 200)) << "there is nothing to play";
    player.change([](PlayerOptions& o) { o.refusePath = L"synthetic"; });
    EXPECT_TRUE(FAILED(open(0)));
    player.change([](PlayerOptions& o) {
        o.refusePath.clear();
        o.neverReached = {wmppsPlaying};
    });
    EXPECT_EQ(open(0), S_OK);
    m_controls->play();
    EXPECT_FALSE(reaches(wmppsPlaying, 300));
    EXPECT_EQ(player.playState(), wmppsTransitioning);
    player.change([](PlayerOptions& o) { o.neverReached.clear(); });
    m_controls->stop();
    ASSERT_TRUE(reaches(wmppsStopped));
    m_controls->play();
    ASSERT_TRUE(reaches(wmppsPlaying));
    ASSERT_TRUE(reaches(wmppsStopped)) << "a track that never ends";
}

TEST_F(PlaybackTest, CallsFromOtherThreadsAreServedByThePlayersOwn) {
    PlayerOptions options;
    options.serveOnOwnThread = true;
    Player& player = startSynthetic(options);
    std::atomic<int> served{0};
    std::thread waiting([&] {
        WMPPlayState state{};
        for (int i = 0; i < 3; ++i)
            if (player.core()->get_playState(&state) == S_OK) ++served;
    });
    Sleep(150);
    EXPECT_EQ(served, 0) << "served although the player's thread did not listen";
    EXPECT_TRUE(player.pumpUntil([&] { return served == 3; }, 3000));
    waiting.join();
    player.change([](PlayerOptions& o) { o.serveOnOwnThread = false; });
    std::vector<std::thread> direct;
    for (int n = 0; n < 4; ++n)
        direct.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                const auto item = player.item(static_cast<size_t>(i % 2));
                if (SUCCEEDED(write(item, L"Title", L"x"))) ++served;
            }
        });
    for (std::thread& thread : direct) thread.join();  // without a message loop
    EXPECT_EQ(served, 803);

    // What is held beyond the player's end is cut off.
    const ComRef<IWMPCore> core(player.core());
    m_controls.reset();
    m_player.reset();
    WMPPlayState state{};
    EXPECT_EQ(core->get_playState(&state), RPC_E_DISCONNECTED);
}

TEST_F(PlaybackTest, TheScriptMovesTheWindowAndTellsWhatItCannotDo) {
    Player& player = startSynthetic();
    ASSERT_TRUE(player.createWindow());
    const HWND window = player.window();
    EXPECT_EQ(FindWindowW(L"WMPlayerApp", L"Windows Media Player"), window);
    const auto failuresOf = [&](std::initializer_list<const char*> lines) {
        Script script(player, [](const std::string&) {});
        bool ended = false;
        script.onEnd = [&] { ended = true; };
        for (const char* line : lines) script.feed(line);
        script.end();
        EXPECT_TRUE(player.pumpUntil([&] { return ended; }, 8000));
        return script.failures();
    };
    EXPECT_EQ(failuresOf({"show", "# a comment", "", "wait 50", "special"}), 0U);
    RECT r{};
    GetWindowRect(window, &r);
    EXPECT_EQ(r.right - r.left, 300);
    EXPECT_EQ(failuresOf({"minimise", "hide"}), 0U);
    EXPECT_TRUE(IsIconic(window));
    EXPECT_FALSE(IsWindowVisible(window));
    EXPECT_EQ(failuresOf({"play 1", "wait-state playing", "pause", "wait-state paused",
                          "option --never=stopped", "stop", "wait-state stopped 100"}),
              1U)
        << "only the last wait is in vain";
    EXPECT_EQ(failuresOf({"dance", "move 1 2 3", "play 99", "option --dance", "set loop maybe",
                          "wait soon", "sendto-playlist nothing"}),
              7U);
}

TEST(PlayerOptionsTest, ArgumentsAreReadOrRefusedWithAReason) {
    PlayerOptions options;
    std::string error;
    EXPECT_TRUE(parseOptions({L"--library=C:\\Müsik =1", L"--never=playing", L"--mode=loop:on",
                              L"--error=0xC00D1197", L"--start-delay=2000"},
                             options, error));
    EXPECT_EQ(options.library.wstring(), L"C:\\Müsik =1");
    EXPECT_EQ(options.neverReached, std::set<long>{3});
    EXPECT_TRUE(options.modes[L"loop"]);
    EXPECT_EQ(static_cast<unsigned long>(options.errors.at(0)), 0xC00D1197U);
    for (const wchar_t* wrong :
         {L"--dance", L"library", L"--library", L"--library=", L"--hidden=1", L"--start-delay=2s",
          L"--start-delay=99999999999", L"--mode=loop", L"--never=soon"}) {
        error.clear();
        EXPECT_FALSE(parseOptions({wrong}, options, error)) << toUtf8(wrong);
        EXPECT_FALSE(error.empty());
    }
}

}  // namespace
}  // namespace orvane::standin
