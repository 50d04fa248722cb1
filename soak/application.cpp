// The application that is there to be killed: asks without end, reads all that comes, and makes its
// pipes anew for the next plug-in.

#include <juce_core/juce_core.h>

#include <algorithm>
#include <array>
#include <random>

#include "common/messages/orvane_message.h"
#include "harness/running_app.h"
#include "soak/shared_counts.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane::soak {
namespace {

// The message, when it is whole and of that kind; null is counted as unreadable.
template <typename Kind>
const OrvaneMessage* readable(SharedCounts& counts, const OrvaneMessage* message) {
    if (message != nullptr && message->getTagName() == Kind("").getTagName()) return message;
    ++counts->unreadable;
    return nullptr;
}

void countTracks(SharedCounts& counts, const OrvaneMessage& message) {
    juce::StringArray paths;
    message.getList("trackPaths", paths);
    std::uint32_t hash = counts->tracksHash;
    for (const auto& path : paths) hash = hashPath(hash, path.toWideCharPointer());
    counts->tracksHash = hash;
    ++counts->lists;
    counts->tracks += static_cast<std::uint32_t>(paths.size());
}

}  // namespace

int runApplication(const std::wstring& name, bool deaf) {
    openlog("orvane_soak_app", LOG_PID, 0);
    setlogmask(63);  // as the plug-in does
    SharedCounts counts(name);
    const auto onEvent = [&](const OrvaneMessage* received) {
        const auto* const event = readable<OrvaneEvent>(counts, received);
        if (event == nullptr) return;
        ++counts->events;
        if (event->getName() == "CleanTracks") countTracks(counts, *event);
        if (event->getName() != "PlayerHello") return;
        ++counts->hellos;
        if (deaf) Sleep(INFINITE);
    };
    const auto onResponse = [&](const OrvaneMessage* received) {
        if (readable<OrvaneResponse>(counts, received) != nullptr) ++counts->responses;
    };
    test::RunningApp app(onEvent, onResponse);
    constexpr std::array kCommands = {"isPlaying",       "getTrackCount", "getMediaInfoFromIndex",
                                      "isInSpecialMode", "isRepeatAll",   "getCurrentMediaInfo",
                                      "noCommandAtAll"};
    std::minstd_rand random(GetCurrentProcessId() + GetTickCount());
    for (;;) {
        app.openPipes();
        // Bursts and pauses: the plug-in is at times behind, at times idle.
        for (unsigned burst = random() % 8; burst > 0; --burst) {
            OrvaneCommand command(kCommands[random() % kCommands.size()]);
            command.setValue("trackIndex", juce::String(static_cast<int>(random() % 100)));
            if (!app.commands.send(command)) break;
        }
        Sleep(random() % 8);
    }
}

}  // namespace orvane::soak
