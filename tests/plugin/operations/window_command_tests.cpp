// The commands that concern the player's window, on a plug-in object with its whole link.

#include "tests/plugin/plugin_fixture.h"

namespace orvane {
namespace {

class WindowCommands : public test::PluginTest {
protected:
    std::string answer(const char* command) {
        m_app->forget();
        // The plug-in is connected before the pipe has noticed it here.
        if (!test::pumpUntil([&] { return m_app->sendCommand(command); })) return "not sent";
        const auto responses = m_app->waitForResponses(1);
        return responses.empty() ? "no response" : responses.front();
    }
};

TEST_F(WindowCommands, SpecialModeIsASmallRestoredWindow) {
    const auto plugin = createPlugin();
    ASSERT_TRUE(plugin);
    EXPECT_EQ(answer("isInSpecialMode"), "isInSpecialMode=false");
    SetWindowPos(m_window->handle(), nullptr, 10, 10, 366, 90, SWP_NOZORDER | SWP_NOACTIVATE);
    EXPECT_EQ(answer("isInSpecialMode"), "isInSpecialMode=true");
    SetWindowPos(m_window->handle(), nullptr, 10, 10, 367, 90, SWP_NOZORDER | SWP_NOACTIVATE);
    EXPECT_EQ(answer("isInSpecialMode"), "isInSpecialMode=false");
}

TEST_F(WindowCommands, CloseAsksTheWindowAndLeavesTheRestToThePlayer) {
    const auto plugin = createPlugin();
    ASSERT_TRUE(plugin);
    const HWND window = m_window->handle();
    EXPECT_EQ(answer("close"), "close=true");
    EXPECT_TRUE(test::pumpUntil([&] { return !IsWindow(window); }));
    // Without its window the player is still there to be asked.
    EXPECT_EQ(answer("close"), "close=true");
    EXPECT_EQ(answer("isInSpecialMode"), "isInSpecialMode=false");
}

}  // namespace
}  // namespace orvane
