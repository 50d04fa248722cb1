#pragma once

#include <windows.h>

#include "common/names/names.h"
#include "platform/atl/atlcomcli.h"
#include "platform/handles.h"
#include "platform/wmp_plugin_ui.h"

namespace orvane::test {

// The real module, loaded as a stranger does: nothing but exports, registry and resources. It is
// freed by the destructor.
class LoadedModule {
public:
    // A module beside this program. Throws std::system_error when it does not load.
    explicit LoadedModule(const wchar_t* file = names::kModuleFile.wide());

    [[nodiscard]] HMODULE get() const { return m_module.get(); }
    // An export without parameters.
    [[nodiscard]] HRESULT call(const char* name) const { return find<HRESULT(WINAPI*)()>(name)(); }
    // Throws when the module has no such class.
    [[nodiscard]] CComPtr<IClassFactory> classFactory() const;
    // A new object; null when it cannot be made.
    [[nodiscard]] CComPtr<IWMPPluginUI> createPlugin() const;

    [[nodiscard]] static bool isLoaded() {
        return GetModuleHandleW(names::kModuleFile.wide()) != nullptr;
    }
    // The module's last thread unloads it a moment after it was freed. Dispatches messages.
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
