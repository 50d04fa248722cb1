// Loading the module and making its object beside a module that has JUCE in it and nothing else.

#include <windows.h>

#include <juce_events/juce_events.h>

#include <optional>

#include "bench/counting_app.h"
#include "bench/rows.h"
#include "bench/samples.h"
#include "harness/loaded_module.h"
#include "standins/player/player.h"

namespace orvane::bench {
namespace {

void waitUntilGone() { require(test::LoadedModule::isGoneSoon(), "the module stays loaded"); }

}  // namespace

void measureLoading() {
    // What an object asks for: an application, and the player's window on its own thread.
    standin::Player player({});
    require(player.createWindow(), "the player does not start");
    const juce::ScopedJuceInitialiser_GUI juce;
    std::optional<CountingApp> app;
    app.emplace();
    const Turns turns{.blocks = 20, .samples = 2};
    const Side juceAlone{"a module with JUCE alone: load and free",
                         [] { test::LoadedModule(L"orvane_bench_juce.dll"); }};
    compare({"load and free", [] { test::LoadedModule(); }, waitUntilGone}, juceAlone, turns);
    compare({"load, make an object, link, let it go, free",
             [] {
                 const test::LoadedModule module;
                 require(module.createPlugin() != nullptr, "the module makes no object");
             },
             [&] {
                 waitUntilGone();
                 app.emplace();
             }},
            juceAlone, turns);
}

}  // namespace orvane::bench
