#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <thread>

#include "harness/running_app.h"
#include "harness/waiting.h"
#include "platform/atl/atlcom.h"
#include "plugin/server.h"
#include "plugin/wmp_plugin.h"
#include "tests/plugin/test_player.h"

namespace orvane::test {

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
        const long strayed = standin::usesOnOtherThreads().exchange(0);
        EXPECT_TRUE(strayed == 0 || !standin::kOtherThreadsRefused)
            << strayed << " uses of the player's objects on other threads";
    }

    static CComPtr<IClassFactory> classFactory() {
        CComPtr<IClassFactory> factory;
        EXPECT_EQ(getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory,
                                 reinterpret_cast<void**>(&factory)),
                  S_OK);
        return factory;
    }
    template <typename Object>
    static HRESULT create(Object** object, IUnknown* outer = nullptr) {
        return classFactory()->CreateInstance(outer, __uuidof(Object),
                                              reinterpret_cast<void**>(object));
    }
    // The player as m_options say, and an object that has no core yet.
    void open() {
        m_player = std::make_unique<TestPlayer>(m_options);
        std::string error;
        ASSERT_TRUE(m_player->openLibrary(error)) << error;
        ASSERT_EQ(create(&m_plugin), S_OK);
    }
    // The same with its core, and the hello read.
    void start() {
        ASSERT_NO_FATAL_FAILURE(open());
        ASSERT_EQ(m_player->attach(m_plugin), S_OK);
        ASSERT_EQ(lines(1), Names{kHello});
    }

    // The plug-in's events; not counted.
    [[nodiscard]] IWMPEvents* sink() const { return CComQIPtr<IWMPEvents>(m_plugin); }

    // An operation as the command pipe's thread runs it, while the player's thread lives on.
    template <typename... Parameters, typename Result, typename... Arguments>
    Result command(Result (COrVaneWmpPlugin::*operation)(Parameters...), Arguments&&... arguments) {
        Result result{};
        std::atomic<bool> done{false};
        std::thread thread([&] {
            CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            result = (static_cast<COrVaneWmpPlugin*>(m_plugin.p)->*operation)(arguments...);
            CoUninitialize();
            done = true;
        });
        EXPECT_TRUE(pumpUntil([&] { return done.load(); }, 20'000));
        thread.join();
        return result;
    }

    // What arrived since the last call, once there are so many; a moment longer shows whether
    // there are more.
    std::vector<OrvaneMessage> events(std::size_t expected) {
        m_app->events.messages(expected);
        pumpFor(60);
        auto found = m_app->events.messages();
        m_app->forget();
        return found;
    }
    Names lines(std::size_t expected) {
        Names lines;
        for (const auto& event : events(expected)) lines.push_back(lineOf(event));
        return lines;
    }

    standin::ComApartment m_apartment;
    std::unique_ptr<PlayerWindow> m_window = std::make_unique<PlayerWindow>();
    std::unique_ptr<RunningApp> m_app = std::make_unique<RunningApp>();
    standin::PlayerOptions m_options;
    std::unique_ptr<TestPlayer> m_player;
    CComPtr<IWMPPluginUI> m_plugin;
};

}  // namespace orvane::test
