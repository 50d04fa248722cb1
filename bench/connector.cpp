// What a reconnect attempt with nobody there costs, and selections as long as whole libraries.

#include <windows.h>

#include <cstdint>
#include <vector>

#include "bench/counting_app.h"
#include "bench/rows.h"
#include "bench/samples.h"
#include "common/link/orvane_app_connector.h"
#include "common/messages/orvane_message.h"
#include "harness/raw_server.h"
#include "platform/handles.h"
#include "util/log/log.h"

namespace orvane::bench {
namespace {

constexpr int kFewPaths = 10'000;
constexpr int kManyPaths = 40'000;

juce::StringArray paths(int count) {
    juce::StringArray result;
    result.ensureStorageAllocated(count);
    for (int i = 0; i < count; ++i)
        result.add("C:\\Users\\Somebody\\Music\\Artist " + juce::String(i / 120) + "\\Album " +
                   juce::String(i / 12 % 10) + "\\" + juce::String(i % 12 + 1) + " The Title.wma");
    return result;
}

}  // namespace

void measureReconnect() {
    OrvaneAppConnector connector({});
    const auto attempt = [&] { require(!connector.connect(), "an application is running"); };
    const auto bare = [] {
        const UniqueFile pipe(CreateFileW(test::pipePath(names::kEventPipe.narrow()).c_str(),
                                          GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                          FILE_FLAG_OVERLAPPED, nullptr));
        require(!pipe, "an application is running");
    };
    const Turns turns{.blocks = 60, .samples = 5};
    compare({"a reconnect attempt, nobody there, with its two log lines", attempt},
            {"opening the missing pipe", bare}, turns);
    const unsigned mask = setlogmask(1U << LOG_EMERG);
    compare({"the same without the log lines", attempt}, {"opening the missing pipe", bare}, turns);
    setlogmask(mask);
}

void measureSelections() {
    OrvaneAppConnector connector({});
    CountingApp app;
    require(connector.connect(), "the connector does not connect");

    const auto few = paths(kFewPaths);
    const auto many = paths(kManyPaths);
    const Turns turns{.blocks = 15};
    const auto arrived = [&] { app.waitForNext(); };
    compare({"40,000 paths built, written and sent", [&] { connector.cleanTracks("wmp", many); },
             arrived},
            {"10,000 paths", [&] { connector.cleanTracks("wmp", few); }, arrived}, turns);

    const auto payload = [](const juce::StringArray& list) {
        OrvaneEvent event("CleanTracks");
        event.setValue("Player", "wmp");
        event.addList("trackPaths", list);
        return event.toPayload();
    };
    const auto fewBytes = payload(few);
    const auto manyBytes = payload(many);
    const auto read = [](const std::vector<std::uint8_t>& bytes, int count) {
        const auto message = OrvaneMessage::parsePayload(bytes);
        juce::StringArray list;
        require(message != nullptr && message->getList("trackPaths", list) && list.size() == count,
                "the list did not come back");
    };
    compare({"40,000 paths read and listed", [&] { read(manyBytes, kManyPaths); }},
            {"10,000 paths", [&] { read(fewBytes, kFewPaths); }}, turns);
}

}  // namespace orvane::bench
