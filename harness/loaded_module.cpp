#include "harness/loaded_module.h"

#include <system_error>

#include "common/names/class_id.h"
#include "harness/waiting.h"

namespace orvane::test {

LoadedModule::LoadedModule(const wchar_t* file) : m_module(LoadLibraryW(file)) {
    if (!m_module)
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                                "LoadLibrary");
}

CComPtr<IClassFactory> LoadedModule::classFactory() const {
    CComPtr<IClassFactory> factory;
    const auto getClassObject =
        find<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>("DllGetClassObject");
    if (getClassObject == nullptr || FAILED(getClassObject(names::kClass, IID_IClassFactory,
                                                           reinterpret_cast<void**>(&factory))))
        throw std::runtime_error("the module has no such class");
    return factory;
}

CComPtr<IWMPPluginUI> LoadedModule::createPlugin() const {
    CComPtr<IWMPPluginUI> plugin;
    classFactory()->CreateInstance(nullptr, __uuidof(IWMPPluginUI),
                                   reinterpret_cast<void**>(&plugin));
    return plugin;
}

bool LoadedModule::isGoneSoon() {
    return pumpUntil([] { return !isLoaded(); }, 3000);
}

}  // namespace orvane::test
