#pragma once

#include <functional>
#include <set>
#include <string>

#include "standins/player/model.h"
#include "standins/player/player.h"
#include "tests/support/test_window.h"

namespace orvane::test {

const std::string kHello = "PlayerHello Player=wmp";
const std::string kGoodbye = "PlayerGoodbye Player=wmp";

// The player's main window: owned by the calling thread and not shown.
class PlayerWindow : public TestWindow {
public:
    PlayerWindow() : TestWindow(L"WMPlayerApp", L"Windows Media Player") {}
    [[nodiscard]] bool isHooked() const {
        return GetPropW(hwnd(), L"window_hook_this_ptr") != nullptr;
    }
    void moveTo(int left, int top) const {
        SetWindowPos(hwnd(), nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
};

// A player that a test may hold up or make fail in any call.
class TestPlayer : public standin::Player {
public:
    using Player::Player;

    // Has `act` run ahead of that call, on the thread that serves it; an answer but S_OK is the
    // call's. One at a time, until the next or until none is named.
    void during(const std::string& call = {}, const std::function<HRESULT()>& act = {}) {
        change([&](standin::PlayerOptions& options) {
            options.onCall = [call, act](const std::string& name) {
                return name == call ? act() : S_OK;
            };
        });
    }
    void fail(const std::set<std::string>& calls) {
        change([&](standin::PlayerOptions& options) { options.failCalls = calls; });
    }
    // Gives the core to the plug-in, and keeps no reference to its listener.
    HRESULT attach(IWMPPluginUI* plugin) {
        const HRESULT result = plugin == nullptr ? E_POINTER : plugin->SetCore(core());
        model().sinks.clear();
        return result;
    }
    // Those of the core, the player's own one among them.
    [[nodiscard]] ULONG coreReferences() const {
        core()->AddRef();
        return core()->Release();
    }
};

}  // namespace orvane::test
