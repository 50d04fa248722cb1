// What the plug-in costs a player that plays, and one that does nothing.

#include "standins/player/player.h"

#include <windows.h>

#include <cstdio>
#include <string>

#include "bench/counting_app.h"
#include "bench/rows.h"
#include "platform/atl/atlcomcli.h"
#include "plugin/server.h"
#include "plugin/wmp_plugin.h"

namespace orvane::bench {
namespace {

// The stand-in player with a library of items without files, the plug-in in it, linked.
class LinkedPlayer {
public:
    explicit LinkedPlayer(unsigned items) : m_player(options(items)) {
        std::string error;
        require(m_player.openLibrary(error) && m_player.createWindow(),
                "the player does not start");
        CComPtr<IClassFactory> factory;
        require(SUCCEEDED(getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory,
                                         reinterpret_cast<void**>(&factory))) &&
                    SUCCEEDED(factory->CreateInstance(nullptr, __uuidof(IWMPPluginUI),
                                                      reinterpret_cast<void**>(&m_object))) &&
                    SUCCEEDED(m_object->SetCore(m_player.core())),
                "the plug-in does not start");
        app.waitForNext();
    }
    ~LinkedPlayer() { m_object->SetCore(nullptr); }
    LinkedPlayer(const LinkedPlayer&) = delete;
    LinkedPlayer& operator=(const LinkedPlayer&) = delete;

    [[nodiscard]] standin::Player& player() { return m_player; }
    [[nodiscard]] COrVaneWmpPlugin& plugin() { return static_cast<COrVaneWmpPlugin&>(*m_object.p); }

    CountingApp app;

private:
    static standin::PlayerOptions options(unsigned items) {
        standin::PlayerOptions result;
        result.synthetic = items;
        return result;
    }

    standin::Player m_player;
    CComPtr<IWMPPluginUI> m_object;
};

// Nanoseconds of processor time of all threads of this process.
double processorTime() {
    FILETIME unused{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &unused, &unused, &kernel, &user);
    const auto ticks = [](const FILETIME& time) {
        return (static_cast<double>(time.dwHighDateTime) * 4294967296.0 + time.dwLowDateTime) * 100;
    };
    return ticks(kernel) + ticks(user);
}

}  // namespace

void measurePlayer(unsigned items) {
    LinkedPlayer linked(items);
    standin::Player& player = linked.player();
    const auto index = static_cast<LONG>(items / 2);
    const std::string of = ", " + std::to_string(items) + " items";
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
    const Turns turns{.blocks = 40, .samples = 5};
    compare({("`getMediaInfoFromIndex`" + of).c_str(),
             [&] {
                 juce::StringPairArray metadata;
                 require(linked.plugin().getMediaInfoFromIndex(index, metadata, {}),
                         "the item is not read");
             }},
            {"the player's own `getAll` and `get_Item`", [&] { find(); }}, turns);

    CComBSTR path;
    find()->get_sourceURL(&path);
    require(SUCCEEDED(player.core()->put_URL(path)), "the item is not opened");
    measure(
        {("a track starts: read and sent" + of).c_str(),
         [&] { linked.plugin().PlayStateChange(wmppsPlaying); }, [&] { linked.app.waitForNext(); }},
        turns);
}

void measureIdle() {
    constexpr unsigned kMilliseconds = 20'000;
    LinkedPlayer linked(100);
    linked.player().pumpUntil([] { return false; }, 500);  // what its start has left
    const unsigned long calls = linked.player().callCount();
    const double before = processorTime();
    int messages = 0;
    const ULONGLONG end = GetTickCount64() + kMilliseconds;
    for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64()) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            ++messages;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT,
                                    MWMO_INPUTAVAILABLE);
    }
    std::printf(
        "\nlinked and idle for %u s: %d messages on the player's thread, %lu calls into the "
        "player, %.1f ms of processor time in all threads\n",
        kMilliseconds / 1000, messages, linked.player().callCount() - calls,
        (processorTime() - before) / 1e6);
}

}  // namespace orvane::bench
