#pragma once

// The player's side of its plug-ins: finds the registered background plug-ins, creates them with
// COM on the player's own thread, gives them the core and takes it back. That thread only.

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/wmp_plugin_ui.h"
#include "standins/player/com_support.h"

namespace orvane::standin {

class PluginHost {
public:
    // `core` is not counted and outlives the host.
    explicit PluginHost(IWMPCore* core) : m_core(core) {}
    ~PluginHost() { unloadAll(); }
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    // One line for each thing done.
    std::function<void(const std::string&)> report = [](const std::string&) {};

    // Creates each registered background plug-in that is not there yet and gives it the core. One
    // that cannot be created is reported and left out. Returns how many are there.
    size_t loadRegistered();
    // The same with one class that COM knows, registered or not.
    void load(const CLSID& clsid);
    // Asks each plug-in as "QueryDestroy" whether it may go now; false when one answers with a
    // text, which is for the user: it is at work on a file.
    bool mayClose();
    // A second object of each plug-in beside the first, without a core, as for its property page,
    // released at once.
    void makeSecond();
    // SetCore(null) and release. Safe inside a message of the main window, which the plug-in may
    // have subclassed: no module goes.
    void unloadAll();
    // Frees the modules that are no longer in use and reports on those of the plug-ins let go.
    // Never from inside a plug-in's own code.
    void freeModules();

    // SetProperty on every plug-in, as "MediaSendTo" and "PlaylistSendTo" give their value: a safe
    // array of interface pointers, null ones allowed.
    void send(const std::wstring& name, const std::vector<CComPtr<IUnknown>>& objects);

private:
    struct Plugin {
        CLSID clsid;
        CComPtr<IWMPPluginUI> object;
    };
    void letGo(Plugin& plugin);

    IWMPCore* m_core;
    std::vector<Plugin> m_plugins;
    std::vector<CLSID> m_letGo;
};

std::string describe(HRESULT result);  // "0x80004005"

}  // namespace orvane::standin
