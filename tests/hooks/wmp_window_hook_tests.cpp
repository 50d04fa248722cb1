#include "hooks/wmp_window_hook.h"

#include <gmock/gmock.h>

#include "tests/hooks/recording_events.h"
#include "tests/support/captured_log.h"
#include "tests/support/test_window.h"

namespace orvane {
namespace {

using test::CapturedLog;
using test::RecordingEvents;
using test::TestWindow;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

class WmpWindowHookTest : public testing::Test {
protected:
    void SetUp() override {
        ShowWindow(m_window.hwnd(), SW_SHOWNORMAL);
        ASSERT_TRUE(m_hook.InstallHook());
        ASSERT_EQ(m_hook.getHwnd(), m_window.hwnd());
    }

    std::vector<std::string> after(int width, int height) {
        m_events.take();
        SetWindowPos(m_window.hwnd(), nullptr, 0, 0, width, height,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        return m_events.take();
    }
    std::vector<std::string> afterSending(UINT message, WPARAM wParam) {
        m_events.take();
        m_window.send(message, wParam);
        return m_events.take();
    }
    std::vector<std::string> afterShowing(int command) {
        m_events.take();
        ShowWindow(m_window.hwnd(), command);
        return m_events.take();
    }

    TestWindow m_window{L"WMPlayerApp", L"Windows Media Player"};
    RecordingEvents m_events;
    WmpWindowHook m_hook{&m_events};
};

TEST(WmpWindowHook, NeedsThePlayersMainWindow) {
    TestWindow otherClass{L"WMPlayerApp2", L"Windows Media Player"};
    RecordingEvents events;
    WmpWindowHook hook(&events);
    CapturedLog log;
    EXPECT_FALSE(hook.InstallHook());
    EXPECT_THAT(log.take(), HasSubstr("can't find window with class 'WMPlayerApp' and caption "
                                      "'Windows Media Player'"));
    EXPECT_FALSE(hook.isInSpecialMode());
}

TEST(WmpWindowHook, FindsTheMainWindowInEveryLanguageAndPrefersItsEnglishCaption) {
    RecordingEvents events;
    WmpWindowHook hook(&events);
    for (const wchar_t* caption : {L"Lecteur Windows Media", L"Reproductor de Windows Media",
                                   L"Windows Media Player Legacy", L""}) {
        TestWindow window{L"WMPlayerApp", caption};
        ASSERT_TRUE(hook.InstallHook()) << testing::PrintToString(caption);
        EXPECT_EQ(hook.getHwnd(), window.hwnd());
    }
    const TestWindow english{L"WMPlayerApp", L"Windows Media Player"};
    const TestWindow inFront{L"WMPlayerApp", L"Lecteur Windows Media"};
    ASSERT_TRUE(hook.InstallHook());
    EXPECT_EQ(hook.getHwnd(), english.hwnd());
}

TEST_F(WmpWindowHookTest, ReportsSpecialModeWhenItChanges) {
    EXPECT_THAT(after(300, 80), ElementsAre("playerMoved 100,100,300,80", "special"));
    EXPECT_TRUE(m_hook.isInSpecialMode());
    EXPECT_THAT(after(366, 90), ElementsAre("playerMoved 100,100,366,90"));
    EXPECT_THAT(after(367, 90), ElementsAre("playerMoved 100,100,367,90", "not special"));
    EXPECT_THAT(after(366, 91), ElementsAre("playerMoved 100,100,366,91"));
    EXPECT_FALSE(m_hook.isInSpecialMode());
    EXPECT_THAT(after(366, 90), ElementsAre("playerMoved 100,100,366,90", "special"));
    // Maximised, the small window is not small, and minimised neither.
    ShowWindow(m_window.hwnd(), SW_MAXIMIZE);
    EXPECT_FALSE(m_hook.isInSpecialMode());
    ShowWindow(m_window.hwnd(), SW_MINIMIZE);
    EXPECT_FALSE(m_hook.isInSpecialMode());
}

TEST_F(WmpWindowHookTest, StartsFromTheModeItFinds) {
    m_hook.RemoveHook();
    after(300, 80);
    ASSERT_TRUE(m_hook.InstallHook());
    EXPECT_THAT(after(310, 80), ElementsAre("playerMoved 100,100,310,80"));
}

TEST_F(WmpWindowHookTest, ReportsMovesOfARestoredWindowOnly) {
    SetWindowPos(m_window.hwnd(), nullptr, -40, 7, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    EXPECT_THAT(m_events.take(), ElementsAre("playerMoved -40,7,800,600"));

    EXPECT_THAT(afterShowing(SW_MAXIMIZE), Contains(StartsWith("playerMaximized ")));
    RECT full{};
    GetWindowRect(m_window.hwnd(), &full);
    const std::string area = std::to_string(full.left) + "," + std::to_string(full.top) + "," +
                             std::to_string(full.right - full.left) + "," +
                             std::to_string(full.bottom - full.top);
    EXPECT_THAT(afterSending(WM_SIZE, SIZE_MAXIMIZED), ElementsAre("playerMaximized " + area));
    EXPECT_THAT(afterSending(WM_MOVE, 0), IsEmpty());

    const auto minimised = afterShowing(SW_MINIMIZE);
    EXPECT_THAT(minimised, Contains("playerMinimized"));
    EXPECT_THAT(minimised, Not(Contains(StartsWith("playerMoved"))));
    EXPECT_THAT(afterSending(WM_MOVE, 0), IsEmpty());
}

TEST_F(WmpWindowHookTest, ReportsShowingHidingAndActivation) {
    EXPECT_THAT(afterShowing(SW_HIDE), Contains("playerHidden"));
    EXPECT_THAT(afterShowing(SW_SHOW), Contains("playerShown"));
    EXPECT_THAT(afterSending(WM_ACTIVATE, WA_CLICKACTIVE), ElementsAre("playerActivated"));
    EXPECT_THAT(afterSending(WM_ACTIVATE, WA_INACTIVE), IsEmpty());
    EXPECT_THAT(afterSending(WM_ACTIVATE, MAKEWPARAM(WA_INACTIVE, 1)), IsEmpty()) << "minimised";
    EXPECT_THAT(afterSending(WM_SIZE, SIZE_MAXSHOW), IsEmpty());
    EXPECT_THAT(afterSending(WM_SIZE, SIZE_MAXHIDE), IsEmpty());
}

}  // namespace
}  // namespace orvane
