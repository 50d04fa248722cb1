// The real module while the player frees it: what still stands on a stack, who still knows its
// code. Each case runs in a process of its own, as it leaves the module loaded for good.

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "tests/plugin/module_fixture.h"

namespace orvane::test {
namespace {

constexpr UINT kDialog = WM_APP + 1;  // the player's window runs `dialog` for it
constexpr UINT kPosted = WM_APP + 2;
constexpr LRESULT kAnswer = 42;
constexpr int kPassed = 45;

std::function<void()> dialog;
int postedSeen = 0;
WNDPROC beneathAnother = nullptr;

LRESULT CALLBACK playersProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kPosted) ++postedSeen;
    if (message != kDialog) return DefWindowProcW(window, message, wParam, lParam);
    if (dialog) dialog();
    return kAnswer;
}

LRESULT CALLBACK anotherProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return CallWindowProcW(beneathAnother, window, message, wParam, lParam);
}

WNDPROC setProc(HWND window, WNDPROC proc) {
    return reinterpret_cast<WNDPROC>(
        SetWindowLongW(window, GWL_WNDPROC, static_cast<LONG>(reinterpret_cast<LONG_PTR>(proc))));
}

class UnloadChild : public ModuleChild {
protected:
    void attachTo(WNDPROC proc) {
        m_window = std::make_unique<PlayerWindow>();
        setProc(m_window->handle(), proc);
        attach();
    }
    // As a player does whose user turns the plug-in off; its threads have left by the end.
    void turnOff() {
        EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
        m_plugin.Release();
        EXPECT_EQ(m_module->call("DllCanUnloadNow"), S_OK);
        m_module.reset();
        pumpFor(300);
    }
    [[noreturn]] static void end() { ExitProcess(HasFailure() ? 1 : kPassed); }
};

TEST_F(UnloadChild, DISABLED_TurnedOffInADialogOfItsWindow) {
    attachTo(&playersProc);
    dialog = [&] { turnOff(); };
    EXPECT_EQ(SendMessageW(m_window->handle(), kDialog, 0, 0), kAnswer);
    EXPECT_FALSE(m_window->isHooked());
    end();
}

TEST_F(UnloadChild, DISABLED_TurnedOffWhileTheCoreIsTakenBack) {
    attachTo(&playersProc);
    IWMPPluginUI* const going = m_plugin.p;
    m_core.duringUnadvise = [&] {
        m_plugin.Release();
        m_module.reset();
        pumpFor(300);
    };
    EXPECT_EQ(going->SetCore(nullptr), S_OK);
    EXPECT_EQ(m_core.references, 1);
    end();
}

TEST_F(UnloadChild, DISABLED_ItsProcedurePutBackLater) {
    attachTo(&playersProc);
    beneathAnother = setProc(m_window->handle(), &anotherProc);
    turnOff();
    setProc(m_window->handle(), beneathAnother);
    EXPECT_EQ(SendMessageW(m_window->handle(), kDialog, 0, 0), kAnswer);
    end();
}

TEST_F(UnloadChild, DISABLED_LetGoDuringACommandThatHangs) {
    const UniqueHandle arrived(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle goOn(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    FakeApp app;
    m_core.playState = [&](WMPPlayState* state) {
        SetEvent(arrived.get());
        WaitForSingleObject(goOn.get(), INFINITE);
        *state = wmppsPlaying;
        return S_OK;
    };
    attachTo(&playersProc);
    ASSERT_TRUE(app.sendCommand("isPlaying"));
    ASSERT_EQ(WaitForSingleObject(arrived.get(), 5000), WAIT_OBJECT_0);
    PostMessageW(m_window->handle(), kPosted, 0, 0);

    const ULONGLONG start = GetTickCount64();
    m_plugin->SetCore(nullptr);
    m_plugin.Release();
    EXPECT_LT(GetTickCount64() - start, 6000U);
    EXPECT_EQ(postedSeen, 0) << "not inside the player's own call";
    EXPECT_FALSE(m_window->isHooked());
    EXPECT_EQ(m_core.references, 2) << "the command has its own";
    m_module.reset();
    pumpFor(200);
    EXPECT_EQ(postedSeen, 1);
    ASSERT_TRUE(isLoaded());

    // The next one does not wait for that.
    ASSERT_TRUE(app.waitForDisconnectAndReopen());
    FakeCore other;
    m_module = std::make_unique<Module>();
    m_plugin = createFrom(*m_module, registeredClass());
    ASSERT_NE(m_plugin, nullptr);
    app.forget();
    EXPECT_EQ(m_plugin->SetCore(&other), S_OK);
    EXPECT_EQ(app.waitForEvents(1), Names{"PlayerHello"});
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    m_plugin.Release();
    EXPECT_EQ(m_module->call("DllCanUnloadNow"), S_FALSE) << "the first object is there still";

    SetEvent(goOn.get());
    EXPECT_TRUE(pumpUntil([&] { return m_module->call("DllCanUnloadNow") == S_OK; }));
    EXPECT_EQ(m_core.references, 1);
    end();
}

class ModuleUnload : public ModuleTest {};

TEST_F(ModuleUnload, TheModuleStaysForWhatStillUsesIt) {
    const Registered registered;
    for (const char* child : {"TurnedOffInADialogOfItsWindow", "TurnedOffWhileTheCoreIsTakenBack",
                              "ItsProcedurePutBackLater"}) {
        FakeApp app;
        EXPECT_EQ(runChild("UnloadChild", child), kPassed) << child;
    }
}

TEST_F(ModuleUnload, AHangingCommandHoldsUpNobodyForLong) {
    const Registered registered;
    EXPECT_EQ(runChild("UnloadChild", "LetGoDuringACommandThatHangs"), kPassed);
}

TEST_F(ModuleUnload, NothingChangesThePlayersTimerResolution) {
    const Module module;
    const auto* const base = reinterpret_cast<const char*>(module.get());
    const auto at = [base](DWORD offset) { return base + offset; };
    const auto* const header = reinterpret_cast<const IMAGE_NT_HEADERS32*>(
        at(static_cast<DWORD>(reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew)));
    const auto& directory = header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    std::vector<std::string> imports;
    for (const auto* from =
             reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(at(directory.VirtualAddress));
         from->Name != 0; ++from)
        for (const auto* name =
                 reinterpret_cast<const IMAGE_THUNK_DATA32*>(at(from->OriginalFirstThunk));
             name->u1.AddressOfData != 0; ++name)
            if (!IMAGE_SNAP_BY_ORDINAL32(name->u1.Ordinal))
                imports.emplace_back(at(name->u1.AddressOfData) + sizeof(WORD));
    EXPECT_GT(imports.size(), 100U);
    EXPECT_EQ(std::count(imports.begin(), imports.end(), "timeBeginPeriod"), 0);
}

}  // namespace
}  // namespace orvane::test
