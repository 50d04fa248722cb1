#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include "platform/atl/atlcomcli.h"
#include "platform/handles.h"
#include "platform/wmp_plugin_ui.h"
#include "tests/plugin/fake_app.h"
#include "tests/plugin/test_player.h"

namespace orvane::test {

constexpr const wchar_t* kModuleName = L"OrVaneWmpPlugin.dll";
constexpr const wchar_t* kClassId = L"{9893A0E1-EE98-448F-81EE-D2D15666215E}";

// The real module, as a stranger loads it: nothing but exports, registry and resources.
class Module {
public:
    Module() : m_module(LoadLibraryW(kModuleName)) {
        EXPECT_TRUE(m_module) << "error " << GetLastError();
    }
    [[nodiscard]] HMODULE get() const { return m_module.get(); }
    [[nodiscard]] HRESULT call(const char* name) const { return find<HRESULT(WINAPI*)()>(name)(); }

    // A new object; null when it cannot be made.
    [[nodiscard]] CComPtr<IWMPPluginUI> createPlugin() const {
        CLSID clsid{};
        CLSIDFromString(kClassId, &clsid);
        CComPtr<IClassFactory> factory;
        CComPtr<IWMPPluginUI> plugin;
        const auto getClassObject =
            find<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>("DllGetClassObject");
        EXPECT_EQ(getClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
                  S_OK);
        factory->CreateInstance(nullptr, __uuidof(IWMPPluginUI), reinterpret_cast<void**>(&plugin));
        return plugin;
    }

private:
    template <typename Function>
    [[nodiscard]] Function find(const char* name) const {
        return reinterpret_cast<Function>(
            reinterpret_cast<void*>(GetProcAddress(m_module.get(), name)));
    }

    UniqueModule m_module;
};

// What the module meets in a player that loads it.
class ModuleTest : public testing::Test {
protected:
    standin::ComApartment m_apartment;
    PlayerWindow m_window;
    FakeApp m_app;
    TestPlayer m_player{standin::PlayerOptions()};
};

}  // namespace orvane::test
