// Loading the module and making its object beside a module that only imports what it imports.

#include <windows.h>

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
    std::optional<CountingApp> app;
    app.emplace();
    const Turns turns{.blocks = 20, .samples = 2};
    const Side bare{"a module that only imports the same: load and free",
                    [] { test::LoadedModule(L"orvane_bench_bare.dll"); }};
    compare({"load and free", [] { test::LoadedModule(); }, waitUntilGone}, bare, turns);
    compare({"load, make an object, link, let it go, free",
             [] {
                 const test::LoadedModule module;
                 require(module.createPlugin() != nullptr, "the module makes no object");
             },
             [&] {
                 waitUntilGone();
                 app.emplace();
             }},
            bare, turns);
}

}  // namespace orvane::bench
