// Creation, attachment to the player's core, reconnecting and release.

#include <gtest/gtest.h>

#include "tests/common/launcher/install_path.h"
#include "tests/plugin/plugin_fixture.h"

namespace orvane::test {
namespace {

using LifecycleTest = PluginTest;

// Tries to create the object; the log lines that it wrote.
std::string failedCreation(const std::function<HRESULT(void**)>& create) {
    const LogWatch log;
    void* object = &object;
    EXPECT_EQ(create(&object), E_FAIL);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(canUnloadNow(), S_OK);
    return log.added();
}

TEST_F(LifecycleTest, CreationFailsWholeAndSaysWhy) {
    const auto attempt = [] {
        return failedCreation(
            [](void** object) { return create(nullptr, __uuidof(IWMPEvents), object); });
    };

    m_window.reset();
    EXPECT_NE(attempt().find("<3> OrVaneWmpPlugin : [" + std::to_string(GetCurrentProcessId()) +
                             "] COrVaneWmpPlugin: can't install WMP window hook\n"),
              std::string::npos);
    m_app->waitForDisconnectAndReopen();

    m_window = std::make_unique<PlayerWindow>();
    m_app->closePipes();
    EXPECT_NE(attempt().find("] COrVaneWmpPlugin: can't connect to the application\n"),
              std::string::npos);
    EXPECT_FALSE(m_window->isHooked());

    m_app.reset();
    const InstallPath nowhere(L"C:\\no such folder");
    EXPECT_NE(attempt().find("] COrVaneWmpPlugin::FinalConstruct: Error launching OrVane\n"),
              std::string::npos);
}

TEST_F(LifecycleTest, ARunningApplicationIsNotLaunched) {
    const InstallPath nowhere(L"C:\\no such folder");
    const LogWatch log;
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    EXPECT_TRUE(m_window->isHooked());
    plugin.Release();
    EXPECT_FALSE(m_window->isHooked());
    EXPECT_EQ(log.added(), "");
    EXPECT_TRUE(m_app->waitForEvents(0).empty()) << "no core was ever set, so there is no goodbye";
}

TEST_F(LifecycleTest, EachCoreGetsItsHelloAndGoodbye) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    VARIANT value{};
    EXPECT_EQ(plugin->GetProperty(L"MediaSendTo", nullptr), E_POINTER);
    EXPECT_EQ(plugin->GetProperty(L"MediaSendTo", &value), E_NOTIMPL);
    EXPECT_EQ(plugin->SetCore(nullptr), S_OK);

    FakeCore first;
    FakeCore second;
    EXPECT_EQ(plugin->SetCore(&first), S_OK);
    EXPECT_NE(first.sink, nullptr);
    EXPECT_EQ(plugin->SetCore(&second), S_OK);
    EXPECT_EQ(first.unadvised, 1);
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(plugin->SetCore(nullptr), S_OK);
    EXPECT_EQ(second.unadvised, 1);
    EXPECT_EQ(second.references, 1);
    EXPECT_EQ(plugin->SetCore(nullptr), S_OK);

    EXPECT_EQ(plugin->SetCore(&first), S_OK);
    plugin.Release();
    EXPECT_EQ(first.unadvised, 2);
    EXPECT_EQ(first.references, 1);

    const Names expected{"PlayerHello",   "PlayerGoodbye", "PlayerHello",
                         "PlayerGoodbye", "PlayerHello",   "PlayerGoodbye"};
    EXPECT_EQ(m_app->waitForEvents(expected.size()), expected);
}

TEST_F(LifecycleTest, ACoreThatRefusesToReportIsHeldAllTheSame) {
    FakeCore refusing;
    refusing.adviseResult = CONNECT_E_ADVISELIMIT;
    FakeCore withoutCookie;
    withoutCookie.cookie = 0;
    FakeCore withoutPoint;
    withoutPoint.findResult = CONNECT_E_NOCONNECTION;
    FakeCore withoutContainer;
    withoutContainer.hasConnectionPoints = false;

    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    const struct {
        FakeCore* core;
        HRESULT result;
    } cases[] = {{&refusing, CONNECT_E_ADVISELIMIT},
                 {&withoutCookie, S_OK},
                 {&withoutPoint, CONNECT_E_NOCONNECTION},
                 {&withoutContainer, E_NOINTERFACE}};
    Names expected;
    for (const auto& [core, result] : cases) {
        EXPECT_EQ(plugin->SetCore(core), result);
        EXPECT_EQ(core->references, 2) << "the core, and no connection point";
        EXPECT_EQ(plugin->SetCore(nullptr), S_OK);
        EXPECT_EQ(core->references, 1);
        EXPECT_EQ(core->unadvised, 0);
        expected.insert(expected.end(), {"PlayerHello", "PlayerGoodbye"});
    }
    EXPECT_EQ(m_app->waitForEvents(expected.size()), expected);
}

TEST_F(LifecycleTest, OfSetCoreWithinSetCoreTheLaterOneCounts) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    FakeCore first;
    first.duringAdvise = [&] { plugin->SetCore(nullptr); };
    plugin->SetCore(&first);
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(first.sink, nullptr);

    // Away and back again: one subscription of the two remains.
    first.duringAdvise = [&] {
        first.duringAdvise = nullptr;
        plugin->SetCore(nullptr);
        plugin->SetCore(&first);
    };
    plugin->SetCore(&first);
    EXPECT_EQ(first.references, 3) << "the core and its connection point";

    FakeCore second;
    FakeCore third;
    first.duringUnadvise = [&] { plugin->SetCore(&third); };
    plugin->SetCore(&second);
    EXPECT_EQ(second.references, 1);
    EXPECT_EQ(third.references, 3);
    plugin.Release();
    for (const FakeCore* core : {&first, &second, &third}) {
        EXPECT_EQ(core->references, 1);
        EXPECT_EQ(core->sink, nullptr);
    }
}

TEST_F(LifecycleTest, TheLastReferenceMayGoWhileTheCoreIsLetGo) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    FakeCore core;
    ASSERT_EQ(plugin->SetCore(&core), S_OK);
    IWMPPluginUI* const raw = plugin.p;
    core.duringUnadvise = [&] { plugin.Release(); };
    EXPECT_EQ(raw->SetCore(nullptr), S_OK);
    EXPECT_EQ(core.references, 1);
    EXPECT_EQ(canUnloadNow(), S_OK);
    EXPECT_FALSE(m_window->isHooked());
    EXPECT_EQ(m_app->waitForEvents(2), (Names{"PlayerHello", "PlayerGoodbye"}));
}

TEST_F(LifecycleTest, SaysHelloOnceWhenTheApplicationComesBack) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    FakeCore core;
    ASSERT_EQ(plugin->SetCore(&core), S_OK);
    ASSERT_EQ(m_app->waitForEvents(1), Names{"PlayerHello"});

    m_app->closePipes();
    m_app->forget();
    const LogWatch log;
    pumpFor(2200);
    std::size_t attempts = 0;
    const std::string lines = log.added();
    for (auto at = lines.find("m_ep->initConnection failed"); at != std::string::npos;
         at = lines.find("m_ep->initConnection failed", at + 1))
        ++attempts;
    EXPECT_EQ(attempts, 1U) << lines;

    m_app->openPipes();
    EXPECT_EQ(m_app->waitForEvents(1, 2500), Names{"PlayerHello"});
    pumpFor(2200);
    EXPECT_EQ(m_app->waitForEvents(0), Names{"PlayerHello"}) << "and not again";

    plugin.Release();
    EXPECT_EQ(m_app->waitForEvents(2), (Names{"PlayerHello", "PlayerGoodbye"}));
}

TEST_F(LifecycleTest, ReleasedFromWithinItsTimer) {
    auto plugin = createPlugin();
    ASSERT_NE(plugin, nullptr);
    {
        // As when the player releases the object while the timer's callback waits.
        const JuceSession::CallbackScope callback;
        plugin.Release();
        EXPECT_EQ(canUnloadNow(), S_OK);
        EXPECT_TRUE(JuceSession::isUp()) << "its own callback is on the stack";
    }
    EXPECT_TRUE(pumpUntil([] { return !JuceSession::isUp(); }));

    m_app->waitForDisconnectAndReopen();
    plugin = createPlugin();
    EXPECT_TRUE(JuceSession::isUp());
}

}  // namespace
}  // namespace orvane::test
