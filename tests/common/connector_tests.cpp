#include "common/orvane_app_connector.h"
#include "common/orvane_message.h"
#include "common/pipe_broadcaster.h"
#include "common/text_coding.h"
#include "tests/common/captured_log.h"
#include "tests/common/mock_plugin_methods.h"
#include "tests/common/pipe_fixtures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

namespace orvane {
namespace {

using namespace test;
using ::testing::NiceMock;
using ::testing::Return;
using Strings = std::vector<std::string>;

// Runs this thread's messages, JUCE's timers among them, until something holds.
bool pump(const std::function<bool()>& holds, DWORD timeoutMs = 3000) {
    const ULONGLONG end = GetTickCount64() + timeoutMs;
    while (!holds()) {
        if (GetTickCount64() > end) return false;
        MsgWaitForMultipleObjectsEx(0, nullptr, 10, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);)
            DispatchMessageW(&message);
    }
    return true;
}

void pumpFor(DWORD ms) {
    pump([] { return false; }, ms);
}

// The application's end of one pipe: keeps each message as "Name key=value key=value".
class AppPipe final : public PipeBroadcaster {
public:
    explicit AppPipe(const char* name) : PipeBroadcaster(name) { initConnection(); }
    ~AppPipe() override { close(); }

    void clientConnected() override { ++clients; }
    void messageReceived(std::span<const std::uint8_t> payload) override {
        const auto message = OrvaneMessage::parse(decodePayload(payload));
        if (message == nullptr) return;
        juce::String line = message->getName();
        for (const auto& [key, value] : message->getParameters())
            line << " " << key << "=" << value;
        const std::lock_guard lock(m_lock);
        m_lines.push_back(line.toStdString());
    }
    Strings lines() const {
        const std::lock_guard lock(m_lock);
        return m_lines;
    }
    void writeRaw(const std::string& document) {
        // Through a message whose name is no XML: the frame is right, the document is not.
        RawMessage raw(document);
        send(raw);
    }

    std::atomic<int> clients{0};

private:
    // Its tag name carries markup, so the document is whatever the test wants it to begin with.
    class RawMessage : public OrvaneMessage {
    public:
        explicit RawMessage(const std::string& tag) : OrvaneMessage(juce::String(tag), "x") {}
    };

    mutable std::mutex m_lock;
    Strings m_lines;
};

class ConnectorTest : public ::testing::Test {
protected:
    void SetUp() override { takeLogLines(); }

    void startApp() {
        events = std::make_unique<AppPipe>("IpcOrvaneEventPipe");
        commands = std::make_unique<AppPipe>("IpcOrvaneCommandPipe");
    }
    void link() {
        startApp();
        ASSERT_TRUE(connector->connect());
        ASSERT_TRUE(connector->isConnected());
    }
    bool eventsAre(const Strings& expected) {
        return pump([&] { return events->lines().size() >= expected.size(); }) &&
               events->lines() == expected;
    }

    const juce::ScopedJuceInitialiser_GUI m_juce;
    NiceMock<MockPluginMethods> methods;
    std::unique_ptr<AppPipe> events;
    std::unique_ptr<AppPipe> commands;
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
         "CleanTracks Player=wmp", "MouseLButtonDown Player=wmp", "PlayerGoodbye Player=wmp"}))
        << ::testing::PrintToString(events->lines());
}

TEST_F(ConnectorTest, MovesAreGatheredAndTheNewestIsSent) {
    link();
    // Dragged about before hello: waits, takes no more and more memory, and is sent once.
    for (int i = 0; i < 10'000; ++i) connector->playerMoved("wmp", i, 0, 1, 1);
    pumpFor(250);
    EXPECT_TRUE(events->lines().empty());
    connector->playerHello("wmp");
    EXPECT_TRUE(eventsAre(
        {"PlayerHello Player=wmp", "PlayerMoved Player=playerName PlayerRect=9999,0,1,1"}));

    for (int i = 1; i <= 5; ++i) connector->playerMoved("wmp", i, -2, 3, 4);
    EXPECT_TRUE(pump([&] { return events->lines().size() == 3; }));
    pumpFor(250);
    ASSERT_EQ(events->lines().size(), 3u);
    EXPECT_EQ(events->lines()[2], "PlayerMoved Player=playerName PlayerRect=5,-2,3,4");

    const ULONGLONG start = GetTickCount64();
    while (GetTickCount64() < start + 600) {
        connector->playerMoved("wmp", 7, 7, 7, 7);
        pumpFor(5);
    }
    const std::size_t sent = events->lines().size() - 3;
    EXPECT_GE(sent, 2u);
    EXPECT_LE(sent, 600u / AppConnector::movePeriodMs + 1);

    connector->playerGoodbye("wmp");
    connector->playerMoved("wmp", 8, 8, 8, 8);
    pumpFor(250);
    EXPECT_TRUE(pump([&] { return events->lines().back() == "PlayerGoodbye Player=wmp"; }));
}

TEST_F(ConnectorTest, ConnectOpensWhatIsNotOpen) {
    connector->disconnect();
    EXPECT_EQ(takeLogLines(), Strings{"<7> OrvaneAppConnector::disconnect: HERE"});

    const Strings bothFailed{"<3> OrvaneAppConnector::connect: m_ep->initConnection failed",
                             "<3> OrvaneAppConnector::connect: m_cl->initConnection failed"};
    EXPECT_FALSE(connector->connect());
    EXPECT_EQ(takeLogLines(), bothFailed);
    connector->playStopped("wmp");  // lost, quietly
    EXPECT_TRUE(takeLogLines().empty());

    events = std::make_unique<AppPipe>("IpcOrvaneEventPipe");
    EXPECT_FALSE(connector->connect());
    EXPECT_TRUE(logHolds(bothFailed[1]));
    EXPECT_FALSE(logHolds(bothFailed[0]));
    EXPECT_FALSE(connector->isConnected());

    commands = std::make_unique<AppPipe>("IpcOrvaneCommandPipe");
    EXPECT_TRUE(connector->connect());
    EXPECT_TRUE(connector->isConnected());
    EXPECT_TRUE(connector->connect());
    EXPECT_TRUE(eventually([&] { return events->clients == 1 && commands->clients == 1; }));

    connector->disconnect();
    EXPECT_FALSE(connector->isConnected());
    EXPECT_FALSE(connector->postEvent(OrvaneEvent("e")));
}

TEST_F(ConnectorTest, TheLinkComesBackWithTheApplication) {
    link();
    for (int round = 0; round < 3; ++round) {
        events.reset();
        commands.reset();
        EXPECT_TRUE(eventually([&] { return !connector->isConnected(); }));
        EXPECT_FALSE(connector->connect());
        startApp();
        EXPECT_TRUE(connector->connect());
        connector->playerShown("wmp");
        EXPECT_TRUE(eventsAre({"PlayerShown Player=wmp"}));
    }
}

TEST_F(ConnectorTest, CommandsAreAnsweredInOrderWhateverStandsBetween) {
    EXPECT_CALL(methods, getTrackCount()).WillOnce(Return(3));
    EXPECT_CALL(methods, pause()).WillOnce(Return(true));
    link();
    ASSERT_TRUE(eventually([&] { return commands->clients == 1; }));
    commands->send(OrvaneCommand("getTrackCount"));
    commands->send(OrvaneEvent("pause"));
    commands->writeRaw("no <XML");
    commands->send(OrvaneCommand("unheard of"));
    commands->send(OrvaneCommand("pause"));
    EXPECT_TRUE(eventually([&] { return commands->lines().size() == 3; }));
    EXPECT_EQ(commands->lines(),
              (Strings{"getTrackCount trackCount=3 return_value=true",
                       "unheard of return_value=false", "pause return_value=true"}));
    EXPECT_TRUE(connector->isConnected());
    const Strings lines = takeLogLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(),
                         "<3> CommandListener: command parsing error occured"),
              2);
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) {
                                return line.find("XML parsing error occured") != std::string::npos;
                            }),
              1);

    // Nothing comes on the event pipe; what does anyway is dropped.
    ASSERT_TRUE(eventually([&] { return events->clients == 1; }));
    EXPECT_TRUE(events->send(OrvaneCommand("close")));
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
    ASSERT_TRUE(eventually([&] { return commands->clients == 1; }));
    commands->send(OrvaneCommand("stop"));
    ASSERT_TRUE(eventually([&] { return begun.load(); }));
    connector.reset();
    EXPECT_EQ(playerWindow.count, 1);
    EXPECT_TRUE(eventsAre({"PlayerShown Player=wmp", "PlayStopped Player=wmp"}))
        << ::testing::PrintToString(events->lines());
}

// The timer tries every two seconds on the player's thread, for as long as the application is away.
TEST_F(ConnectorTest, AnAttemptWithNobodyThereIsCheap) {
    std::vector<double> milliseconds;
    for (int i = 0; i < 100; ++i) {
        const auto start = std::chrono::steady_clock::now();
        connector->connect();
        milliseconds.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count());
    }
    takeLogLines();
    std::sort(milliseconds.begin(), milliseconds.end());
    RecordProperty("median_us", static_cast<int>(milliseconds[50] * 1000));
    // The machine may be busy with other things; what the attempt itself takes is the low end.
    EXPECT_LT(milliseconds[10], 1.0);
}

}  // namespace
}  // namespace orvane
