// The real module while the player frees it or ends: what still stands on a stack, who still knows
// its code. Each case runs in a process of its own, as it leaves the module loaded for good.

#include <functional>
#include <string>

#include "tests/plugin/module_fixture.h"
#include "tests/support/process.h"

namespace orvane::test {
namespace {

constexpr UINT kDialog = WM_APP + 1;  // the player's window runs `m_dialog` for it
constexpr UINT kPosted = WM_APP + 2;
constexpr LRESULT kAnswer = 42;
constexpr int kPassed = 45;

WNDPROC beneathAnother = nullptr;

LRESULT CALLBACK anotherProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return CallWindowProcW(beneathAnother, window, message, wParam, lParam);
}

WNDPROC setProc(HWND window, WNDPROC proc) {
    return reinterpret_cast<WNDPROC>(
        SetWindowLongW(window, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(proc))));
}

// What the other process does: it ends with an exit code that tells.
class ModuleChild : public ModuleTest {
protected:
    void SetUp() override {
        m_window.onMessage = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message == kPosted) ++m_postedSeen;
            if (message != kDialog) return std::nullopt;
            if (m_dialog) m_dialog();
            return kAnswer;
        };
        m_module = std::make_unique<Module>();
        m_plugin = m_module->createPlugin();
        ASSERT_NO_FATAL_FAILURE(attach(m_plugin));
        ASSERT_EQ(m_app.events.lines(1), Names{"PlayerHello Player=wmp"});
        pumpFor(200);  // the timers' thread and both readers are at work
    }
    void TearDown() override { ExitProcess(HasFailure() ? 1 : kPassed); }

    void freeModule() {
        m_plugin.Release();
        EXPECT_EQ(m_module->call("DllCanUnloadNow"), S_OK);
        m_module.reset();
        pumpFor(300);  // its threads have left by then
    }
    // As a player does whose user turns the plug-in off.
    void turnOff() {
        EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
        freeModule();
    }
    void during(const std::string& call, const std::function<HRESULT()>& act) {
        m_player.change([&](standin::PlayerOptions& options) {
            options.onCall = [=](const std::string& name) { return name == call ? act() : S_OK; };
        });
    }
    // A command that stands in a call of the player's until the signal is given.
    void beginCommand(HANDLE goOn) {
        during("IWMPCore::get_playState", [goOn] {
            WaitForSingleObject(goOn, INFINITE);
            return S_OK;
        });
        ASSERT_TRUE(m_app.sendCommand("isPlaying"));
        ASSERT_TRUE(eventually([&] { return m_player.callCount("IWMPCore::get_playState") == 1; }));
    }

    std::function<void()> m_dialog;
    int m_postedSeen = 0;
    const UniqueHandle m_goOn{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::unique_ptr<Module> m_module;
    CComPtr<IWMPPluginUI> m_plugin;
};

TEST_F(ModuleChild, DISABLED_EndsWithTheObjectAlive) {}

TEST_F(ModuleChild, DISABLED_EndsWithACommandRunning) { beginCommand(m_goOn.get()); }

TEST_F(ModuleChild, DISABLED_EndsAfterUse) { freeModule(); }

TEST_F(ModuleChild, DISABLED_TurnsItOffInADialogOfItsWindow) {
    m_dialog = [&] { turnOff(); };
    EXPECT_EQ(m_window.send(kDialog), kAnswer);
    EXPECT_FALSE(m_window.isHooked());
}

TEST_F(ModuleChild, DISABLED_TurnsItOffWhileTheCoreIsTakenBack) {
    IWMPPluginUI* const going = m_plugin.p;
    during("IConnectionPoint::Unadvise", [&] {
        m_plugin.Release();
        m_module.reset();
        pumpFor(300);
        return S_OK;
    });
    EXPECT_EQ(going->SetCore(nullptr), S_OK);
    EXPECT_EQ(standin::liveObjects(), 1) << "the core";
}

TEST_F(ModuleChild, DISABLED_PutsItsProcedureBackLater) {
    beneathAnother = setProc(m_window.hwnd(), &anotherProc);
    turnOff();
    setProc(m_window.hwnd(), beneathAnother);
    EXPECT_EQ(m_window.send(kDialog), kAnswer);
}

TEST_F(ModuleChild, DISABLED_LetsItGoDuringACommandThatHangs) {
    ASSERT_NO_FATAL_FAILURE(beginCommand(m_goOn.get()));
    PostMessageW(m_window.hwnd(), kPosted, 0, 0);
    const ULONGLONG start = GetTickCount64();
    m_plugin->SetCore(nullptr);
    m_plugin.Release();
    EXPECT_LT(GetTickCount64() - start, 6000U);
    EXPECT_EQ(m_postedSeen, 0) << "not inside the player's own call";
    EXPECT_FALSE(m_window.isHooked());
    m_module.reset();
    pumpFor(200);
    EXPECT_EQ(m_postedSeen, 1);
    ASSERT_TRUE(isLoaded());

    // The next one does not wait for that.
    ASSERT_TRUE(m_app.waitForDisconnectAndReopen());
    m_module = std::make_unique<Module>();
    m_plugin = m_module->createPlugin();
    ASSERT_NO_FATAL_FAILURE(attach(m_plugin));
    EXPECT_EQ(m_app.events.lines(1), Names{"PlayerHello Player=wmp"});
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    m_plugin.Release();
    EXPECT_EQ(m_module->call("DllCanUnloadNow"), S_FALSE) << "the first object is there still";

    SetEvent(m_goOn.get());
    EXPECT_TRUE(pumpUntil([&] { return m_module->call("DllCanUnloadNow") == S_OK; }));
}

TEST(ModuleUnload, TheModuleStaysForWhatStillUsesItAndThePlayerMayEndInAnyState) {
    for (const wchar_t* what :
         {L"EndsWithTheObjectAlive", L"EndsWithACommandRunning", L"EndsAfterUse",
          L"TurnsItOffInADialogOfItsWindow", L"TurnsItOffWhileTheCoreIsTakenBack",
          L"PutsItsProcedureBackLater", L"LetsItGoDuringACommandThatHangs"}) {
        const Process player(
            std::wstring(L"plugin_module_tests.exe --gtest_also_run_disabled_tests "
                         L"--gtest_filter=ModuleChild.DISABLED_") +
            what);
        EXPECT_EQ(player.exitCode(20'000), kPassed) << player.output();
    }
}

}  // namespace
}  // namespace orvane::test
