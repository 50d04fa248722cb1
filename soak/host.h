#pragma once

// The stand-in player with the real module loaded, on the player's own thread. Measures the
// duration of every call into the module.

#include <windows.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "harness/loaded_module.h"
#include "platform/atl/atlcomcli.h"
#include "standins/player/player.h"

namespace orvane::soak {

// The longest measured duration, and what took so long.
struct Longest {
    double ms = 0;
    std::string what;
    void take(double took, const char* name) {
        if (took <= ms) return;
        ms = took;
        what = name;
    }
};

class Host {
public:
    explicit Host(unsigned seed);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void load();
    // False when the module is still loaded three seconds later.
    bool free();

    // Creates the plug-in object and passes it the core; false when the creation fails.
    bool create();
    void letGo();

    // Runs `work` on another thread and meanwhile uses the player: events, window, messages.
    // Rethrows the exception of `work`.
    void useDuring(const std::function<void()>& work);
    // Uses the player for a few milliseconds.
    void use();
    void pump(DWORD milliseconds);

    // Sends these items with "Send To".
    void send(const std::vector<CComPtr<IUnknown>>& items);
    // Creates items of the player with these paths.
    std::vector<CComPtr<IUnknown>> makeItems(const std::vector<std::wstring>& paths);

    [[nodiscard]] HWND window() const { return m_player.window(); }
    std::minstd_rand& random() { return m_random; }
    Longest longest;      // call into the plug-in that the player's thread made
    bool selects = true;  // whether use() sends selections

private:
    template <typename Call>
    auto timed(const char* name, Call call);

    std::minstd_rand m_random;
    const standin::ComApartment m_com;
    standin::Player m_player;
    std::vector<CComPtr<IUnknown>> m_some;  // items for selections now and then
    std::optional<test::LoadedModule> m_module;
    CComPtr<IWMPPluginUI> m_plugin;
    CComPtr<IWMPEvents> m_events;
};

}  // namespace orvane::soak
