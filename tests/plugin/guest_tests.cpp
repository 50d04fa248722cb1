// What the object does in a player that calls from several threads, lets it go on another one, or
// ends in the middle of a command.

#include <gtest/gtest.h>

#include "tests/plugin/plugin_fixture.h"

namespace orvane::test {
namespace {

using GuestTest = PluginTest;

TEST_F(GuestTest, EventsAndReferencesMayComeFromAnyThread) {
    ASSERT_NO_FATAL_FAILURE(start());
    constexpr int kRounds = 3'000'000;
    constexpr int kEventEvery = 10'000;
    constexpr int kThreads = 3;
    std::atomic<int> started{0};
    std::atomic<int> running{kThreads};
    std::vector<std::thread> raisers;
    for (int i = 0; i < kThreads; ++i)
        raisers.emplace_back([&, events = CComPtr<IWMPEvents>(sink())]() mutable {
            for (++started; started < kThreads;) std::this_thread::yield();
            for (int round = 0; round < kRounds; ++round) {
                const CComPtr<IUnknown> another(events);
                std::atomic_signal_fence(std::memory_order_seq_cst);  // nothing is optimized away
                if (round % kEventEvery == 0) {
                    events->PlayStateChange(wmppsStopped);
                    events->Error();
                }
            }
            // Its own goes here, perhaps as the last one.
            events.Release();
            --running;
        });
    for (int round = 0; running > 0; ++round) {
        CComPtr<IUnknown> another(m_plugin);
        if (round % 1000 == 0) {
            EXPECT_EQ(m_plugin->SetCore(round % 2000 == 0 ? m_player->core() : nullptr), S_OK);
        }
        pumpUntil([] { return true; });
    }
    for (auto& raiser : raisers) raiser.join();
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    m_plugin->AddRef();
    EXPECT_EQ(m_plugin->Release(), 1U);
}

TEST_F(GuestTest, TheLastReferenceTakesTheObjectDownOnItsOwnThreadWhereverItIsGivenBack) {
    ASSERT_NO_FATAL_FAILURE(start());
    DWORD unadvisedOn = 0;
    m_player->during("IConnectionPoint::Unadvise", [&] {
        unadvisedOn = GetCurrentThreadId();
        return S_OK;
    });
    std::thread([&] { m_plugin.Release(); }).join();
    EXPECT_EQ(canUnloadNow(), S_FALSE) << "not before its own thread comes by";
    EXPECT_TRUE(m_window->isHooked());
    EXPECT_TRUE(pumpUntil([] { return canUnloadNow() == S_OK; }));
    EXPECT_EQ(unadvisedOn, GetCurrentThreadId());
    EXPECT_FALSE(m_window->isHooked());
    EXPECT_EQ(eventNames(1), Names{"PlayerGoodbye"});
    EXPECT_TRUE(pumpUntil([] { return !JuceSession::isUp(); }));
}

TEST_F(GuestTest, ACommandMayGiveTheLastReferenceBack) {
    ASSERT_NO_FATAL_FAILURE(start());
    m_player->during("IWMPCore::get_playState", [&] {
        m_plugin.Release();
        return S_OK;
    });
    ASSERT_TRUE(m_app->sendCommand("isPlaying"));
    EXPECT_EQ(m_app->commands.lines(1), Names{"isPlaying return_value=false"});
    EXPECT_EQ(m_plugin, nullptr);
    EXPECT_TRUE(pumpUntil([] { return canUnloadNow() == S_OK; }));
}

TEST_F(GuestTest, TheEndOfTheProgramIsNotSwallowedByAWait) {
    ASSERT_NO_FATAL_FAILURE(start());
    PostQuitMessage(17);
    EXPECT_TRUE(static_cast<COrVaneWmpPlugin*>(m_plugin.p)->stop());
    m_plugin.Release();
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT)
        DispatchMessageW(&message);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 17U);
}

TEST_F(GuestTest, AnIdleLinkLeavesThePlayerAlone) {
    ASSERT_NO_FATAL_FAILURE(start());
    const unsigned long calls = m_player->callCount();
    int messages = 0;
    const ULONGLONG end = GetTickCount64() + 5000;
    while (GetTickCount64() < end) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            ++messages;
            DispatchMessageW(&message);
        }
        MsgWaitForMultipleObjectsEx(0, nullptr, 50, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
    EXPECT_LE(messages, 4) << "the reconnect timer's, every two seconds";
    EXPECT_EQ(m_player->callCount(), calls);
}

}  // namespace
}  // namespace orvane::test
