// Loading the module and making its object beside a module that has JUCE in it and nothing else.

#include <windows.h>

#include <juce_events/juce_events.h>

#include <optional>

#include "bench/rows.h"
#include "bench/running_app.h"
#include "bench/samples.h"
#include "platform/atl/atlcomcli.h"
#include "platform/handles.h"
#include "platform/wmp_plugin_ui.h"
#include "plugin/wmp_plugin.h"
#include "standins/player/player.h"

namespace orvane::bench {
namespace {

UniqueModule load(const wchar_t* name) {
    UniqueModule module(LoadLibraryW(name));
    require(static_cast<bool>(module), "a module beside this program does not load");
    return module;
}

// Its last thread takes it along a moment after it was freed.
void waitUntilGone() {
    for (int i = 0; GetModuleHandleW(L"OrVaneWmpPlugin.dll") != nullptr; ++i) {
        require(i < 3000, "the module stays loaded");
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        Sleep(1);
    }
}

void loadAndCreate() {
    const UniqueModule module = load(L"OrVaneWmpPlugin.dll");
    const auto classObject = reinterpret_cast<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>(
        reinterpret_cast<void*>(GetProcAddress(module.get(), "DllGetClassObject")));
    CComPtr<IClassFactory> factory;
    CComPtr<IWMPPluginUI> object;
    require(classObject != nullptr &&
                SUCCEEDED(classObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory,
                                      reinterpret_cast<void**>(&factory))) &&
                SUCCEEDED(factory->CreateInstance(nullptr, __uuidof(IWMPPluginUI),
                                                  reinterpret_cast<void**>(&object))),
            "the module makes no object");
}

}  // namespace

void measureLoading() {
    // What an object asks for: an application, and the player's window on its own thread.
    const UniqueHandle running(CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process"));
    standin::Player player({});
    require(player.createWindow(), "the player does not start");
    const juce::ScopedJuceInitialiser_GUI juce;
    std::optional<RunningApp> app;
    app.emplace();
    const Turns turns{.blocks = 20, .samples = 2};
    const Side juceAlone{"a module with JUCE alone: load and free",
                         [] { load(L"orvane_bench_juce.dll"); }};
    compare({"load and free", [] { load(L"OrVaneWmpPlugin.dll"); }, waitUntilGone}, juceAlone,
            turns);
    compare({"load, make an object, link, let it go, free", loadAndCreate,
             [&] {
                 waitUntilGone();
                 app.emplace();
             }},
            juceAlone, turns);
}

}  // namespace orvane::bench
