#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "platform/atl/atlcomcli.h"
#include "platform/handles.h"
#include "platform/wmp_plugin_ui.h"
#include "tests/plugin/fake_app.h"
#include "tests/plugin/fake_core.h"

namespace orvane::test {

// The real module, as a stranger loads it: nothing but exports, registry and resources.
constexpr const wchar_t* kModuleName = L"OrVaneWmpPlugin.dll";
constexpr const wchar_t* kPluginsKey = L"SOFTWARE\\Microsoft\\MediaPlayer\\UIPlugins";

class Module {
public:
    Module() : m_module(LoadLibraryW(kModuleName)) {
        EXPECT_TRUE(m_module) << "error " << GetLastError();
    }
    [[nodiscard]] HMODULE get() const { return m_module.get(); }

    template <typename Function>
    [[nodiscard]] Function find(const char* name) const {
        return reinterpret_cast<Function>(
            reinterpret_cast<void*>(GetProcAddress(m_module.get(), name)));
    }
    [[nodiscard]] HRESULT call(const char* name) const {
        const auto function = find<HRESULT(WINAPI*)()>(name);
        return function == nullptr ? E_NOTIMPL : function();
    }
    [[nodiscard]] HRESULT classObject(REFCLSID clsid, CComPtr<IClassFactory>& factory) const {
        const auto function = find<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>("DllGetClassObject");
        factory.Release();
        return function == nullptr
                   ? E_NOTIMPL
                   : function(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    }

private:
    UniqueModule m_module;
};

// The class of the one plug-in that is registered; text and value.
[[nodiscard]] std::wstring registeredClassText();
[[nodiscard]] CLSID registeredClass();

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

// A new object of that class; null when it cannot be made.
[[nodiscard]] CComPtr<IWMPPluginUI> createFrom(const Module& module, const CLSID& clsid);

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

// What another process does, started by runChild: it ends with an exit code that tells.
class ModuleChild : public ModuleTest {
protected:
    // A window, unless there is one, the module and an object that has a core.
    void attach();

    std::unique_ptr<PlayerWindow> m_window;
    std::unique_ptr<Module> m_module;
    CComPtr<IWMPPluginUI> m_plugin;
    FakeCore m_core;
};

// Runs the test "DISABLED_" and `name` of that suite in a process of its own; the exit code, or -1
// when it hangs. `command` goes to its object by way of `app`, once it has said hello.
[[nodiscard]] int runChild(const char* suite, const char* name, FakeApp* app = nullptr,
                           const char* command = nullptr);

}  // namespace orvane::test
