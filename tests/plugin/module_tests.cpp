// The real module comes and goes, is freed while it is in use, and ends with its process.

#include <functional>
#include <memory>
#include <thread>

#include "tests/plugin/module_fixture.h"
#include "tests/support/process.h"
#include "tests/support/process_counts.h"

namespace orvane::test {
namespace {

bool isLoaded() { return GetModuleHandleW(kModuleName) != nullptr; }

// The last thread of the module takes it along a moment after FreeLibrary.
bool isGoneSoon() {
    return pumpUntil([] { return !isLoaded(); }, 3000);
}

TEST_F(ModuleTest, LoadedUsedAndUnloadedManyTimesInARow) {
    int threads = 0;
    int handles = 0;
    constexpr int rounds = 60;
    constexpr int warmUp = 5;
    for (int round = 0; round < rounds; ++round) {
        {
            const Module module;
            if (round % 4 == 1) {  // a creation that fails
                m_app.closePipes();
                EXPECT_EQ(module.createPlugin(), nullptr);
                m_app.openPipes();
            } else {
                auto plugin = module.createPlugin();
                ASSERT_EQ(m_player.attach(plugin), S_OK) << round;
                // Some rounds long enough for timers and their thread to be at work.
                if (round % 20 == 0) pumpFor(120);
                if (round % 3 == 0) {
                    ASSERT_EQ(plugin->SetCore(nullptr), S_OK);
                }
            }
            ASSERT_EQ(module.call("DllCanUnloadNow"), S_OK);
        }
        ASSERT_TRUE(isGoneSoon()) << round;
        ASSERT_FALSE(m_window.isHooked());
        if (round % 4 != 1) {
            ASSERT_TRUE(m_app.waitForDisconnectAndReopen()) << round;
        }
        if (round == warmUp) {
            threads = threadsOfThisProcess();
            handles = handlesOfThisProcess();
        }
    }
    EXPECT_LE(threadsOfThisProcess(), threads);
    EXPECT_EQ(standin::liveObjects(), 1) << "the core";
    // The runtime's own four a load, and nothing beside.
    EXPECT_LE(handlesOfThisProcess() - handles, 5 * (rounds - warmUp));
}

TEST_F(ModuleTest, IsUsedAgainAndOnAnotherThreadThanTheOneThatLoadedIt) {
    std::unique_ptr<Module> module;
    std::thread([&] { module = std::make_unique<Module>(); }).join();
    // The second object finds everything shut down by the end of the first.
    for (int round = 0; round < 2; ++round) {
        auto plugin = module->createPlugin();
        ASSERT_NE(plugin, nullptr);
        m_app.closePipes();
        m_app.openPipes();
        // Only a living timer says this hello.
        EXPECT_EQ(m_app.events.lines(1, 4000), Names{kHello});
        plugin.Release();
        ASSERT_TRUE(m_app.waitForDisconnectAndReopen());
    }
    module.reset();
    EXPECT_TRUE(isGoneSoon());
}

// One string of a string table in exactly that language.
std::wstring textIn(HMODULE module, WORD language, int id) {
    HRSRC resource =
        FindResourceExW(module, MAKEINTRESOURCEW(6), MAKEINTRESOURCEW(id / 16 + 1), language);
    if (resource == nullptr) return L"no table";
    const auto* text = static_cast<const WCHAR*>(LockResource(LoadResource(module, resource)));
    for (int skipped = id % 16; skipped > 0; --skipped) text += 1 + *text;
    return {text + 1, *text};
}

TEST(ModuleFile, NamesItselfInThreeLanguages) {
    const Module module;
    const std::pair<WORD, const wchar_t*> languages[] = {
        {0x409, L"OrVane Windows Media Player Plugin"},
        {0x0A, L"Complemento de OrVane para Windows Media Player"},
        {0x0C, L"Plug-in OrVane pour Windows Media Player"}};
    for (const auto& [language, description] : languages) {
        EXPECT_EQ(textIn(module.get(), language, 102), L"OrVane") << language;
        EXPECT_EQ(textIn(module.get(), language, 103), description) << language;
    }
}

// What still stands on a stack while the module is freed or the process ends, and who still knows
// its code. Each case runs in a process of its own, which ends with an exit code that tells.

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

class ModuleChild : public ModuleTest {
protected:
    void SetUp() override {
        m_window.onMessage = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
            if (message == kPosted) ++m_postedSeen;
            if (message != kDialog) return std::nullopt;
            if (m_dialog) m_dialog();
            return kAnswer;
        };
        ASSERT_EQ(m_player.attach(m_plugin), S_OK);
        ASSERT_EQ(m_app.events.lines(1), Names{kHello});
        pumpFor(200);  // the timers' thread and both readers are at work
    }
    void TearDown() override { ExitProcess(HasFailure() ? 1 : kPassed); }

    // As a player does whose user turns the plug-in off.
    void turnOff() {
        m_plugin.Release();
        EXPECT_EQ(m_module->call("DllCanUnloadNow"), S_OK);
        m_module.reset();
        pumpFor(300);  // its threads have left by then
        EXPECT_FALSE(m_window.isHooked());
        EXPECT_EQ(m_app.events.lines(2), (Names{kHello, kGoodbye}));
    }
    // A command that stands in a call of the player's until m_goOn.
    void beginCommand() {
        m_player.during("IWMPCore::get_playState", [&] {
            WaitForSingleObject(m_goOn.get(), INFINITE);
            return S_OK;
        });
        ASSERT_TRUE(m_app.sendCommand("isPlaying"));
        ASSERT_TRUE(eventually([&] { return m_player.callCount("IWMPCore::get_playState") > 0; }));
    }

    std::function<void()> m_dialog;
    int m_postedSeen = 0;
    const UniqueHandle m_goOn{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::unique_ptr<Module> m_module = std::make_unique<Module>();
    CComPtr<IWMPPluginUI> m_plugin = m_module->createPlugin();
};

TEST_F(ModuleChild, DISABLED_EndsWithTheObjectAlive) {}

TEST_F(ModuleChild, DISABLED_EndsWithACommandRunning) { beginCommand(); }

TEST_F(ModuleChild, DISABLED_EndsAfterUse) { turnOff(); }

TEST_F(ModuleChild, DISABLED_TurnsItOffInADialogOfItsWindow) {
    m_dialog = [&] { turnOff(); };
    EXPECT_EQ(m_window.send(kDialog), kAnswer);
}

TEST_F(ModuleChild, DISABLED_TurnsItOffWhileTheCoreIsTakenBack) {
    IWMPPluginUI* const going = m_plugin.p;
    m_player.during("IConnectionPoint::Unadvise", [&] {
        m_plugin.Release();
        m_module.reset();
        pumpFor(300);
        return S_OK;
    });
    EXPECT_EQ(going->SetCore(nullptr), S_OK);
    EXPECT_EQ(standin::liveObjects(), 1) << "the core";
    EXPECT_FALSE(m_window.isHooked());
    EXPECT_EQ(m_app.events.lines(2), (Names{kHello, kGoodbye}));
}

TEST_F(ModuleChild, DISABLED_PutsItsProcedureBackLater) {
    beneathAnother = setProc(m_window.hwnd(), &anotherProc);
    turnOff();
    setProc(m_window.hwnd(), beneathAnother);
    EXPECT_EQ(m_window.send(kDialog), kAnswer);
}

TEST_F(ModuleChild, DISABLED_LetsItGoDuringACommandThatHangs) {
    ASSERT_NO_FATAL_FAILURE(beginCommand());
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
    ASSERT_EQ(m_player.attach(m_plugin), S_OK);
    EXPECT_EQ(m_app.events.lines(1), Names{kHello});
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    m_plugin.Release();
    EXPECT_EQ(m_module->call("DllCanUnloadNow"), S_FALSE) << "the first object is there still";

    SetEvent(m_goOn.get());
    EXPECT_TRUE(pumpUntil([&] { return m_module->call("DllCanUnloadNow") == S_OK; }));
    EXPECT_EQ(m_player.coreReferences(), 1U);
}

TEST(ModuleUnload, TheModuleStaysForWhatStillUsesItAndThePlayerMayEndInAnyState) {
    for (const wchar_t* what :
         {L"EndsWithTheObjectAlive", L"EndsWithACommandRunning", L"EndsAfterUse",
          L"TurnsItOffInADialogOfItsWindow", L"TurnsItOffWhileTheCoreIsTakenBack",
          L"PutsItsProcedureBackLater", L"LetsItGoDuringACommandThatHangs"}) {
        const Process player(
            L"plugin_module_tests.exe --gtest_also_run_disabled_tests "
            L"--gtest_filter=ModuleChild.DISABLED_" +
            std::wstring(what));
        EXPECT_EQ(player.exitCode(20'000), kPassed) << player.output();
    }
}

}  // namespace
}  // namespace orvane::test
