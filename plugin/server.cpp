#include "plugin/server.h"

#include "platform/atl/atlcom.h"
#include "plugin/registration.h"
#include "plugin/wmp_plugin.h"

namespace orvane {
namespace {

class PluginModule : public CAtlDllModuleT<PluginModule> {};

PluginModule module;

OBJECT_ENTRY_AUTO(CLSID_OrVaneWmpPlugin, COrVaneWmpPlugin)

}  // namespace

HRESULT getClassObject(REFCLSID clsid, REFIID iid, void** object) noexcept {
    return module.DllGetClassObject(clsid, iid, object);
}

HRESULT canUnloadNow() noexcept { return module.DllCanUnloadNow(); }

HRESULT registerServer() noexcept {
    const HRESULT result = module.DllRegisterServer(FALSE);
    announcePluginChange();
    return result;
}

HRESULT unregisterServer() noexcept {
    const HRESULT result = module.DllUnregisterServer(FALSE);
    announcePluginChange();
    return result;
}

void endServer() noexcept { module.Term(); }

}  // namespace orvane
