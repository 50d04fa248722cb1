// Creation, attachment to the player's core and release; also with a command running on the command
// pipe's thread, and in a player that calls from several threads or lets the object go on another.

#include <gmock/gmock.h>
#include <olectl.h>

#include <cstdlib>

#include "harness/files.h"
#include "media/file_rewrite.h"
#include "tests/common/launcher/install_path.h"
#include "tests/plugin/plugin_fixture.h"
#include "tests/support/captured_log.h"

namespace orvane::test {
namespace {

class LifecycleTest : public PluginTest {};

TEST_F(LifecycleTest, AFailedCreationLeavesNothingAndLogsTheReason) {
    const auto attempt = [] {
        CapturedLog log;
        auto* object = reinterpret_cast<IWMPEvents*>(&log);
        EXPECT_EQ(create(&object), E_FAIL);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(canUnloadNow(), S_OK);
        return log.lines().back();
    };
    m_window.reset();
    EXPECT_EQ(attempt(), "<3> COrVaneWmpPlugin: can't install WMP window hook");
    m_app->waitForDisconnectAndReopen();

    m_window = std::make_unique<PlayerWindow>();
    m_app->closePipes();
    EXPECT_EQ(attempt(), "<5> COrVaneWmpPlugin: can't connect to the application");
    EXPECT_FALSE(m_window->isHooked());

    m_app.reset();
    const InstallPath nowhere(L"C:\\no such folder");
    EXPECT_EQ(attempt(), "<4> COrVaneWmpPlugin::FinalConstruct: Error launching OrVane");
}

TEST_F(LifecycleTest, TheLogNamesThePlugInWhileItExists) {
    const std::filesystem::path log =
        std::filesystem::path(_wgetenv(L"ProgramData")) / L"OrVaneMedia" / L"OrVane.log";
    const std::size_t before = readText(log).size();
    // An application that runs is not launched, wherever it may be.
    const InstallPath nowhere(L"C:\\no such folder");
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_TRUE(m_window->isHooked());
    syslog(LOG_INFO, "masked");
    syslog(LOG_NOTICE, "ours");
    m_plugin.Release();
    EXPECT_TRUE(m_app->events.lines().empty()) << "no core was ever set, so there is no goodbye";

    m_app->closePipes();
    IWMPEvents* object = nullptr;
    EXPECT_EQ(create(&object), E_FAIL);
    syslog(LOG_NOTICE, "theirs");
    const std::string added = readText(log).substr(before);
    const std::string ours = "<5> OrVaneWmpPlugin : [" + std::to_string(GetCurrentProcessId());
    EXPECT_TRUE(added.substr(0, added.find('\n')).ends_with(ours + "] ours")) << added;
    EXPECT_TRUE(added.ends_with("<5> unknown : theirs\n")) << added;
}

TEST_F(LifecycleTest, EachSetCoreSendsHelloAndGoodbye) {
    ASSERT_NO_FATAL_FAILURE(open());
    VARIANT value{};
    EXPECT_EQ(m_plugin->GetProperty(L"MediaSendTo", nullptr), E_POINTER);
    EXPECT_EQ(m_plugin->GetProperty(L"QueryDestroy", &value), E_NOTIMPL);
    {
        const FileRewrite rewrite;
        EXPECT_EQ(m_plugin->GetProperty(L"MediaSendTo", &value), E_NOTIMPL);
        EXPECT_EQ(m_plugin->GetProperty(L"QueryDestroy", &value), S_OK);
        ASSERT_EQ(value.vt, VT_BSTR);
        EXPECT_THAT(value.bstrVal, testing::StartsWith(L"OrVane "));
        VariantClear(&value);
    }
    EXPECT_EQ(m_plugin->GetProperty(L"QueryDestroy", &value), E_NOTIMPL);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);

    TestPlayer second(m_options);
    for (const auto* player : {m_player.get(), &second}) {
        EXPECT_EQ(m_plugin->SetCore(player->core()), S_OK);
        EXPECT_EQ(player->sinkCount(), 1U);
    }
    EXPECT_EQ(m_player->sinkCount(), 0U);
    EXPECT_EQ(m_player->coreReferences(), 1U);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    EXPECT_EQ(second.sinkCount(), 0U);
    EXPECT_EQ(second.coreReferences(), 1U);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);

    // One that cannot report is held all the same.
    const struct {
        const char* call;
        HRESULT answer;
        HRESULT expected;
    } cases[] = {
        {"IWMPCore::QueryInterface", E_FAIL, E_NOINTERFACE},
        {"IConnectionPointContainer::FindConnectionPoint", CONNECT_E_NOCONNECTION,
         CONNECT_E_NOCONNECTION},
        {"IConnectionPointContainer::FindConnectionPoint", S_FALSE, E_POINTER},  // and gives none
        {"IConnectionPoint::Advise", CONNECT_E_ADVISELIMIT, CONNECT_E_ADVISELIMIT},
        {"IConnectionPoint::Advise", S_FALSE, S_FALSE}  // nor a cookie
    };
    for (const auto& [call, answer, expected] : cases) {
        m_player->during(call, [answer = answer] { return answer; });
        EXPECT_EQ(m_plugin->SetCore(m_player->core()), expected) << call;
        EXPECT_EQ(m_player->coreReferences(), 2U);
        EXPECT_EQ(standin::liveObjects(), 2) << "the cores, and no connection point";
        EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
        EXPECT_EQ(m_player->coreReferences(), 1U);
    }
    EXPECT_EQ(m_player->callCount("IConnectionPoint::Unadvise"), 1U);

    Names expected;
    for (int i = 0; i < 7; ++i) expected.insert(expected.end(), {kHello, kGoodbye});
    EXPECT_EQ(m_app->events.lines(expected.size()), expected);
}

TEST_F(LifecycleTest, TheNestedCallOfSetCoreWins) {
    ASSERT_NO_FATAL_FAILURE(open());
    IWMPCore* const core = m_player->core();
    m_player->during("IConnectionPoint::Advise", [&] { return m_plugin->SetCore(nullptr); });
    m_plugin->SetCore(core);
    EXPECT_EQ(m_player->coreReferences(), 1U);
    EXPECT_EQ(m_player->sinkCount(), 0U);

    // Away and back again: one subscription of the two remains.
    m_player->during("IConnectionPoint::Advise", [&] {
        m_player->during();
        m_plugin->SetCore(nullptr);
        return m_plugin->SetCore(core);
    });
    m_plugin->SetCore(core);
    EXPECT_EQ(m_player->coreReferences(), 2U);
    EXPECT_EQ(m_player->sinkCount(), 1U);

    TestPlayer second(m_options);
    TestPlayer third(m_options);
    m_player->during("IConnectionPoint::Unadvise", [&] { return m_plugin->SetCore(third.core()); });
    m_plugin->SetCore(second.core());
    EXPECT_EQ(second.coreReferences(), 1U);
    EXPECT_EQ(third.sinkCount(), 1U);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    const Names expected{kGoodbye, kGoodbye, kHello, kHello, kGoodbye, kGoodbye};
    EXPECT_EQ(m_app->events.lines(expected.size()), expected);
    for (const auto* player : {m_player.get(), &second, &third}) {
        EXPECT_EQ(player->coreReferences(), 1U);
        EXPECT_EQ(player->sinkCount(), 0U);
    }
}

TEST_F(LifecycleTest, TheCoreMayBeRemovedDuringACommand) {
    ASSERT_NO_FATAL_FAILURE(start());
    ULONG references = 0;
    m_player->during("IWMPCore::get_playState", [&] {
        EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
        references = m_player->coreReferences();
        return S_OK;
    });
    ASSERT_TRUE(m_app->sendCommand("isPlaying"));
    EXPECT_EQ(m_app->commands.lines(1), Names{"isPlaying return_value=false"});
    EXPECT_EQ(references, 2U) << "the command's step has a reference of its own";
    EXPECT_EQ(m_player->coreReferences(), 1U);

    // The next command finds no core.
    EXPECT_TRUE(m_app->sendCommand("isPlaying"));
    EXPECT_EQ(m_app->commands.lines(2).size(), 2U);
    EXPECT_EQ(m_player->callCount("IWMPCore::get_playState"), 1U);
}

// The command waits for a state that does not come; meanwhile the player calls in, and the
// command's next steps are run.
TEST_F(LifecycleTest, ReleaseWaitsForTheRunningCommandAndServesCalls) {
    m_options.neverReached = {wmppsStopped};
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_TRUE(m_app->sendCommand("stop"));
    ASSERT_TRUE(pumpUntil([&] { return m_player->callCount("IWMPCore::get_playState") > 0; }));

    const TestPlayer other(m_options);
    IWMPPluginUI* going = m_plugin.p;
    IWMPEvents* const goingEvents = sink();
    m_window->onMessage = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message != WM_APP) return std::nullopt;
        going->AddRef();
        EXPECT_EQ(going->SetCore(nullptr), S_OK);
        EXPECT_EQ(going->SetCore(other.core()), E_UNEXPECTED);
        goingEvents->PlayStateChange(wmppsStopped);
        std::exchange(going, nullptr)->Release();
        return 0;
    };
    std::thread player([window = m_window->hwnd()] {
        Sleep(200);
        SendMessageW(window, WM_APP, 0, 0);
    });
    const ULONGLONG start = GetTickCount64();
    m_plugin.Release();
    EXPECT_LT(GetTickCount64() - start, 3000U);
    player.join();
    EXPECT_EQ(going, nullptr);
    EXPECT_EQ(m_player->coreReferences(), 1U) << "the command was over when Release returned";
    EXPECT_EQ(other.coreReferences(), 1U);
    EXPECT_EQ(canUnloadNow(), S_OK);
    EXPECT_EQ(lines(1), Names{kGoodbye});
}

TEST_F(LifecycleTest, EventsAndReferencesMayComeFromAnyThread) {
    ASSERT_NO_FATAL_FAILURE(start());
    constexpr int kRounds = 3'000'000;
    constexpr int kEventEvery = 10'000;
    constexpr int kThreads = 3;
    std::atomic<int> started{0};
    std::atomic<int> running{kThreads};
    std::vector<std::thread> raisers;
    raisers.reserve(kThreads);
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

TEST_F(LifecycleTest, TheLastReleaseOnAnyThreadDestroysTheObjectOnItsOwn) {
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
    EXPECT_EQ(lines(1), Names{kGoodbye});
}

TEST_F(LifecycleTest, ACommandMayReleaseTheLastReference) {
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

TEST_F(LifecycleTest, AWaitDoesNotLoseWmQuit) {
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

TEST_F(LifecycleTest, AnIdleLinkSendsThePlayerNoMessages) {
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
    EXPECT_EQ(messages, 0);
    EXPECT_EQ(m_player->callCount(), calls);
}

}  // namespace
}  // namespace orvane::test
