#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <thread>

#include "platform/atl/atlcom.h"
#include "plugin/server.h"
#include "plugin/wmp_plugin.h"
#include "standins/player/model.h"
#include "standins/player/player.h"
#include "tests/plugin/fake_app.h"

namespace orvane::test {

const std::string kHello = "PlayerHello Player=wmp";
const std::string kGoodbye = "PlayerGoodbye Player=wmp";

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
    // Those of the core, the holder's own one among them.
    [[nodiscard]] ULONG coreReferences() const {
        core()->AddRef();
        return core()->Release();
    }
};

// All that the plug-in meets in a player, on the test's thread: the main window, the player, and
// the application at the other end of the pipes. Objects are made as the player makes them.
class PluginTest : public testing::Test {
protected:
    PluginTest() {
        m_options.synthetic = 2;
        m_options.startDelayMs = m_options.stopDelayMs = m_options.pauseDelayMs = 10;
    }
    ~PluginTest() override {
        if (m_plugin) m_plugin->SetCore(nullptr);
        m_plugin.Release();
        m_player.reset();
        EXPECT_EQ(standin::liveObjects(), 0) << "an object of the player's was not given back";
        EXPECT_EQ(canUnloadNow(), S_OK) << "an object was left behind";
    }

    static HRESULT create(IUnknown* outer, REFIID iid, void** object) {
        CComPtr<IClassFactory> factory;
        const HRESULT result = getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory,
                                              reinterpret_cast<void**>(&factory));
        return FAILED(result) ? result : factory->CreateInstance(outer, iid, object);
    }
    void createPlugin() {
        ASSERT_EQ(create(nullptr, __uuidof(IWMPPluginUI), reinterpret_cast<void**>(&m_plugin)),
                  S_OK);
    }
    // The player as m_options say.
    void openPlayer() {
        m_player = std::make_unique<TestPlayer>(m_options);
        std::string error;
        ASSERT_TRUE(m_player->openLibrary(error)) << error;
    }
    // The same with the plug-in at work in it, whose hello is read; the one reference to it is
    // m_plugin, as if the player kept none of its listeners.
    void start() {
        openPlayer();
        ASSERT_NO_FATAL_FAILURE(createPlugin());
        ASSERT_EQ(m_plugin->SetCore(m_player->core()), S_OK);
        m_player->model().sinks.clear();
        ASSERT_EQ(eventNames(1), Names{"PlayerHello"});
    }

    // The plug-in's events; not counted.
    [[nodiscard]] IWMPEvents* sink() const { return CComQIPtr<IWMPEvents>(m_plugin); }

    // An operation as the command pipe's thread runs it, while the player's thread lives on.
    template <typename Result>
    Result command(Result (COrVaneWmpPlugin::*operation)()) {
        return command([&](COrVaneWmpPlugin& plugin) { return (plugin.*operation)(); });
    }
    template <typename Operation>
    auto command(Operation operation) {
        auto& plugin = *static_cast<COrVaneWmpPlugin*>(m_plugin.p);
        std::optional<decltype(operation(plugin))> result;
        std::atomic<bool> done{false};
        std::thread thread([&] {
            CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            result = operation(plugin);
            CoUninitialize();
            done = true;
        });
        EXPECT_TRUE(pumpUntil([&] { return done.load(); }, 20'000));
        thread.join();
        return *result;
    }

    // What arrived since the last call, once there are so many; a moment longer shows whether
    // there are more.
    std::vector<OrvaneMessage> events(std::size_t expected) {
        m_app->events.messages(expected);
        pumpFor(60);
        const auto found = m_app->events.messages();
        m_app->forget();
        return found;
    }
    Names eventNames(std::size_t expected) {
        Names names;
        for (const OrvaneMessage& event : events(expected)) {
            EXPECT_EQ(event.getValue("Player"), "wmp");
            names.push_back(event.getName().toStdString());
        }
        return names;
    }

    standin::ComApartment m_apartment;
    std::unique_ptr<PlayerWindow> m_window = std::make_unique<PlayerWindow>();
    std::unique_ptr<FakeApp> m_app = std::make_unique<FakeApp>();
    standin::PlayerOptions m_options;
    std::unique_ptr<TestPlayer> m_player;
    CComPtr<IWMPPluginUI> m_plugin;
};

}  // namespace orvane::test
