// The real module comes and goes: loads and unloads in a row, and processes that end with it.

#include <windows.h>

#include <array>
#include <vector>

#include "tests/plugin/fake_app.h"
#include "tests/plugin/fake_core.h"
#include "tests/plugin/module_fixture.h"
#include "tests/support/process_counts.h"

namespace orvane::test {

std::wstring registeredClassText() {
    UniqueRegKey plugins;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, kPluginsKey, 0, KEY_READ, plugins.put());
    for (DWORD index = 0;; ++index) {
        wchar_t name[256] = {};
        if (RegEnumKeyW(plugins.get(), index, name, 256) != ERROR_SUCCESS) return {};
        wchar_t text[256] = {};
        DWORD size = sizeof(text);
        RegGetValueW(plugins.get(), name, L"FriendlyName", RRF_RT_REG_SZ, nullptr, text, &size);
        if (std::wstring(text) == L"res://OrVaneWmpPlugin.dll/RT_STRING/#102") return name;
    }
}

CLSID registeredClass() {
    CLSID clsid{};
    CLSIDFromString(registeredClassText().c_str(), &clsid);
    return clsid;
}

namespace {

// Registers the module for as long as it lives; answers its class.
class Registered {
public:
    Registered() {
        const Module module;
        EXPECT_EQ(module.call("DllRegisterServer"), S_OK);
        m_class = registeredClass();
    }
    ~Registered() {
        const Module module;
        EXPECT_EQ(module.call("DllUnregisterServer"), S_OK);
    }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;
    [[nodiscard]] const CLSID& clsid() const { return m_class; }

private:
    CLSID m_class{};
};

class ModuleTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr))); }
    void TearDown() override { OleUninitialize(); }

    static bool isLoaded() { return GetModuleHandleW(kModuleName) != nullptr; }
    // The last thread of the module takes it along a moment after FreeLibrary.
    static bool isGoneSoon() {
        return pumpUntil([] { return !isLoaded(); }, 3000);
    }
};

DWORD WINAPI loadModule(void* result) {
    *static_cast<HMODULE*>(result) = LoadLibraryW(kModuleName);
    return 0;
}

CComPtr<IWMPPluginUI> createFrom(const Module& module, const CLSID& clsid) {
    CComPtr<IClassFactory> factory;
    CComPtr<IWMPPluginUI> plugin;
    if (SUCCEEDED(module.classObject(clsid, factory)))
        factory->CreateInstance(nullptr, __uuidof(IWMPPluginUI), reinterpret_cast<void**>(&plugin));
    return plugin;
}

TEST_F(ModuleTest, LoadedUsedAndUnloadedManyTimesInARow) {
    const Registered registered;
    const PlayerWindow window;
    FakeApp app;
    FakeCore core;
    int threads = 0;
    int handles = 0;
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
        }
    }
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

// What the other process does, started by the tests below.
class ModuleChild : public ModuleTest {
protected:
    void attach() {
        m_window = std::make_unique<PlayerWindow>();
        m_module = std::make_unique<Module>();
        m_plugin = createFrom(*m_module, registeredClass());
        if (m_plugin == nullptr || m_plugin->SetCore(&m_core) != S_OK)
            TerminateProcess(GetCurrentProcess(), 1);
        pumpFor(300);  // the timers' thread and both readers are at work
    }
    std::unique_ptr<PlayerWindow> m_window;
    std::unique_ptr<Module> m_module;
    CComPtr<IWMPPluginUI> m_plugin;
    FakeCore m_core;
};

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

class ModuleExit : public ModuleTest {
protected:
    // Runs that child against this process's application; its exit code, or -1 when it hangs.
    static int run(const char* name, FakeApp& app, const char* command) {
        char program[MAX_PATH] = {};
        GetModuleFileNameA(nullptr, program, MAX_PATH);
        std::string line = "\"" + std::string(program) +
                           "\" --gtest_also_run_disabled_tests --gtest_brief=1 "
                           "--gtest_filter=ModuleChild.DISABLED_" +
                           name;
        STARTUPINFOA startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION process{};
        if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                            &startup, &process))
            return -2;
        const UniqueHandle handle(process.hProcess);
        const UniqueHandle thread(process.hThread);
        if (command != nullptr && !app.waitForEvents(1, 15000).empty()) app.sendCommand(command);
        if (WaitForSingleObject(handle.get(), 20000) != WAIT_OBJECT_0) {
            TerminateProcess(handle.get(), 99);
            return -1;
        }
        DWORD code = 0;
        GetExitCodeProcess(handle.get(), &code);
        return static_cast<int>(code);
    }
};

TEST_F(ModuleExit, TheProcessMayEndInAnyStateOfTheModule) {
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
        EXPECT_EQ(run(child, app, command), code);
        EXPECT_TRUE(app.waitForDisconnectAndReopen());
        app.forget();
    }
}

}  // namespace
}  // namespace orvane::test
