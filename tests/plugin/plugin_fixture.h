#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "platform/atl/atlcom.h"
#include "plugin/server.h"
#include "plugin/wmp_plugin.h"
#include "standins/player/player.h"
#include "tests/plugin/fake_app.h"
#include "tests/plugin/fake_core.h"
#include "tests/support/in_tree.h"

namespace orvane::test {

// Application and player's window are there; objects are made as the player makes them.
class PluginTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr)));
        m_window = std::make_unique<PlayerWindow>();
        m_app = std::make_unique<FakeApp>();
    }
    void TearDown() override {
        m_app.reset();
        m_window.reset();
        EXPECT_EQ(canUnloadNow(), S_OK) << "an object was left behind";
        OleUninitialize();
    }

    static HRESULT create(IUnknown* outer, REFIID iid, void** object) {
        CComPtr<IClassFactory> factory;
        const HRESULT result = getClassObject(CLSID_OrVaneWmpPlugin, IID_IClassFactory,
                                              reinterpret_cast<void**>(&factory));
        return FAILED(result) ? result : factory->CreateInstance(outer, iid, object);
    }

    static CComPtr<IWMPPluginUI> createPlugin() {
        CComPtr<IWMPPluginUI> plugin;
        EXPECT_EQ(create(nullptr, __uuidof(IWMPPluginUI), reinterpret_cast<void**>(&plugin)), S_OK);
        return plugin;
    }

    std::unique_ptr<PlayerWindow> m_window;
    std::unique_ptr<FakeApp> m_app;
};

// The whole road: a real player's objects over the sample tracks, and the plug-in attached.
class LinkedPluginTest : public PluginTest {
protected:
    void SetUp() override {
        PluginTest::SetUp();
        standin::PlayerOptions options;
        options.library = testData();
        options.startDelayMs = options.stopDelayMs = options.pauseDelayMs = 10;
        m_player = std::make_unique<standin::Player>(options);
        std::string error;
        ASSERT_TRUE(m_player->openLibrary(error)) << error;
        m_plugin = createPlugin();
        ASSERT_EQ(m_plugin.QueryInterface(&m_sink), S_OK);
        ASSERT_EQ(m_plugin->SetCore(m_player->core()), S_OK);
        ASSERT_EQ(eventNames(1), Names{"PlayerHello"});
    }
    void TearDown() override {
        if (m_plugin) m_plugin->SetCore(nullptr);
        m_sink.Release();
        m_plugin.Release();
        m_player.reset();
        PluginTest::TearDown();
    }

    // The player's sample track with that file name.
    [[nodiscard]] CComPtr<IWMPMedia> mediaOf(const std::wstring& fileName) const {
        for (std::size_t i = 0; i < m_player->itemCount(); ++i)
            if (m_player->itemPath(i).ends_with(L"\\" + fileName)) return m_player->item(i);
        ADD_FAILURE() << "no such sample";
        return {};
    }
    [[nodiscard]] std::wstring pathOf(const std::wstring& fileName) const {
        CComBSTR path;
        if (const auto media = mediaOf(fileName)) media->get_sourceURL(&path);
        return path.Length() > 0 ? std::wstring(path) : std::wstring();
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

    std::unique_ptr<standin::Player> m_player;
    CComPtr<IWMPPluginUI> m_plugin;
    CComPtr<IWMPEvents> m_sink;
};

}  // namespace orvane::test
