#include "standins/player/plugin_host.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "platform/handles.h"

namespace orvane::standin {

namespace {

// Empty when it cannot be read.
UniqueRegKey openKey(HKEY parent, const wchar_t* name) {
    UniqueRegKey key;
    RegOpenKeyExW(parent, name, 0, KEY_READ, key.put());
    return key;
}

bool isBackgroundPlugin(HKEY plugins, const wchar_t* name) {
    const UniqueRegKey key = openKey(plugins, name);
    DWORD capabilities = 0;
    DWORD type = 0;
    DWORD size = sizeof(capabilities);
    return key &&
           RegQueryValueExW(key.get(), PLUGIN_INSTALLREGKEY_CAPABILITIES, nullptr, &type,
                            reinterpret_cast<BYTE*>(&capabilities), &size) == ERROR_SUCCESS &&
           type == REG_DWORD && (capabilities & PLUGIN_TYPE_MASK) == PLUGIN_TYPE_BACKGROUND;
}

std::vector<CLSID> registeredPlugins() {
    std::vector<CLSID> result;
    const UniqueRegKey plugins = openKey(HKEY_LOCAL_MACHINE, PLUGIN_INSTALLREGKEY);
    if (!plugins) return result;
    wchar_t name[256];
    for (DWORD index = 0;; ++index) {
        DWORD length = static_cast<DWORD>(std::size(name));
        if (RegEnumKeyExW(plugins.get(), index, name, &length, nullptr, nullptr, nullptr,
                          nullptr) != ERROR_SUCCESS)
            return result;
        CLSID clsid{};
        if (isBackgroundPlugin(plugins.get(), name) && SUCCEEDED(CLSIDFromString(name, &clsid)))
            result.push_back(clsid);
    }
}

std::string textOf(const CLSID& clsid) {
    wchar_t text[64] = {};
    StringFromGUID2(clsid, text, static_cast<int>(std::size(text)));
    return toUtf8(text);
}

// The file of an in-process server, as registered; empty when there is none.
std::wstring serverPath(const CLSID& clsid) {
    const std::wstring name = L"CLSID\\" + toWide(textOf(clsid)) + L"\\InprocServer32";
    wchar_t path[1024] = {};
    DWORD size = sizeof(path) - sizeof(wchar_t);
    const UniqueRegKey key = openKey(HKEY_CLASSES_ROOT, name.c_str());
    if (!key || RegQueryValueExW(key.get(), nullptr, nullptr, nullptr,
                                 reinterpret_cast<BYTE*>(path), &size) != ERROR_SUCCESS)
        return {};
    return path;
}

}  // namespace

std::string describe(HRESULT result) {
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", static_cast<unsigned long>(result));
    return text;
}

void PluginHost::load(const CLSID& clsid) {
    const std::string name = textOf(clsid);
    CComPtr<IUnknown> created;
    const HRESULT result = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER,
                                            __uuidof(IUnknown), reinterpret_cast<void**>(&created));
    if (FAILED(result)) {
        report("plug-in " + name + " could not be created: " + describe(result));
        return;
    }
    const CComQIPtr<IWMPPluginUI> plugin(created);
    if (!plugin) {
        report("plug-in " + name + " is no player plug-in: it lacks IWMPPluginUI");
        return;
    }
    created.Release();
    report("plug-in " + name + " created");
    // Listed first: the plug-in may pump messages, and with them a request to close the player.
    m_plugins.push_back({clsid, plugin});
    report("plug-in " + name + " SetCore(core): " + describe(plugin->SetCore(m_core)));
}

size_t PluginHost::loadRegistered() {
    for (const CLSID& clsid : registeredPlugins()) {
        const bool known = std::any_of(m_plugins.begin(), m_plugins.end(),
                                       [&](const Plugin& p) { return p.clsid == clsid; });
        if (!known) load(clsid);
    }
    return m_plugins.size();
}

bool PluginHost::mayClose() {
    for (const Plugin& plugin : std::vector<Plugin>(m_plugins)) {
        VARIANT answer{};
        const HRESULT result = plugin.object->GetProperty(L"QueryDestroy", &answer);
        const std::wstring text =
            result == S_OK && answer.vt == VT_BSTR ? textOf(answer.bstrVal) : std::wstring();
        VariantClear(&answer);
        if (text.empty()) continue;
        report("plug-in " + textOf(plugin.clsid) + " asks to wait: " + toUtf8(text));
        return false;
    }
    return true;
}

void PluginHost::makeSecond() {
    for (const Plugin& plugin : std::vector<Plugin>(m_plugins)) {
        CComPtr<IWMPPluginUI> second;
        const HRESULT result =
            CoCreateInstance(plugin.clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IWMPPluginUI),
                             reinterpret_cast<void**>(&second));
        report("plug-in " + textOf(plugin.clsid) + " second object: " + describe(result));
    }
}

void PluginHost::letGo(Plugin& plugin) {
    const std::string name = textOf(plugin.clsid);
    const HRESULT result = plugin.object->SetCore(nullptr);
    report("plug-in " + name + " SetCore(null): " + describe(result));
    plugin.object.Release();
    report("plug-in " + name + " released");
    m_letGo.push_back(plugin.clsid);
}

void PluginHost::unloadAll() {
    std::vector<Plugin> plugins;
    plugins.swap(m_plugins);
    for (Plugin& plugin : plugins) letGo(plugin);
}

void PluginHost::freeModules() {
    CoFreeUnusedLibrariesEx(0, 0);
    for (const CLSID& clsid : std::exchange(m_letGo, {})) {
        const std::wstring path = serverPath(clsid);
        if (path.empty()) continue;
        const bool loaded = GetModuleHandleW(path.c_str()) != nullptr;
        report("module " + toUtf8(path) + (loaded ? " is still loaded" : " unloaded"));
    }
}

void PluginHost::send(const std::wstring& name, const std::vector<CComPtr<IUnknown>>& objects) {
    VARIANT value;
    value.vt = VT_ARRAY | VT_UNKNOWN;
    value.parray = SafeArrayCreateVector(VT_UNKNOWN, 0, static_cast<ULONG>(objects.size()));
    if (value.parray == nullptr) return report("there is not enough memory");
    for (LONG i = 0; i < std::ssize(objects); ++i)
        SafeArrayPutElement(value.parray, &i, objects[static_cast<size_t>(i)]);
    for (const Plugin& plugin : std::vector<Plugin>(m_plugins)) {
        const HRESULT result = plugin.object->SetProperty(name.c_str(), &value);
        report("SetProperty(" + toUtf8(name) + "): " + describe(result));
    }
    VariantClear(&value);
}

}  // namespace orvane::standin
