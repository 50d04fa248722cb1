// A command is running on the command pipe's thread while the player takes its core back or lets
// the object go. The player serves the command's calls on its own thread, as a real one does.

#include <gtest/gtest.h>

#include "tests/plugin/plugin_fixture.h"

namespace orvane::test {
namespace {

constexpr UINT kServePlayState = WM_APP + 1;

// A core whose play state is read on the thread that made it, by a message sent there.
class ServingCore : public FakeCore {
public:
    ServingCore() {
        m_window =
            CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        SetWindowLongW(m_window, GWL_USERDATA, static_cast<LONG>(reinterpret_cast<LONG_PTR>(this)));
        SetWindowLongW(m_window, GWL_WNDPROC,
                       static_cast<LONG>(reinterpret_cast<LONG_PTR>(&windowProc)));
        playState = [this](WMPPlayState* answer) {
            *answer = static_cast<WMPPlayState>(SendMessageW(m_window, kServePlayState, 0, 0));
            return S_OK;
        };
    }
    ~ServingCore() { DestroyWindow(m_window); }

    WMPPlayState state = wmppsTransitioning;
    std::function<void()> whileServing;  // once, with the command in the middle of its call
    int served = 0;

private:
    static LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != kServePlayState) return DefWindowProcW(window, message, wParam, lParam);
        auto* const core = reinterpret_cast<ServingCore*>(
            static_cast<LONG_PTR>(GetWindowLongW(window, GWL_USERDATA)));
        ++core->served;
        if (const auto call = std::exchange(core->whileServing, nullptr)) call();
        return core->state;
    }

    HWND m_window;
};

class CommandLifetimeTest : public PluginTest {
protected:
    // An attached plug-in whose isPlaying is about to call the player. That call is served when
    // this thread next waits or pumps.
    void beginCommand() {
        m_plugin = createPlugin();
        ASSERT_NE(m_plugin, nullptr);
        ASSERT_EQ(m_plugin->SetCore(&m_core), S_OK);
        m_core.playState = [this, serve = m_core.playState](WMPPlayState* state) {
            m_arrived = true;
            Sleep(100);
            return serve(state);
        };
        ASSERT_TRUE(m_app->sendCommand("isPlaying"));
        while (!m_arrived) Sleep(1);  // without serving anything
    }

    ServingCore m_core;
    std::atomic<bool> m_arrived{false};
    CComPtr<IWMPPluginUI> m_plugin;
};

TEST_F(CommandLifetimeTest, TheCoreMayBeTakenBackInTheMiddle) {
    m_core.state = wmppsPlaying;
    LONG whileRunning = 0;
    m_core.whileServing = [&] {
        EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
        whileRunning = m_core.references;
    };
    beginCommand();
    ASSERT_TRUE(pumpUntil([&] { return whileRunning != 0; }));
    EXPECT_EQ(whileRunning, 2) << "the command has a reference of its own";
    EXPECT_EQ(m_app->waitForResponses(1), Names{"isPlaying=true"});
    EXPECT_TRUE(pumpUntil([&] { return m_core.references == 1; }));

    // The next command finds no core.
    EXPECT_TRUE(m_app->sendCommand("isPlaying"));
    EXPECT_EQ(m_app->waitForResponses(2).back(), "isPlaying=false");
    EXPECT_EQ(m_core.served, 1);
    m_plugin.Release();
}

TEST_F(CommandLifetimeTest, ReleaseWaitsForTheCommandAndServesItsCallsAndThePlayers) {
    beginCommand();
    CComPtr<IWMPEvents> events;
    ASSERT_EQ(m_plugin.QueryInterface(&events), S_OK);
    IWMPEvents* const goingEvents = events.p;
    IWMPPluginUI* const going = m_plugin.p;
    events.Release();

    FakeCore other;
    bool called = false;
    m_core.whileServing = [&] {
        called = true;
        going->AddRef();
        EXPECT_EQ(going->SetCore(nullptr), S_OK);
        EXPECT_EQ(going->SetCore(&other), E_UNEXPECTED);
        goingEvents->PlayStateChange(wmppsStopped);
        going->Release();
    };
    const ULONGLONG start = GetTickCount64();
    m_plugin.Release();
    EXPECT_LT(GetTickCount64() - start, 3000U);
    EXPECT_TRUE(called);
    EXPECT_EQ(m_core.served, 1);
    EXPECT_EQ(m_core.references, 1) << "the command was over when Release returned";
    EXPECT_EQ(other.references, 1);
    EXPECT_EQ(canUnloadNow(), S_OK);
    EXPECT_EQ(m_app->waitForEvents(2), (Names{"PlayerHello", "PlayerGoodbye"}));
    pumpFor(50);
    EXPECT_EQ(m_app->waitForEvents(0).size(), 2U);
}

}  // namespace
}  // namespace orvane::test
