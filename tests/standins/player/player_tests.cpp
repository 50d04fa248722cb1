// Play states over time, and where and when calls are served. What the player answers is seen by
// its users: the demo and the tests between processes.

#include "standins/player/player.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <wmp.h>

#include <atomic>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "standins/player/com_support.h"

namespace orvane::standin {
namespace {

class PlayerTest : public testing::Test {
protected:
    Player& start(PlayerOptions options) {
        options.synthetic = 2;
        m_player = std::make_unique<Player>(std::move(options));
        std::string error;
        EXPECT_TRUE(m_player->openLibrary(error)) << error;
        EXPECT_EQ(m_player->core()->get_controls(&m_controls), S_OK);
        return *m_player;
    }
    void TearDown() override {
        m_controls.Release();
        m_player.reset();
        EXPECT_EQ(liveObjects(), 0) << "the player or the test leaked objects";
    }
    HRESULT open(size_t index) {
        return m_player->core()->put_URL(CComBSTR(m_player->itemPath(index).c_str()));
    }
    bool reaches(long state, unsigned milliseconds = 3000) {
        return m_player->pumpUntil([&] { return m_player->playState() == state; }, milliseconds);
    }

    ComApartment m_com;
    std::unique_ptr<Player> m_player;
    CComPtr<IWMPControls> m_controls;
};

TEST_F(PlayerTest, StatesFollowOneAnotherOverTime) {
    PlayerOptions options;
    options.startDelayMs = 150;
    options.stopDelayMs = 300;
    start(options);
    ASSERT_EQ(open(0), S_OK);
    EXPECT_EQ(m_player->playState(), wmppsReady);
    ASSERT_EQ(m_controls->play(), S_OK);
    EXPECT_EQ(m_player->playState(), wmppsTransitioning);
    ASSERT_TRUE(reaches(wmppsPlaying));
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

TEST_F(PlayerTest, CallsFromOtherThreadsAreServedByThePlayersOwn) {
    PlayerOptions options;
    options.serveOnOwnThread = true;
    Player& player = start(options);
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
    direct.reserve(4);
    for (int n = 0; n < 4; ++n)
        direct.emplace_back([&] {
            for (size_t i = 0; i < 200; ++i)
                if (player.item(i % 2)->setItemInfo(CComBSTR(L"Title"), CComBSTR(L"x")) == S_OK)
                    ++served;
        });
    for (std::thread& thread : direct) thread.join();  // without a message loop
    EXPECT_EQ(served, 803);

    // What is held beyond the player's end is cut off.
    const CComPtr<IWMPCore> core(player.core());
    m_controls.Release();
    m_player.reset();
    WMPPlayState state{};
    EXPECT_EQ(core->get_playState(&state), RPC_E_DISCONNECTED);
}

}  // namespace
}  // namespace orvane::standin
