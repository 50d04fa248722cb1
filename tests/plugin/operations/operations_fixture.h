#pragma once

// The plug-in object with the stand-in player's core, both in this process: the player on the
// test's thread, each operation on a thread of its own, as commands arrive.

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

#include "platform/atl/atlcom.h"
#include "plugin/server.h"
#include "plugin/wmp_plugin.h"
#include "standins/player/player.h"
#include "tests/media/track_folder.h"
#include "tests/support/captured_log.h"

namespace orvane::test {

class OperationsTest : public testing::Test {
protected:
    // Not linked to any application: only what concerns the player is there.
    OperationsTest() : m_plugin(new CComObject<COrVaneWmpPlugin>) {
        m_options.library = m_folder.path();
    }
    ~OperationsTest() override {
        m_plugin->SetCore(nullptr);
        m_plugin.Release();
        m_player.reset();
        EXPECT_EQ(canUnloadNow(), S_OK) << "an object was left behind";
    }

    // Reads the library as it is by now and hands the plug-in the player's core.
    void startPlayer() {
        m_player = std::make_unique<standin::Player>(m_options);
        std::string error;
        ASSERT_TRUE(m_player->openLibrary(error)) << error;
        m_plugin->SetCore(m_player->core());
    }

    // An operation as the command pipe's thread runs it, while the player's thread lives on.
    template <typename Result>
    Result command(Result (COrVaneWmpPlugin::*operation)()) {
        return command([&](COrVaneWmpPlugin& plugin) { return (plugin.*operation)(); });
    }
    template <typename Operation>
    auto command(Operation operation) {
        std::optional<decltype(operation(*m_plugin))> result;
        std::atomic<bool> done{false};
        std::thread thread([&] {
            EXPECT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
            result = operation(*m_plugin);
            CoUninitialize();
            done = true;
        });
        if (m_player) {
            EXPECT_TRUE(m_player->pumpUntil([&] { return done.load(); }, 20'000));
        }
        thread.join();
        return *result;
    }

    // The paths under which the library lists a track.
    [[nodiscard]] juce::String pathOf(size_t index) const {
        return juce::String(m_player->itemPath(index).c_str());
    }
    [[nodiscard]] juce::StringArray playlistNames() const {
        juce::StringArray names;
        for (const auto& name : m_player->playlistNames()) names.add(name.c_str());
        return names;
    }
    [[nodiscard]] juce::StringArray pathsIn(const wchar_t* playlist) const {
        juce::StringArray paths;
        for (const auto& path : m_player->playlistPaths(playlist)) paths.add(path.c_str());
        return paths;
    }
    void fail(const std::set<std::string>& calls) {
        m_player->change([&](standin::PlayerOptions& options) { options.failCalls = calls; });
    }

    standin::ComApartment m_apartment;
    TrackFolder m_folder;
    standin::PlayerOptions m_options;
    std::unique_ptr<standin::Player> m_player;
    CComPtr<CComObject<COrVaneWmpPlugin>> m_plugin;
};

}  // namespace orvane::test
