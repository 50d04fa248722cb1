// The real module comes and goes: loads and unloads in a row.

#include "tests/plugin/module_fixture.h"
#include "tests/support/process_counts.h"

namespace orvane::test {
namespace {

TEST_F(ModuleTest, LoadedUsedAndUnloadedManyTimesInARow) {
    int threads = 0;
    int handles = 0;
    constexpr int rounds = 60;
    constexpr int warmUp = 5;
    for (int round = 0; round < rounds; ++round) {
        {
            const Module module;
            auto plugin = module.createPlugin();
            ASSERT_NO_FATAL_FAILURE(attach(plugin)) << round;
            // Some rounds long enough for timers and their thread to be at work.
            if (round % 20 == 0) pumpFor(120);
            if (round % 3 == 0) {
                ASSERT_EQ(plugin->SetCore(nullptr), S_OK);
            }
            plugin.Release();
            ASSERT_EQ(module.call("DllCanUnloadNow"), S_OK);
        }
        ASSERT_TRUE(isGoneSoon()) << round;
        ASSERT_FALSE(m_window.isHooked());
        ASSERT_TRUE(m_app.waitForDisconnectAndReopen()) << round;
        if (round == warmUp) {
            threads = threadsOfThisProcess();
            handles = handlesOfThisProcess();
        }
    }
    EXPECT_LE(threadsOfThisProcess(), threads);
    EXPECT_EQ(standin::liveObjects(), 1) << "the core";
    // The runtime's own four a load, and nothing beside.
    EXPECT_LE(handlesOfThisProcess() - handles, 5 * (rounds - warmUp));
}

TEST_F(ModuleTest, UnloadsAfterACreationThatFailed) {
    m_app.closePipes();
    for (int round = 0; round < 5; ++round) {
        {
            const Module module;
            EXPECT_EQ(module.createPlugin(), nullptr);
            EXPECT_EQ(module.call("DllCanUnloadNow"), S_OK);
        }
        ASSERT_TRUE(isGoneSoon()) << round;
    }
}

TEST_F(ModuleTest, IsUsedAgainAndOnAnotherThreadThanTheOneThatLoadedIt) {
    {
        std::unique_ptr<Module> module;
        std::thread([&] { module = std::make_unique<Module>(); }).join();
        // The second object finds everything shut down by the end of the first.
        for (int round = 0; round < 2; ++round) {
            auto plugin = module->createPlugin();
            ASSERT_NE(plugin, nullptr);
            m_app.closePipes();
            m_app.openPipes();
            // Only a living timer says this hello.
            EXPECT_EQ(m_app.events.lines(1, 4000), Names{"PlayerHello Player=wmp"});
            plugin.Release();
            ASSERT_TRUE(m_app.waitForDisconnectAndReopen());
        }
    }
    EXPECT_TRUE(isGoneSoon());
}

}  // namespace
}  // namespace orvane::test
