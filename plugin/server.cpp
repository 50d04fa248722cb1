#include "plugin/server.h"

#include <memory>

#include "platform/atl/atlcom.h"
#include "plugin/registration.h"
#include "plugin/wmp_plugin.h"

namespace orvane {
namespace {

class PluginModule : public CAtlDllModuleT<PluginModule> {};

// Destroyed when the module is freed, and never at the process's end: others may still call in
// then.
union Server {
    Server() : module() {}
    ~Server() {}
    PluginModule module;
} server;

OBJECT_ENTRY_AUTO(CLSID_OrVaneWmpPlugin, COrVaneWmpPlugin)

}  // namespace

HRESULT getClassObject(REFCLSID clsid, REFIID iid, void** object) noexcept {
    return server.module.DllGetClassObject(clsid, iid, object);
}

HRESULT canUnloadNow() noexcept { return server.module.DllCanUnloadNow(); }

HRESULT registerServer() noexcept {
    const HRESULT result = server.module.DllRegisterServer(FALSE);
    announcePluginChange();
    return result;
}

HRESULT unregisterServer() noexcept {
    const HRESULT result = server.module.DllUnregisterServer(FALSE);
    announcePluginChange();
    return result;
}

void endServer() noexcept {
    server.module.Term();
    std::destroy_at(&server.module);
}

}  // namespace orvane
