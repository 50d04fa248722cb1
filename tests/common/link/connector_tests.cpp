#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "common/link/orvane_app_connector.h"
#include "common/messages/orvane_message.h"
#include "harness/process_state.h"
#include "harness/recording_methods.h"
#include "harness/running_app.h"
#include "tests/common/link/pipe_fixtures.h"
#include "tests/support/captured_log.h"
#include "tests/support/counted_memory.h"
#include "tests/support/test_window.h"

namespace orvane {
namespace {

using namespace test;
using Strings = std::vector<std::string>;

// Keeps what would be sent, and has no pipe below it.
class RecordingConnector final : public AppConnector {
public:
    RecordingConnector() : AppConnector({}) {}

    bool connect() override { return true; }
    void disconnect() override {}
    bool isConnected() override { return true; }
    bool postEvent(const OrvaneEvent& event) override { return tryPostEvent(event).sent; }
    Pipe::Sending tryPostEvent(const OrvaneEvent& event) override {
        const std::size_t size = event.toPayload().size();
        if (size >= frame::kPayloadLimit) return {false, size};
        events.push_back(event);
        if (onEvent) onEvent();
        return {true, 0};
    }
    Strings lines() {
        Strings lines;
        for (const OrvaneEvent& event : std::exchange(events, {})) lines.push_back(lineOf(event));
        return lines;
    }

    std::vector<OrvaneEvent> events;
    std::function<void()> onEvent;
};

// The others are in the protocol's page, which a test compares with what is sent.
TEST(AppConnectorTest, APauseIsReportedAsAStopAndAnEmptySelectionToo) {
    RecordingConnector connector;
    connector.playerInSpecialMode("wmp", false);
    connector.playPaused("wmp");
    connector.cleanTracks("wmp", {});
    EXPECT_EQ(connector.lines(), (Strings{"PlayerInSpecialMode Player=wmp inSpecialMode=false",
                                          "PlayStopped Player=wmp", "CleanTracks Player=wmp"}));
}

// Ticks come through this thread's message loop, and only while a position waits.
TEST(AppConnectorTest, TheNewestMoveIsSentOncePerPeriod) {
    RecordingConnector connector;
    const auto sentWithin = [&](DWORD milliseconds) {
        pumpUntil([&] { return !connector.events.empty(); }, milliseconds);
        return connector.lines();
    };
    // Dragged about before hello: waits, takes no more and more memory, and is sent once.
    const std::size_t before = memoryInUse();
    for (int i = 0; i < 10'000; ++i) connector.playerMoved("wmp", i, 0, 1, 1);
    EXPECT_LT(memoryInUse(), before + 20'000);
    EXPECT_EQ(sentWithin(150), Strings{});
    connector.playerHello("wmp");
    EXPECT_EQ(connector.lines(), Strings{"PlayerHello Player=wmp"});
    EXPECT_GE(millisecondsFor([&] {
                  EXPECT_EQ(sentWithin(1000),
                            Strings{"PlayerMoved Player=playerName PlayerRect=9999,0,1,1"});
              }),
              AppConnector::kMovePeriodMs - 20);

    connector.playerMoved("wmp", 1, -2, 3, 4);
    connector.playerMoved("wmp", 2, -2, 3, 4);
    connector.onEvent = [&] {
        connector.onEvent = nullptr;
        connector.playerMoved("wmp", 3, -2, 3, 4);  // waits for the next tick
    };
    EXPECT_EQ(sentWithin(1000), Strings{"PlayerMoved Player=playerName PlayerRect=2,-2,3,4"});
    // Goodbye comes in the middle of a tick, with another position waiting.
    connector.onEvent = [&] {
        connector.onEvent = nullptr;
        connector.playerMoved("wmp", 4, 4, 4, 4);
        connector.playerGoodbye("wmp");
    };
    EXPECT_EQ(sentWithin(1000), (Strings{"PlayerMoved Player=playerName PlayerRect=3,-2,3,4",
                                         "PlayerGoodbye Player=wmp"}));
    connector.playerMoved("wmp", 5, 5, 5, 5);
    EXPECT_EQ(sentWithin(200), Strings{});
}

TEST(AppConnectorTest, ASelectionThatDoesNotFitGoesInSeveralWholeEvents) {
    RecordingConnector connector;
    CapturedLog log;
    juce::StringArray paths;
    // Short ones first; then ones that grow to five times their length as they are written.
    for (int i = 0; i < 150'000; ++i)
        paths.add("C:\\" + juce::String(i) + juce::String::repeatedString("&", i / 4000));
    connector.cleanTracks("wmp", paths);
    EXPECT_GE(connector.events.size(), 2U);
    EXPECT_LE(connector.events.size(), 8U);
    juce::StringArray all;
    for (const OrvaneEvent& event : connector.events) {
        juce::StringArray part;
        EXPECT_TRUE(event.getList("trackPaths", part));
        EXPECT_EQ(event.getValue("Player"), "wmp");
        all.addArray(part);
    }
    EXPECT_TRUE(all == paths);

    connector.events.clear();
    log.lines();
    connector.cleanTracks("wmp", {"a", juce::String::repeatedString("x", 11'000'000), "b"});
    EXPECT_EQ(connector.lines(), (Strings{"CleanTracks Player=wmp trackPaths0=a",
                                          "CleanTracks Player=wmp trackPaths0=b"}));
    EXPECT_EQ(log.lines(), Strings{"<3> AppConnector: CleanTracks could not be sent: a path is "
                                   "too long for a frame"});
}

class ConnectorTest : public ::testing::Test {
protected:
    void link() {
        app.openPipes();
        ASSERT_TRUE(connector->connect());
        ASSERT_TRUE(connector->isConnected());
        m_log.lines();
    }
    bool eventsAre(const Strings& expected) {
        return app.events.lines(expected.size()) == expected;
    }

    CapturedLog m_log;
    std::unique_ptr<OrvaneAppConnector> makeConnector() {
        return std::make_unique<OrvaneAppConnector>(m_shared, [this] { ++lost; });
    }

    RecordingMethods methods;
    std::shared_ptr<IOrvanePluginMethods> m_shared{&methods, [](IOrvanePluginMethods*) {}};
    std::atomic<int> lost{0};
    RunningApp app;
    std::unique_ptr<OrvaneAppConnector> connector = makeConnector();
};

TEST_F(ConnectorTest, ConnectOpensEachPipeThatIsNotOpen) {
    app.closePipes();
    m_log.lines();
    connector->disconnect();
    EXPECT_EQ(m_log.lines(), Strings{"<7> OrvaneAppConnector::disconnect: HERE"});

    const Strings bothFailed{"<3> OrvaneAppConnector::connect: m_ep->initConnection failed",
                             "<3> OrvaneAppConnector::connect: m_cl->initConnection failed"};
    EXPECT_FALSE(connector->connect());
    EXPECT_EQ(m_log.lines(), bothFailed);
    connector->playStopped("wmp");  // lost, quietly
    EXPECT_TRUE(m_log.lines().empty());

    app.events.initConnection();
    EXPECT_FALSE(connector->connect());
    EXPECT_TRUE(m_log.holds(bothFailed[1]));
    EXPECT_FALSE(m_log.holds(bothFailed[0]));
    EXPECT_FALSE(connector->isConnected());

    app.commands.initConnection();
    EXPECT_TRUE(connector->connect());
    EXPECT_TRUE(connector->isConnected());
    EXPECT_TRUE(connector->connect());
    EXPECT_TRUE(app.events.isConnected() && app.commands.isConnected()) << "as they were";
    EXPECT_EQ(lost, 0);

    m_log.lines();
    connector->playStarted("wmp", juce::String::repeatedString("x", 10'500'000), "", "", "", "", "",
                           "");
    const Strings lines = m_log.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].find("<3> OrvaneAppConnector::postEvent: an event of 10500"), 0U);
    EXPECT_TRUE(connector->isConnected()) << "and nothing of it was written";

    connector->disconnect();
    EXPECT_FALSE(connector->isConnected());
    EXPECT_FALSE(connector->postEvent(OrvaneEvent("e")));
    EXPECT_EQ(lost, 2);
}

// Somebody else's pipes, and then somebody else's client: each reason is told once.
TEST_F(ConnectorTest, AFailureReasonIsLoggedOnceUntilItChanges) {
    app.closePipes();
    RawServer events("IpcOrvaneEventPipe"), commands("IpcOrvaneCommandPipe");
    for (RawServer* server : {&events, &commands})
        ASSERT_TRUE(server->reopen("O:S-1-5-21-1-2-3-1234D:(A;;GA;;;WD)"));
    m_log.lines();
    EXPECT_FALSE(connector->connect());
    EXPECT_EQ(m_log.lines().size(), 4U);
    for (RawServer* server : {&events, &commands})
        ASSERT_TRUE(server->reopen("O:S-1-5-21-1-2-3-1234D:(A;;GA;;;WD)"));
    EXPECT_FALSE(connector->connect());
    EXPECT_EQ(m_log.lines().size(), 2U);
    EXPECT_FALSE(connector->connect()) << "both have had a client, and are busy";
    EXPECT_TRUE(
        m_log.holds("<3> PipeListener: pipe \"IpcOrvaneEventPipe\" cannot be opened: error 231"));
    m_log.lines();
    EXPECT_FALSE(connector->connect());
    EXPECT_EQ(m_log.lines().size(), 2U);
}

// A burst that no pipe could take at once: nothing waits, all of it arrives, and in its order.
TEST_F(ConnectorTest, TenThousandEventsArriveInOrderAndGoodbyeLast) {
    link();
    connector->playerHello("wmp");
    Strings expected{"PlayerHello Player=wmp"};
    for (int i = 0; i < 10'000; ++i) {
        connector->playerMaximized("wmp", i, 0, 1, 1);
        expected.push_back("PlayerMaximized Player=wmp PlayerRect=" + std::to_string(i) + ",0,1,1");
    }
    connector->playerGoodbye("wmp");
    expected.push_back("PlayerGoodbye Player=wmp");
    EXPECT_EQ(app.events.lines(expected.size(), 30'000), expected);
}

// Every two seconds, for days: nothing may stay of a link that was lost.
TEST_F(ConnectorTest, ReconnectsAfterManyLosses) {
    int threads = 0;
    int handles = 0;
    std::size_t memory = 0;
    for (int round = 0; round < 200; ++round) {
        link();
        connector->playerShown("wmp");
        ASSERT_TRUE(eventsAre({"PlayerShown Player=wmp"}));
        app.sendCommand("pause");
        ASSERT_EQ(app.commands.lines(1), Strings{"pause return_value=true"});
        app.closePipes();
        app.forget();
        ASSERT_TRUE(eventually([&] { return !connector->isConnected(); }));
        ASSERT_FALSE(connector->connect());
        m_log.lines();
        if (round != 10) continue;
        threads = ProcessState::now().threads;
        handles = ProcessState::now().handles;
        memory = memoryInUse();
    }
    EXPECT_TRUE(eventually([&] { return ProcessState::now().threads <= threads; }));
    EXPECT_LE(ProcessState::now().handles, handles + 5);
    EXPECT_LE(memoryInUse(), memory + 2'000);
    EXPECT_GT(handles, 0);
}

TEST_F(ConnectorTest, LogsNonCommandsAndDropsDataOnTheEventPipe) {
    link();
    app.commands.deliver(OrvaneEvent("pause"));
    app.commands.deliver(OrvaneMessage("no <XML", "x"));  // its tag makes it none
    app.commands.deliver(OrvaneCommand("pause"));
    EXPECT_EQ(app.commands.lines(1), Strings{"pause return_value=true"});
    const Strings lines = m_log.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "<3> CommandListener: command parsing error occured"),
              2);
    EXPECT_TRUE(app.events.deliver(OrvaneCommand("close")));
    connector->playerShown("wmp");
    EXPECT_TRUE(eventsAre({"PlayerShown Player=wmp"}));
    EXPECT_EQ(methods.lastCall, "pause()");
}

// The player lets go of everything while a command is running that needs the player's thread, and
// the player's window procedure goes on reporting meanwhile.
TEST_F(ConnectorTest, IsDestroyedWhileACommandRuns) {
    link();
    AnsweringWindow playerWindow;
    OrvaneAppConnector* const going = connector.get();
    playerWindow.inside = [going] {
        going->playerMoved("wmp", 1, 2, 3, 4);
        going->playerShown("wmp");
        going->isConnected();
    };
    Signal begun;
    methods.onCall = [&](const std::string&) {
        begun.give();
        Sleep(100);
        EXPECT_EQ(playerWindow.send(AnsweringWindow::kMessage), 42);
        going->playStopped("wmp");
    };
    app.sendCommand("stop");
    ASSERT_TRUE(begun.await());
    connector.reset();
    EXPECT_EQ(playerWindow.reached, 1);
    EXPECT_TRUE(eventsAre({"PlayerShown Player=wmp", "PlayStopped Player=wmp"}));
}

// A command hangs when the application is killed and started again: four seconds later the next
// link is there, and the result that comes late goes nowhere.
TEST_F(ConnectorTest, AHungCommandDoesNotBlockARestartedApplication) {
    Signal begun;
    Signal go;
    methods.onCall = [&](const std::string& call) {
        if (call != "stop()") return;
        begun.give();
        go.await(20'000);
    };
    link();
    app.sendCommand("stop");
    ASSERT_TRUE(begun.await());
    app.closePipes();
    app.forget();
    ASSERT_TRUE(eventually([&] { return !connector->isConnected(); }));
    app.openPipes();
    const auto start = GetTickCount64();
    const auto longest = [&] {
        long long most = 0;
        for (bool up = false; !up && GetTickCount64() - start < 10'000; Sleep(50))
            most = std::max(most, millisecondsFor([&] { up = connector->connect(); }));
        return most;
    }();
    EXPECT_TRUE(connector->isConnected());
    EXPECT_GE(GetTickCount64() - start, Pipe::kClosePatienceMs - 100);
    EXPECT_LT(GetTickCount64() - start, Pipe::kClosePatienceMs + 1000);
    EXPECT_LT(longest, 100) << "nobody waits for it";
    const std::string leftBehind =
        "<3> Pipe \"IpcOrvaneCommandPipe\": a message is still being handled; its thread stays "
        "until it ends";
    EXPECT_TRUE(m_log.holds(leftBehind));
    EXPECT_EQ(m_shared.use_count(), 2);
    app.sendCommand("pause");
    EXPECT_EQ(app.commands.lines(1), Strings{"pause return_value=true"});
    go.give();
    EXPECT_TRUE(eventually([&] { return m_shared.use_count() == 1; }));
    EXPECT_EQ(app.commands.lines(), Strings{"pause return_value=true"});
}

// A command hangs in a call of the player's when the player lets go: closing waits four seconds.
TEST_F(ConnectorTest, ClosingDoesNotWaitForACommandThatDoesNotEnd) {
    Signal begun;
    Signal go;
    methods.onCall = [&](const std::string&) {
        begun.give();
        go.await(20'000);
    };
    link();
    app.sendCommand("stop");
    ASSERT_TRUE(begun.await());
    const auto waited = millisecondsFor([&] {
        connector->disconnect();
        connector.reset();  // does not wait a second time
    });
    EXPECT_GE(waited, 3900);
    EXPECT_LT(waited, 6000);
    EXPECT_EQ(m_shared.use_count(), 2) << "what it uses is still there";
    go.give();
    EXPECT_TRUE(eventually([&] { return m_shared.use_count() == 1; }));
}

}  // namespace
}  // namespace orvane
