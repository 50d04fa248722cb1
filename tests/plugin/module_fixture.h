#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "platform/atl/atlcomcli.h"
#include "platform/handles.h"
#include "platform/wmp_plugin_ui.h"

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

}  // namespace orvane::test
