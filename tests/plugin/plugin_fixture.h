#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "platform/atlcom.h"
#include "plugin/server.h"
#include "plugin/wmp_plugin.h"
#include "tests/plugin/fake_app.h"
#include "tests/plugin/fake_core.h"

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

using Names = std::vector<std::string>;

}  // namespace orvane::test
