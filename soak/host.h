#pragma once

// The player with its guest, on the player's own thread: the stand-in player's core and window, the
// real module as a stranger loads it, and a watch on every call into it.

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

// The longest of what was timed.
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
    // False when the module is still there three seconds later.
    bool free();

    // An object that has the core; false when the module refuses to make one.
    bool create();
    void letGo();

    // Does `work` on another thread while the player is used: its events, its window, its messages.
    // What `work` throws comes out here.
    void useDuring(const std::function<void()>& work);
    // One moment of that use, a few milliseconds.
    void use();
    void pump(DWORD milliseconds);

    // "Send To" of these items.
    void send(const std::vector<CComPtr<IUnknown>>& items);
    // New items of the player with such paths.
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
