// The real module comes and goes: loads and unloads in a row, and processes that end with it.

#include <windows.h>

#include <array>
#include <vector>

#include "tests/plugin/module_fixture.h"
#include "tests/support/process_counts.h"

namespace orvane::test {

namespace {

DWORD WINAPI loadModule(void* result) {
    *static_cast<HMODULE*>(result) = LoadLibraryW(kModuleName);
    return 0;
}

// Of thread-local storage: the process ends when there are none left.
std::size_t freeThreadSlots() {
    std::vector<DWORD> slots;
    for (DWORD slot; (slot = TlsAlloc()) != TLS_OUT_OF_INDEXES;) slots.push_back(slot);
    for (const DWORD slot : slots) TlsFree(slot);
    return slots.size();
}

TEST_F(ModuleTest, LoadedUsedAndUnloadedManyTimesInARow) {
    const Registered registered;
    const PlayerWindow window;
    FakeApp app;
    FakeCore core;
    int threads = 0;
    int handles = 0;
    std::size_t slots = 0;
    constexpr int rounds = 60;
    constexpr int warmUp = 5;
    for (int round = 0; round < rounds; ++round) {
        {
            const Module module;
            auto plugin = createFrom(module, registered.clsid());
            ASSERT_NE(plugin, nullptr) << round;
            ASSERT_EQ(plugin->SetCore(&core), S_OK);
            // Some rounds long enough for timers and their thread to be at work.
            if (round % 20 == 0) pumpFor(120);
            if (round % 3 == 0) {
                ASSERT_EQ(plugin->SetCore(nullptr), S_OK);
            }
            plugin.Release();
            ASSERT_EQ(module.call("DllCanUnloadNow"), S_OK);
        }
        ASSERT_TRUE(isGoneSoon()) << round;
        ASSERT_FALSE(window.isHooked());
        ASSERT_TRUE(app.waitForDisconnectAndReopen()) << round;
        if (round == warmUp) {
            threads = threadsOfThisProcess();
            handles = handlesOfThisProcess();
            slots = freeThreadSlots();
        }
    }
    EXPECT_EQ(freeThreadSlots(), slots);
    EXPECT_LE(threadsOfThisProcess(), threads);
    EXPECT_EQ(core.references, 1);
    // The runtime's own four a load, and nothing beside.
    const int growth = handlesOfThisProcess() - handles;
    EXPECT_LE(growth, 5 * (rounds - warmUp));
}

TEST_F(ModuleTest, UnloadsAfterACreationThatFailed) {
    const Registered registered;
    FakeApp app;
    app.closePipes();
    for (int round = 0; round < 5; ++round) {
        {
            const Module module;
            EXPECT_EQ(createFrom(module, registered.clsid()), nullptr);
            EXPECT_EQ(module.call("DllCanUnloadNow"), S_OK);
        }
        ASSERT_TRUE(isGoneSoon()) << round;
    }
}

TEST_F(ModuleTest, IsUsedAgainAndOnAnotherThreadThanTheOneThatLoadedIt) {
    const Registered registered;
    {
        HMODULE loaded = nullptr;
        const UniqueHandle loader(CreateThread(nullptr, 0, &loadModule, &loaded, 0, nullptr));
        WaitForSingleObject(loader.get(), 10000);
        const UniqueModule reference(loaded);
        ASSERT_TRUE(reference);

        const PlayerWindow window;
        FakeApp app;
        const Module module;
        // The second object finds everything shut down by the end of the first.
        for (int round = 0; round < 2; ++round) {
            auto plugin = createFrom(module, registered.clsid());
            ASSERT_NE(plugin, nullptr);
            app.closePipes();
            app.forget();
            app.openPipes();
            // Only a living timer says this hello.
            EXPECT_EQ(app.waitForEvents(1, 4000), Names{"PlayerHello"});
            plugin.Release();
            ASSERT_TRUE(app.waitForDisconnectAndReopen());
        }
    }
    EXPECT_TRUE(isGoneSoon());
}

TEST_F(ModuleChild, DISABLED_ExitsWithTheObjectAlive) {
    attach();
    ExitProcess(42);
}

TEST_F(ModuleChild, DISABLED_ExitsWithACommandRunning) {
    static UniqueHandle running(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    m_core.playState = [](WMPPlayState*) {
        SetEvent(running.get());
        Sleep(INFINITE);
        return E_FAIL;
    };
    attach();
    WaitForSingleObject(running.get(), 10000);
    ExitProcess(43);
}

TEST_F(ModuleChild, DISABLED_ExitsAfterUse) {
    attach();
    m_plugin.Release();
    m_module.reset();
    ExitProcess(44);
}

TEST_F(ModuleTest, TheProcessMayEndInAnyStateOfTheModule) {
    const Registered registered;
    FakeApp app;
    const struct {
        const char* child;
        int code;
        const char* command;
    } cases[] = {{"ExitsWithTheObjectAlive", 42, nullptr},
                 {"ExitsWithACommandRunning", 43, "isPlaying"},
                 {"ExitsAfterUse", 44, nullptr}};
    for (const auto& [child, code, command] : cases) {
        EXPECT_EQ(runChild("ModuleChild", child, &app, command), code);
        EXPECT_TRUE(app.waitForDisconnectAndReopen());
        app.forget();
    }
}

}  // namespace
}  // namespace orvane::test
