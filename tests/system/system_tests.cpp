// Player, plug-in and application as the processes that they are, with what goes wrong between
// processes: one is killed, hangs, leaves, or is not who it seems to be.

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "common/names/names.h"
#include "harness/child.h"
#include "harness/raw_server.h"
#include "harness/stall_meter.h"

namespace orvane::test {
namespace {

constexpr const char* kHello = "  event     PlayerHello ";
constexpr DWORD kReconnectMs = 2000 + 500;
constexpr const char* kLongCommand = "start trackPath=\"C:\\none.wma\"";  // to --never=playing

class SystemTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { regsvr32(L"/s OrVaneWmpPlugin.dll"); }
    static void TearDownTestSuite() { regsvr32(L"/s /u OrVaneWmpPlugin.dll"); }
    static void regsvr32(const std::wstring& arguments) {
        EXPECT_EQ(Child(L"regsvr32.exe " + arguments).exitCode(20'000), 0U);
    }

    void startApp() {
        m_app = std::make_unique<Child>(L"OrVaneApp.exe");
        ASSERT_TRUE(m_app->prints("ready: both pipes", 10'000)) << m_app->output();
    }
    void start(const std::wstring& playerOptions) {
        ASSERT_NO_FATAL_FAILURE(startApp());
        m_player = std::make_unique<Child>(L"player.exe --script=- " + playerOptions);
        ASSERT_TRUE(m_player->prints("SetCore(core): 0x00000000", 15'000)) << m_player->output();
        ASSERT_TRUE(m_app->prints(kHello, 2000)) << m_app->output();
        m_window = FindWindowW(L"WMPlayerApp", nullptr);
        ASSERT_NE(m_window, nullptr);
    }

    // Two for the application each time.
    void makeEvents(unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            m_player->tell("hide");
            m_player->tell("show");
        }
    }

    // The link comes back within its time, and works.
    void expectLink(std::size_t hellos = 1) {
        EXPECT_TRUE(m_app->prints(kHello, kReconnectMs, hellos)) << m_app->output();
        m_app->tell("getTrackCount");
        EXPECT_TRUE(m_app->prints("response  getTrackCount", 5000)) << m_app->output();
    }

    std::unique_ptr<Child> m_app;
    std::unique_ptr<Child> m_player;
    HWND m_window = nullptr;
};

TEST_F(SystemTest, TheLinkIsRestoredAfterTheApplicationIsKilled) {
    ASSERT_NO_FATAL_FAILURE(start(L"--synthetic=20000 --never=playing"));
    constexpr std::size_t underCommand = 1;
    const std::vector<std::function<void()>> moments = {
        [] { Sleep(30); },
        [&] {  // during a command that goes on while the next application waits for the plug-in
            Sleep(1250);
            m_app->tell(kLongCommand);
            Sleep(100);
        },
        [] { Sleep(2300); },  // time for a hello too many
        [&] {                 // between frames
            m_app->tell("burst 3000 getTrackCount");
            Sleep(100);
        },
        [&] {  // within a frame
            m_app->tell("slow 50 getTrackCount");
            Sleep(600);
        },
        [&] {  // while the player's thread waits for it to read
            m_app->tell("hold event");
            ASSERT_TRUE(m_app->prints("not reading", 2000));
            m_player->tell("hide");  // it hangs in this one
            m_player->tell("sendto-media all");
            Sleep(400);
        },
        [&] { makeEvents(1); },
        [&] {  // among the player's events, and commands between them
            m_app->tell("burst 3000 isPlaying");
            makeEvents(100);
            Sleep(20);
        },
        [] {},
    };
    StallMeter meter(m_window);
    for (std::size_t i = 0; i < moments.size(); ++i) {
        SCOPED_TRACE("moment " + std::to_string(i));
        ASSERT_NO_FATAL_FAILURE(moments[i]());
        m_app->kill();
        EXPECT_EQ(countOf(m_app->output(), kHello), 1U) << m_app->output();
        ASSERT_NO_FATAL_FAILURE(startApp());
        // The attempt that meets the command still running leaves the link to the next one, rather
        // than hold the player's thread until the command ends.
        const DWORD limitMs = i == underCommand ? 2 * kReconnectMs : kReconnectMs;
        EXPECT_TRUE(m_app->prints(kHello, limitMs)) << m_app->output();
        ASSERT_FALSE(m_player->exitCode(0)) << m_player->output();
    }
    expectLink();
    EXPECT_LT(meter.stop(), StallMeter::kSeenMs);
}

TEST_F(SystemTest, AnotherProgramOnTheEventPipeDoesNotBlockThePlayer) {
    ASSERT_NO_FATAL_FAILURE(start(L"--synthetic=100"));
    for (const auto way :
         {Squatter::Way::neverReads, Squatter::Way::writesGarbage, Squatter::Way::closesAtOnce}) {
        SCOPED_TRACE("way " + std::to_string(static_cast<int>(way)));
        m_app->kill();
        StallMeter meter(m_window);
        {
            const Squatter squatter(names::kEventPipe.narrow(), way);
            for (int i = 0; i < (way == Squatter::Way::neverReads ? 45 : 25); ++i) {
                makeEvents(1);
                Sleep(100);
            }
            EXPECT_GT(squatter.clients, 0U);
        }
        ASSERT_NO_FATAL_FAILURE(startApp());
        expectLink();
        EXPECT_LT(meter.stop(), StallMeter::kSeenMs);
    }
}

TEST_F(SystemTest, AHungApplicationDoesNotBlockThePlayer) {
    ASSERT_NO_FATAL_FAILURE(start(L"--synthetic=20000"));
    StallMeter meter(m_window);
    m_app->suspend(true);
    m_player->tell("sendto-media all");
    for (int i = 0; i < 45; ++i) {
        m_player->tell("move " + std::to_string(i) + " 40 800 600");
        makeEvents(1);
        Sleep(100);
    }
    // Only the list of tracks is made on that thread; the event pipe's thread writes it.
    EXPECT_LT(meter.stop(), StallMeter::kSeenMs);

    m_app->suspend(false);
    expectLink(2);
    m_player->tell("sendto-media all");
    EXPECT_TRUE(m_app->prints("more of 20000 tracks", 5000)) << m_app->output();
    EXPECT_EQ(countOf(m_app->output(), kHello), 2U);
}

TEST_F(SystemTest, ASecondObjectDoesNotAffectTheFirst) {
    ASSERT_NO_FATAL_FAILURE(start(L"--synthetic=2"));
    m_player->tell("second-object");
    EXPECT_TRUE(m_player->prints(" second object: ", 15'000)) << m_player->output();
    makeEvents(1);
    EXPECT_TRUE(m_app->prints("  event     PlayerShown", 2000)) << m_app->output();
    expectLink();
    for (const char* once : {kHello, "ready: both pipes"})
        EXPECT_EQ(countOf(m_app->output(), once), 1U) << m_app->output();
    m_player->tell("close");
    EXPECT_EQ(m_player->exitCode(5000), 0U) << m_player->output();
}

TEST_F(SystemTest, ThePlayerClosesDuringACommand) {
    const auto leave = [&](const std::wstring& options, const char* how, DWORD code) {
        SCOPED_TRACE(how);
        m_app.reset();  // pipes and mutex are free for the next
        ASSERT_NO_FATAL_FAILURE(start(L"--synthetic=100 --never=playing" + options));
        m_app->tell(kLongCommand);
        ASSERT_TRUE(m_app->prints("command   start", 2000));
        Sleep(150);
        m_player->tell(how);
        EXPECT_EQ(m_player->exitCode(5000), code) << m_player->output();
        EXPECT_TRUE(m_app->prints("disconnected: the plug-in closed it", 2000, 2))
            << m_app->output();
        // A player that just goes says nothing.
        EXPECT_EQ(countOf(m_app->output(), "  event     PlayerGoodbye "), code == 0 ? 1U : 0U);
    };
    leave(L"", "close", 0);
    leave(L" --serve-on-own-thread", "close", 0);
    leave(L"", "exit 7", 7);
}

}  // namespace
}  // namespace orvane::test
