// orvane_bench: what the plug-in costs the player, as a table. Everything is measured on the thread
// that pays: the player's own, but for the reading of commands.

#include <juce_events/juce_events.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/round_trip.h"
#include "common/link/orvane_app_connector.h"
#include "common/link/pipe_broadcaster.h"
#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"
#include "platform/atl/atlcomcli.h"
#include "plugin/server.h"
#include "plugin/wmp_plugin.h"
#include "standins/player/player.h"
#include "util/log/log.h"
#include "util/shared_log/shared_log.h"

namespace orvane::bench {
namespace {

using Clock = std::chrono::steady_clock;
using Work = std::function<void()>;

constexpr int kPathCount = 20'000;

std::string inUnits(double nanoseconds) {
    char text[32];
    if (nanoseconds < 1e3)
        std::snprintf(text, sizeof(text), "%.0f ns", nanoseconds);
    else if (nanoseconds < 1e6)
        std::snprintf(text, sizeof(text), "%.1f us", nanoseconds / 1e3);
    else
        std::snprintf(text, sizeof(text), "%.2f ms", nanoseconds / 1e6);
    return text;
}

// `repeats`: how often in one sample, for what is too short for the clock. `settle` is not timed.
void measure(
    const char* what, int samples, int repeats, const Work& work, const Work& settle = [] {}) {
    std::vector<double> times;
    for (int i = -1; i < samples; ++i) {
        const auto start = Clock::now();
        for (int r = 0; r < repeats; ++r) work();
        const std::chrono::duration<double, std::nano> took = Clock::now() - start;
        settle();
        if (i >= 0) times.push_back(took.count() / repeats);  // the first warms up
    }
    std::sort(times.begin(), times.end());
    const auto at = [&](std::size_t percent) { return times[(times.size() - 1) * percent / 100]; };
    std::printf("%-62s %7d %11s %11s\n", what, samples, inUnits(at(50)).c_str(),
                inUnits(at(95)).c_str());
    std::fflush(stdout);
}

void require(bool holds, const char* what) {
    if (!holds) throw std::runtime_error(what);
}

// The application's end of a pipe: reads and counts.
class ReadingEnd final : public PipeBroadcaster {
public:
    explicit ReadingEnd(const juce::String& name) : PipeBroadcaster(name) {
        require(initConnection(), "a pipe is taken; end the application first");
    }
    ~ReadingEnd() override { closeForGood(); }
    void messageReceived(std::span<const std::uint8_t>) override { ++m_count; }

    void waitFor(unsigned count) const {
        for (int i = 0; m_count < count; ++i) {
            require(i < 5000, "an event did not arrive");
            Sleep(1);
        }
    }
    [[nodiscard]] unsigned count() const { return m_count; }

private:
    std::atomic<unsigned> m_count{0};
};

struct RunningApp {
    ReadingEnd events{"IpcOrvaneEventPipe"};
    ReadingEnd commands{"IpcOrvaneCommandPipe"};
};

class LogMask {
public:
    explicit LogMask(unsigned mask) : m_former(setlogmask(mask)) {}
    ~LogMask() { setlogmask(m_former); }
    LogMask(const LogMask&) = delete;
    LogMask& operator=(const LogMask&) = delete;

private:
    unsigned m_former;
};

constexpr unsigned kUsual = 63;                           // the plug-in's
constexpr unsigned kWithoutErrors = kUsual & ~(1U << 3);  // LOG_ERR

void measureLog() {
    measure("one log line, written", 300, 1, [] {
        syslog(LOG_ERR, "%s: m_ep->initConnection failed", "OrvaneAppConnector::connect");
    });
    measure("one log line, masked", 100, 100'000,
            [] { syslog(LOG_DEBUG, "COrVaneWmpPlugin: open state=%d", 3); });
}

void measureLink() {
    const juce::ScopedJuceInitialiser_GUI juce;
    OrvaneAppConnector connector(nullptr);
    const auto attempt = [&] { require(!connector.connect(), "an application is running"); };
    measure("reconnect attempt, nobody there, with its two log lines", 200, 1, attempt);
    {
        const LogMask mask(kWithoutErrors);
        measure("reconnect attempt, nobody there, without log lines", 200, 1, attempt);
    }

    juce::StringArray paths;
    for (int i = 0; i < kPathCount; ++i)
        paths.add("C:\\Users\\Somebody\\Music\\Artist " + juce::String(i / 120) + "\\Album " +
                  juce::String(i / 12 % 10) + "\\" + juce::String(i % 12 + 1) + " The Title.wma");

    const RunningApp app;
    require(connector.connect(), "the connector does not connect");
    unsigned sent = 0;
    measure(
        "cleanTracks: 20,000 paths built, written, sent", 40, 1,
        [&] { connector.cleanTracks("wmp", paths); }, [&] { app.events.waitFor(++sent); });

    OrvaneEvent event("CleanTracks");
    event.setValue("Player", "wmp");
    event.addList("trackPaths", paths);
    const auto payload = event.toPayload();
    measure("the same decoded, parsed, getList", 40, 1, [&] {
        const auto message = OrvaneMessage::parsePayload(payload);
        juce::StringArray read;
        require(
            message != nullptr && message->getList("trackPaths", read) && read.size() == kPathCount,
            "the list did not come back");
    });
    std::printf("%-62s %23.2f MB\n", "(size of that document)",
                static_cast<double>(payload.size()) / 1e6);
}

void measurePlugin(unsigned items) {
    standin::PlayerOptions options;
    options.synthetic = items;
    standin::Player player(options);
    std::string error;
    require(player.openLibrary(error) && player.createWindow(), "the player does not start");
    const RunningApp app;
    const UniqueHandle running(CreateMutexW(nullptr, FALSE, L"OrVaneApp_Process"));

    CComPtr<IClassFactory> factory;
    CComPtr<IWMPPluginUI> object;
    require(SUCCEEDED(getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory,
                                     reinterpret_cast<void**>(&factory))) &&
                SUCCEEDED(factory->CreateInstance(nullptr, __uuidof(IWMPPluginUI),
                                                  reinterpret_cast<void**>(&object))) &&
                SUCCEEDED(object->SetCore(player.core())),
            "the plug-in does not start");
    auto& plugin = static_cast<COrVaneWmpPlugin&>(*object.p);
    app.events.waitFor(1);

    const auto index = static_cast<LONG>(items / 2);
    const std::string of = " of " + std::to_string(items) + " items";
    const auto find = [&] {
        CComPtr<IWMPMediaCollection> collection;
        CComPtr<IWMPPlaylist> all;
        CComPtr<IWMPMedia> media;
        require(SUCCEEDED(player.core()->get_mediaCollection(&collection)) &&
                    SUCCEEDED(collection->getAll(&all)) &&
                    SUCCEEDED(all->get_Item(index, &media)) && media,
                "the player does not find the item");
        return media;
    };
    measure(("the player's own getAll and get_Item" + of).c_str(), 200, 1, [&] { find(); });
    measure(("getMediaInfoFromIndex" + of).c_str(), 200, 1, [&] {
        juce::StringPairArray metadata;
        require(plugin.getMediaInfoFromIndex(index, metadata, {}), "the item is not read");
    });

    CComBSTR path;
    find()->get_sourceURL(&path);
    require(SUCCEEDED(player.core()->put_URL(path)), "the item is not opened");
    unsigned sent = app.events.count();
    measure(("PlayStateChange(3), the track read and sent" + of).c_str(), 200, 1,
            [&] { plugin.PlayStateChange(wmppsPlaying); }, [&] { app.events.waitFor(++sent); });

    object->SetCore(nullptr);
}

int run(bool linkOnly) {
    const standin::ComApartment com;
    openlog("orvane_bench", LOG_PID, 0);
    const LogMask mask(kUsual);
    if (linkOnly) {
        measureBesideBareCalls();
        return 0;
    }
    std::printf("%-62s %7s %11s %11s\n", "", "samples", "median", "p95");
    measureLog();
    measureLink();
    measureBesideBareCalls();
    measurePlugin(100);
    measurePlugin(50'000);
    return 0;
}

}  // namespace
}  // namespace orvane::bench

// With "link": only what the link costs beside the bare calls.
int main(int argc, char** argv) {
    try {
        return orvane::bench::run(argc == 2 && std::strcmp(argv[1], "link") == 0);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "error: %s\n", e.what());
        return 1;
    }
}
