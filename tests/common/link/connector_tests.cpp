#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

#include "common/link/orvane_app_connector.h"
#include "common/messages/orvane_message.h"
#include "tests/common/link/pipe_fixtures.h"
#include "tests/common/messages/captured_log.h"
#include "tests/common/messages/mock_plugin_methods.h"
#include "tests/plugin/fake_app.h"

namespace orvane {
namespace {

using namespace test;
using ::testing::NiceMock;
using ::testing::Return;
using Strings = std::vector<std::string>;

class ConnectorTest : public ::testing::Test {
protected:
    void link() {
        app.openPipes();
        ASSERT_TRUE(connector->connect());
        ASSERT_TRUE(connector->isConnected());
        takeLogLines();
    }
    bool eventsAre(const Strings& expected) {
        return app.events.lines(expected.size()) == expected;
    }

    const juce::ScopedJuceInitialiser_GUI m_juce;
    NiceMock<MockPluginMethods> methods;
    FakeApp app;
    std::unique_ptr<OrvaneAppConnector> connector = std::make_unique<OrvaneAppConnector>(&methods);
};

TEST_F(ConnectorTest, EachHappeningIsOneEvent) {
    link();
    connector->playerHello("wmp");
    connector->playerMaximized("wmp", -4, -8, 1936, 1056);
    connector->playerMinimized("wmp");
    connector->playerHidden("wmp");
    connector->playerShown("wmp");
    connector->playerInSpecialMode("wmp", true);
    connector->playerInSpecialMode("wmp", false);
    connector->playerActivated("wmp");
    connector->playStarted("wmp", "t", "a", "al", "g", "f", "y", "n");
    connector->playStopped("wmp");
    connector->playPaused("wmp");
    connector->cleanTracks("wmp", {"C:\\a.mp3", "D:\\b & c.wma"});
    connector->cleanTracks("wmp", {});
    connector->mouseLButtonDown("wmp");
    connector->playerGoodbye("wmp");
    const std::string started =
        "PlayStarted Player=wmp TrackTitle=t TrackArtist=a AlbumTitle=al Genre_2=g Filename=f "
        "Year=y TrackNumber=n";
    EXPECT_TRUE(eventsAre(
        {"PlayerHello Player=wmp", "PlayerMaximized Player=wmp PlayerRect=-4,-8,1936,1056",
         "PlayerMinimized Player=wmp", "PlayerHidden Player=wmp", "PlayerShown Player=wmp",
         "PlayerInSpecialMode Player=wmp inSpecialMode=true",
         "PlayerInSpecialMode Player=wmp inSpecialMode=false", "PlayerActivated Player=wmp",
         started, "PlayStopped Player=wmp", "PlayStopped Player=wmp",
         "CleanTracks Player=wmp trackPaths0=C:\\a.mp3 trackPaths1=D:\\b & c.wma",
         "CleanTracks Player=wmp", "MouseLButtonDown Player=wmp", "PlayerGoodbye Player=wmp"}));
}

TEST_F(ConnectorTest, MovesAreGatheredAndTheNewestIsSent) {
    link();
    // Dragged about before hello: waits, takes no more and more memory, and is sent once.
    for (int i = 0; i < 10'000; ++i) connector->playerMoved("wmp", i, 0, 1, 1);
    pumpFor(160);
    EXPECT_TRUE(app.events.lines().empty());
    connector->playerHello("wmp");
    EXPECT_TRUE(eventsAre(
        {"PlayerHello Player=wmp", "PlayerMoved Player=playerName PlayerRect=9999,0,1,1"}));

    for (int i = 1; i <= 5; ++i) connector->playerMoved("wmp", i, -2, 3, 4);
    EXPECT_TRUE(pumpUntil([&] { return app.events.lines().size() == 3; }));
    pumpFor(160);
    ASSERT_EQ(app.events.lines().size(), 3u);
    EXPECT_EQ(app.events.lines()[2], "PlayerMoved Player=playerName PlayerRect=5,-2,3,4");

    connector->playerGoodbye("wmp");
    connector->playerMoved("wmp", 8, 8, 8, 8);
    pumpFor(160);
    EXPECT_EQ(app.events.lines(4).back(), "PlayerGoodbye Player=wmp");
}

TEST_F(ConnectorTest, ConnectOpensWhatIsNotOpen) {
    app.closePipes();
    takeLogLines();
    connector->disconnect();
    EXPECT_EQ(takeLogLines(), Strings{"<7> OrvaneAppConnector::disconnect: HERE"});

    const Strings bothFailed{"<3> OrvaneAppConnector::connect: m_ep->initConnection failed",
                             "<3> OrvaneAppConnector::connect: m_cl->initConnection failed"};
    EXPECT_FALSE(connector->connect());
    EXPECT_EQ(takeLogLines(), bothFailed);
    connector->playStopped("wmp");  // lost, quietly
    EXPECT_TRUE(takeLogLines().empty());

    app.events.initConnection();
    EXPECT_FALSE(connector->connect());
    EXPECT_TRUE(logHolds(bothFailed[1]));
    EXPECT_FALSE(logHolds(bothFailed[0]));
    EXPECT_FALSE(connector->isConnected());

    app.commands.initConnection();
    EXPECT_TRUE(connector->connect());
    EXPECT_TRUE(connector->isConnected());
    EXPECT_TRUE(connector->connect());
    EXPECT_TRUE(app.events.isConnected() && app.commands.isConnected()) << "as they were";

    connector->disconnect();
    EXPECT_FALSE(connector->isConnected());
    EXPECT_FALSE(connector->postEvent(OrvaneEvent("e")));
}

TEST_F(ConnectorTest, TheLinkComesBackWithTheApplication) {
    link();
    for (int round = 0; round < 3; ++round) {
        app.closePipes();
        app.forget();
        EXPECT_TRUE(eventually([&] { return !connector->isConnected(); }));
        EXPECT_FALSE(connector->connect());
        app.openPipes();
        EXPECT_TRUE(connector->connect());
        connector->playerShown("wmp");
        EXPECT_TRUE(eventsAre({"PlayerShown Player=wmp"}));
    }
}

TEST_F(ConnectorTest, CommandsAreAnsweredInOrderWhateverStandsBetween) {
    EXPECT_CALL(methods, getTrackCount()).WillOnce(Return(3));
    EXPECT_CALL(methods, pause()).WillOnce(Return(true));
    link();
    app.commands.deliver(OrvaneCommand("getTrackCount"));
    app.commands.deliver(OrvaneEvent("pause"));
    app.commands.deliver(OrvaneMessage("no <XML", "x"));  // its tag makes it none
    app.commands.deliver(OrvaneCommand("unheard of"));
    app.commands.deliver(OrvaneCommand("pause"));
    EXPECT_EQ(app.commands.lines(3),
              (Strings{"getTrackCount trackCount=3 return_value=true",
                       "unheard of return_value=false", "pause return_value=true"}));
    EXPECT_TRUE(connector->isConnected());
    const Strings lines = takeLogLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "<3> CommandListener: command parsing error occured"),
              2);

    // Nothing comes on the event pipe; what does anyway is dropped.
    EXPECT_TRUE(app.events.deliver(OrvaneCommand("close")));
    connector->playerShown("wmp");
    EXPECT_TRUE(eventsAre({"PlayerShown Player=wmp"}));
}

// The player lets go of everything while a command is running that needs the player's thread, and
// the player's window procedure goes on reporting meanwhile.
TEST_F(ConnectorTest, GoesAwayUnderARunningCommand) {
    link();
    CountingWindow playerWindow;
    OrvaneAppConnector* const going = connector.get();
    playerWindow.onMessage = [going] {
        going->playerMoved("wmp", 1, 2, 3, 4);
        going->playerShown("wmp");
        EXPECT_FALSE(going->connect());
        going->isConnected();
    };
    std::atomic<bool> begun{false};
    EXPECT_CALL(methods, stop()).WillOnce([&] {
        begun = true;
        Sleep(150);
        EXPECT_EQ(SendMessageW(playerWindow.get(), CountingWindow::message, 0, 0), 42);
        going->playStopped("wmp");
        return true;
    });
    app.sendCommand("stop");
    ASSERT_TRUE(eventually([&] { return begun.load(); }));
    connector.reset();
    EXPECT_EQ(playerWindow.count, 1);
    EXPECT_TRUE(eventsAre({"PlayerShown Player=wmp", "PlayStopped Player=wmp"}));
}

// A command hangs in a call of the player's when the player lets go. It is left behind with what it
// uses, and the next link is there before it ends.
TEST_F(ConnectorTest, LeavesACommandBehindThatDoesNotEnd) {
    const UniqueHandle begun(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle go(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    EXPECT_CALL(methods, stop()).WillOnce([&] {
        SetEvent(begun.get());
        return WaitForSingleObject(go.get(), 20'000) == WAIT_OBJECT_0;
    });
    std::weak_ptr<void> kept;
    connector = std::make_unique<OrvaneAppConnector>(&methods, [&] {
        const std::shared_ptr<void> owner = std::make_shared<int>();
        EXPECT_TRUE(kept.expired());
        kept = owner;
        return owner;
    });
    link();
    app.sendCommand("stop");
    ASSERT_EQ(WaitForSingleObject(begun.get(), 5000), WAIT_OBJECT_0);
    takeLogLines();
    const auto waited = millisecondsFor([&] { connector.reset(); });
    EXPECT_GE(waited, Pipe::kClosePatienceMs - 100);
    EXPECT_LT(waited, Pipe::kClosePatienceMs + 2000);
    EXPECT_TRUE(
        logHolds("<3> Pipe \"IpcOrvaneCommandPipe\": a message is still being handled; its "
                 "thread stays until it ends"));
    EXPECT_FALSE(kept.expired());

    app.waitForDisconnectAndReopen();
    connector = std::make_unique<OrvaneAppConnector>(&methods);
    EXPECT_TRUE(connector->connect());
    EXPECT_CALL(methods, pause()).WillOnce(Return(true));
    app.sendCommand("pause");
    EXPECT_EQ(app.commands.lines(1), Strings{"pause return_value=true"});
    EXPECT_FALSE(kept.expired());
    SetEvent(go.get());
    EXPECT_TRUE(eventually([&] { return kept.expired(); }));
}

// The application dies in the middle of a command: the player's thread does not wait for its end.
TEST_F(ConnectorTest, ComesBackAfterTheCommandThatTheApplicationLeftBehind) {
    const UniqueHandle begun(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle go(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    EXPECT_CALL(methods, stop()).WillOnce([&] {
        SetEvent(begun.get());
        return WaitForSingleObject(go.get(), 10'000) == WAIT_OBJECT_0;
    });
    link();
    app.sendCommand("stop");
    ASSERT_EQ(WaitForSingleObject(begun.get(), 5000), WAIT_OBJECT_0);
    app.closePipes();
    EXPECT_LT(millisecondsFor([&] { EXPECT_FALSE(connector->connect()); }), 1000);
    app.openPipes();
    EXPECT_LT(millisecondsFor([&] { EXPECT_FALSE(connector->connect()); }), 1000);
    SetEvent(go.get());
    EXPECT_TRUE(eventually([&] { return connector->connect(); }));
    EXPECT_CALL(methods, pause()).WillOnce(Return(true));
    app.sendCommand("pause");
    EXPECT_EQ(app.commands.lines(1), Strings{"pause return_value=true"});
}

// The timer tries every two seconds on the player's thread, for as long as the application is away.
TEST_F(ConnectorTest, AnAttemptWithNobodyThereIsCheap) {
    std::vector<double> milliseconds;
    app.closePipes();
    for (int i = 0; i < 100; ++i) {
        const auto start = std::chrono::steady_clock::now();
        connector->connect();
        milliseconds.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count());
    }
    takeLogLines();
    std::sort(milliseconds.begin(), milliseconds.end());
    // The machine may be busy with other things; what the attempt itself takes is the low end.
    EXPECT_LT(milliseconds[10], 1.0);
}

}  // namespace
}  // namespace orvane
