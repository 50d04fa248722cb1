#pragma once

#include <windows.h>

#include "common/names/names.h"
#include "platform/atl/atlcomcli.h"
#include "platform/handles.h"
#include "platform/wmp_plugin_ui.h"

namespace orvane::test {

// Loads the real module with LoadLibrary and uses it through its exports only. The destructor frees
// it.
class LoadedModule {
public:
    // Loads a module from this program's folder. Throws std::system_error on failure.
    explicit LoadedModule(const wchar_t* file = names::kModuleFile.wide());

    [[nodiscard]] HMODULE get() const { return m_module.get(); }
    // Calls an export without parameters.
    [[nodiscard]] HRESULT call(const char* name) const { return find<HRESULT(WINAPI*)()>(name)(); }
    // Throws when the module has no such class.
    [[nodiscard]] CComPtr<IClassFactory> classFactory() const;
    // A new object; null when it cannot be made.
    [[nodiscard]] CComPtr<IWMPPluginUI> createPlugin() const;

    [[nodiscard]] static bool isLoaded() {
        return GetModuleHandleW(names::kModuleFile.wide()) != nullptr;
    }
    // Waits until the module is unloaded, which its last thread may do after FreeLibrary. False
    // after a time-out. Dispatches messages.
    [[nodiscard]] static bool isGoneSoon();

private:
    template <typename Function>
    [[nodiscard]] Function find(const char* name) const {
        return reinterpret_cast<Function>(
            reinterpret_cast<void*>(GetProcAddress(m_module.get(), name)));
    }

    UniqueModule m_module;
};

}  // namespace orvane::test
