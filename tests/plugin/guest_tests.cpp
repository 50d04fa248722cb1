// What the object does in a player that calls from several threads, lets it go on another one, or
// ends in the middle of a command.

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "media/format_runtime.h"
#include "tests/common/launcher/install_path.h"
#include "tests/plugin/plugin_fixture.h"
#include "tests/support/temp_folder.h"
#include "util/log/log.h"

namespace orvane::test {
namespace {

using GuestTest = PluginTest;
using LinkedGuestTest = LinkedPluginTest;

ULONG referencesOf(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

TEST_F(GuestTest, EventsAndReferencesMayComeFromAnyThread) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    CComPtr<IWMPEvents> sink;
    ASSERT_EQ(plugin.QueryInterface(&sink), S_OK);
    FakeCore core;
    constexpr int kRounds = 3'000'000;
    constexpr int kEventEvery = 10'000;
    constexpr int kThreads = 3;
    std::atomic<int> started{0};
    std::atomic<int> running{kThreads};
    std::vector<std::thread> raisers;
    for (int i = 0; i < kThreads; ++i)
        raisers.emplace_back([&, events = sink]() mutable {
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
        CComPtr<IUnknown> another(plugin);
        if (round % 1000 == 0) {
            EXPECT_EQ(plugin->SetCore(round % 2000 == 0 ? &core : nullptr), S_OK);
        }
        pumpUntil([] { return true; });
    }
    for (auto& raiser : raisers) raiser.join();
    EXPECT_EQ(plugin->SetCore(nullptr), S_OK);
    EXPECT_EQ(referencesOf(plugin), 2U);
    EXPECT_EQ(core.references, 1);
}

TEST_F(GuestTest, TheLastReferenceTakesTheObjectDownOnItsOwnThreadWhereverItIsGivenBack) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    FakeCore core;
    ASSERT_EQ(plugin->SetCore(&core), S_OK);
    DWORD unadvisedOn = 0;
    core.duringUnadvise = [&] { unadvisedOn = GetCurrentThreadId(); };

    std::thread([&] { plugin.Release(); }).join();
    EXPECT_EQ(canUnloadNow(), S_FALSE) << "not before its own thread comes by";
    EXPECT_TRUE(m_window->isHooked());
    EXPECT_TRUE(pumpUntil([] { return canUnloadNow() == S_OK; }));
    EXPECT_EQ(unadvisedOn, GetCurrentThreadId());
    EXPECT_FALSE(m_window->isHooked());
    EXPECT_EQ(m_app->waitForEvents(2), (Names{"PlayerHello", "PlayerGoodbye"}));
    EXPECT_TRUE(pumpUntil([] { return !JuceSession::isUp(); }));
}

TEST_F(GuestTest, ACommandMayGiveTheLastReferenceBack) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    FakeCore core;
    ASSERT_EQ(plugin->SetCore(&core), S_OK);
    std::atomic<bool> given{false};
    core.playState = [&](WMPPlayState* state) {
        plugin.Release();
        given = true;
        *state = wmppsPlaying;
        return S_OK;
    };
    ASSERT_TRUE(m_app->sendCommand("isPlaying"));
    EXPECT_EQ(m_app->waitForResponses(1), Names{"isPlaying=true"});
    EXPECT_TRUE(given);
    EXPECT_TRUE(pumpUntil([] { return canUnloadNow() == S_OK; }));
    EXPECT_EQ(core.references, 1);
}

TEST_F(GuestTest, TheEndOfTheProgramIsNotSwallowedByAWait) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    const standin::ComApartment apartment;
    standin::Player player{standin::PlayerOptions()};
    ASSERT_EQ(plugin->SetCore(player.core()), S_OK);
    PostQuitMessage(17);
    EXPECT_TRUE(static_cast<COrVaneWmpPlugin*>(plugin.p)->stop());
    plugin.Release();
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) && message.message != WM_QUIT)
        DispatchMessageW(&message);
    EXPECT_EQ(message.message, static_cast<UINT>(WM_QUIT));
    EXPECT_EQ(message.wParam, 17U);
}

TEST_F(GuestTest, AFailedCreationLeavesTheLogToOthers) {
    m_app->closePipes();
    void* object = nullptr;
    EXPECT_EQ(create(nullptr, __uuidof(IWMPEvents), &object), E_FAIL);
    const LogWatch log;
    syslog(LOG_ERR, "somebody else");
    EXPECT_NE(log.added().find("somebody else"), std::string::npos);
    EXPECT_EQ(log.added().find("OrVaneWmpPlugin"), std::string::npos) << log.added();
}

TEST_F(GuestTest, AnApplicationThatDoesNotRunIsLaunchedAndLinkedTo) {
    std::wstring program(1024, L'\0');
    program.resize(GetModuleFileNameW(nullptr, program.data(), 1024));
    const TempFolder folder;
    writeFile(folder.path(L"OrVaneApp.exe"),
              readText(std::filesystem::path(program).parent_path() / L"launched_app.exe"));
    SetEnvironmentVariableA("ORVANE_TEST_EXIT", "stay");
    const InstallPath installed(folder.path().wstring());
    m_app->running.reset();
    {
        auto plugin = createPlugin();
        ASSERT_NE(plugin, nullptr);
        FakeCore core;
        EXPECT_EQ(plugin->SetCore(&core), S_OK);
        EXPECT_EQ(m_app->waitForEvents(1), Names{"PlayerHello"});
        plugin.Release();
    }
    const UniqueHandle leave(OpenEventW(EVENT_MODIFY_STATE, FALSE, L"OrVaneTestAppLeave"));
    EXPECT_TRUE(leave) << "it is the application's, which waits for it";
    SetEvent(leave.get());
    EXPECT_TRUE(pumpUntil([&] { return DeleteFileW(folder.path(L"OrVaneApp.exe").c_str()) != 0; }));
}

TEST_F(LinkedGuestTest, AStartingTrackIsReportedWithoutItsFileBeingOpened) {
    ASSERT_EQ(m_player->core()->put_URL(CComBSTR(pathOf(L"sakura.wma").c_str())), S_OK);
    const unsigned long reads = m_player->callCount("IWMPMedia::getItemInfo");
    m_sink->PlayStateChange(wmppsPlaying);
    EXPECT_EQ(eventNames(1), Names{"PlayStarted"});
    EXPECT_FALSE(FormatRuntime::isLoaded());
    EXPECT_EQ(m_player->callCount("IWMPMedia::getItemInfo") - reads, 6U) << "what is sent";
}

TEST_F(LinkedGuestTest, AnIdleLinkLeavesThePlayerAlone) {
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
