// orvane_bench: what the plug-in costs the player, as a table. Everything is measured on the thread
// that pays: the player's own, but for the reading of commands.

#include <cstdio>
#include <cstring>
#include <exception>

#include "bench/rows.h"
#include "bench/samples.h"
#include "standins/player/player.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace {

constexpr unsigned kUsualLevels = 63;  // the plug-in's

void run(bool linkOnly) {
    using namespace orvane;
    using namespace orvane::bench;
    const standin::ComApartment com;
    openlog("orvane_bench", LOG_PID, 0);
    setlogmask(kUsualLevels);
    printHeading();
    measureLink();
    if (linkOnly) return;
    measureLog();
    measureReconnect();
    measureSelections();
    measurePlayer(100);
    measurePlayer(50'000);
    measureLoading();
    measureIdle();
}

}  // namespace

// With "link": only what the link costs beside the bare calls.
int main(int argc, char** argv) {
    try {
        run(argc == 2 && std::strcmp(argv[1], "link") == 0);
        return 0;
    } catch (const std::exception& e) {  // of a library's
        std::fprintf(stderr, "error: %s\n", e.what());
        return 1;
    }
}
