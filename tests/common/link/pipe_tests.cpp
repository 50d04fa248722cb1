#include <gtest/gtest.h>
#include <objbase.h>

#include <algorithm>
#include <optional>
#include <thread>

#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"
#include "platform/waiting.h"
#include "tests/common/link/pipe_fixtures.h"
#include "tests/common/messages/captured_log.h"

namespace orvane {
namespace {

using namespace test;
using Strings = std::vector<std::string>;

OrvaneEvent bigEvent(int size = 1'000'000) {
    OrvaneEvent event("Big");
    event.setValue("v", juce::String::repeatedString("x", size));
    return event;
}

class PipeTest : public ::testing::Test {
protected:
    void connect() {
        ASSERT_TRUE(listener.initConnection());
        ASSERT_TRUE(server.accept());
        takeLogLines();
    }

    const juce::String name = uniquePipeName();
    RawServer server{name};
    TestListener listener{name};
};

TEST_F(PipeTest, AbsentOrTakenIsAnsweredAtOnce) {
    const juce::String absentName = uniquePipeName();
    TestListener absent(absentName);
    EXPECT_LT(millisecondsFor([&] { EXPECT_FALSE(absent.initConnection()); }), 200);
    EXPECT_TRUE(takeLogLines().empty());
    EXPECT_FALSE(absent.initConnection(50));
    EXPECT_EQ(takeLogLines(), Strings{"<7> PipeListener::initConnection: not connected to pipe " +
                                      absentName.toStdString()});
    EXPECT_FALSE(absent.isConnected());
    EXPECT_FALSE(absent.send(OrvaneEvent("e")));
    EXPECT_EQ(absent.made + absent.lost, 0);

    connect();
    TestListener second(name);
    EXPECT_LT(millisecondsFor([&] { EXPECT_FALSE(second.initConnection()); }), 200);
    EXPECT_TRUE(listener.isConnected());
}

TEST_F(PipeTest, TellsTheLogOfItsComingAndGoing) {
    const std::string quoted = "\"" + name.toStdString() + "\"";
    takeLogLines();
    ASSERT_TRUE(listener.initConnection());
    EXPECT_EQ(takeLogLines(), (Strings{"<7> Pipe " + quoted + ": connection made",
                                       "<7> PipeListener::initConnection: connected to pipe " +
                                           name.toStdString()}));
    listener.terminate();
    const std::string terminated = "<7> PipeListener: connection " + quoted + " terminated";
    EXPECT_EQ(takeLogLines(), (Strings{"<7> Pipe " + quoted + ": connection lost", terminated}));
    EXPECT_EQ(listener.lostOn, GetCurrentThreadId());
    listener.terminate();
    EXPECT_EQ(takeLogLines(), Strings{terminated});
}

TEST_F(PipeTest, SendsOneFrameAMessage) {
    connect();
    OrvaneEvent event("PlayerMaximized");
    event.setValue("Player", "wmp");
    event.setValue("PlayerRect", "10,20,800,600");
    std::thread sender([&] { EXPECT_TRUE(listener.send(event)); });
    EXPECT_EQ(server.read(8), (Bytes{0x2C, 0x9E, 0xB4, 0xF2, 0x9E, 0, 0, 0}));
    EXPECT_EQ(server.read(158), event.toPayload());
    sender.join();
    EXPECT_FALSE(listener.send(bigEvent(10'485'760))) << "longer than a frame may be";
    EXPECT_TRUE(listener.isConnected()) << "and nothing of it was written";
}

TEST_F(PipeTest, FramesOfSeveralThreadsDoNotMix) {
    connect();
    std::vector<std::thread> senders;
    senders.reserve(4);
    for (int t = 0; t < 4; ++t)
        senders.emplace_back([&, t] {
            for (int i = 0; i < 25; ++i) {
                OrvaneEvent event("E" + juce::String(t));
                event.setValue("v", juce::String::repeatedString(juce::String(t), 500 * t + i));
                EXPECT_TRUE(listener.send(event));
            }
        });
    std::vector<int> next(4, 0);
    for (int i = 0; i < 100; ++i) {
        const auto message = OrvaneMessage::parsePayload(server.readPayload());
        ASSERT_NE(message, nullptr);
        const int t = message->getName().getLastCharacter() - '0';
        EXPECT_EQ(message->getValue("v").length(), 500 * t + next[static_cast<std::size_t>(t)]++);
    }
    for (auto& sender : senders) sender.join();
}

TEST_F(PipeTest, ReadsWhateverComesAndStaysUp) {
    connect();
    for (const std::uint8_t byte : frame::encode(bytesOf("one"))) {
        ASSERT_TRUE(server.write({byte}));
        server.write({});
    }
    server.write(bytesOf("garbage!"));
    const auto tooLong = frame::encodeHeader(frame::kPayloadLimit);
    server.write({tooLong.begin(), tooLong.end()});
    const auto empty = frame::encodeHeader(0);
    server.write({empty.begin(), empty.end()});
    listener.onMessage = [] { throw std::bad_alloc(); };
    server.writeFrame("two");
    const std::string large(300'000, 'l');
    server.writeFrame(large);
    ASSERT_TRUE(eventually([&] { return listener.payloads().size() == 3; }));
    EXPECT_EQ(listener.payloads(), (Strings{"one", "two", large}));
    EXPECT_TRUE(listener.isConnected());
    EXPECT_EQ(listener.lost, 0);
}

TEST_F(PipeTest, TheApplicationGoesInTheMiddleOfAFrame) {
    connect();
    Bytes frame = frame::encode(Bytes(5'000'000, 'x'));
    frame.resize(8 + 1000);
    server.write(frame);
    FlushFileBuffers(server.get());
    server.close();
    ASSERT_TRUE(eventually([&] { return listener.lost == 1; }));
    EXPECT_EQ(listener.payloads(), Strings{std::string(1000, 'x')});
    EXPECT_FALSE(listener.isConnected());
    EXPECT_NE(listener.lostOn, GetCurrentThreadId());
    listener.terminate();
    EXPECT_EQ(listener.lost, 1);

    RawServer again(name);
    ASSERT_TRUE(listener.initConnection());
    again.writeFrame("hello");
    EXPECT_TRUE(eventually([&] { return listener.payloads().size() == 2; }));
    EXPECT_EQ(listener.made, 2);
}

TEST_F(PipeTest, TheApplicationGoesWhileItsMessageIsHandled) {
    connect();
    const UniqueHandle begun(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const UniqueHandle go(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    listener.onMessage = [&] {
        SetEvent(begun.get());
        WaitForSingleObject(go.get(), 5000);
    };
    server.writeFrame("long");
    ASSERT_EQ(WaitForSingleObject(begun.get(), 5000), WAIT_OBJECT_0);
    EXPECT_TRUE(listener.isConnected());
    server.close();
    EXPECT_FALSE(listener.isConnected()) << "nobody reads, but the other end has gone";
    SetEvent(go.get());
    EXPECT_TRUE(eventually([&] { return listener.lost == 1; }));
}

TEST_F(PipeTest, AnApplicationThatDoesNotReadCostsOneWait) {
    connect();
    const OrvaneEvent event = bigEvent();
    std::atomic<long long> otherMs{0};
    std::thread other([&] {
        Sleep(300);
        otherMs = millisecondsFor([&] { EXPECT_FALSE(listener.send(event)); });
    });
    const auto firstMs = millisecondsFor([&] { EXPECT_FALSE(listener.send(event)); });
    EXPECT_GE(firstMs, 1900);
    EXPECT_LT(firstMs, 3000);
    other.join();
    EXPECT_LT(otherMs, 2900) << "waiting for another writer counts";

    // Part of a frame may be on its way: this connection is of no more use.
    EXPECT_FALSE(listener.isConnected());
    EXPECT_LT(millisecondsFor([&] { EXPECT_FALSE(listener.send(event)); }), 500);
    EXPECT_TRUE(eventually([&] { return listener.lost == 1; }));
    listener.terminate();
    EXPECT_EQ(listener.lost, 1);
}

TEST_F(PipeTest, ClosingEndsAWriteAtOnce) {
    connect();
    std::atomic<long long> sendMs{-1};
    const OrvaneEvent event = bigEvent();
    std::thread sender(
        [&] { sendMs = millisecondsFor([&] { EXPECT_FALSE(listener.send(event)); }); });
    Sleep(300);
    EXPECT_LT(millisecondsFor([&] { listener.terminate(); }), 1000);
    sender.join();
    EXPECT_LT(sendMs, 1500);
    EXPECT_EQ(listener.lost, 1);
}

// The level at which the pipe's maker may act as its client; none where that cannot be told.
std::optional<SECURITY_IMPERSONATION_LEVEL> levelGivenTo(RawServer& server) {
    if (!ImpersonateNamedPipeClient(server.get())) return std::nullopt;
    UniqueHandle token;
    const BOOL opened = OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, token.put());
    RevertToSelf();
    SECURITY_IMPERSONATION_LEVEL level{};
    DWORD size = 0;
    if (!opened ||
        !GetTokenInformation(token.get(), TokenImpersonationLevel, &level, sizeof level, &size))
        return std::nullopt;
    return level;
}

// Another program may have taken the pipe's name. It gets a token that says who we are and with
// which it can do nothing.
TEST_F(PipeTest, TheOtherEndCanOnlyIdentifyUs) {
    {
        const UniqueFile client(CreateFileW(
            ("\\\\.\\pipe\\" + name).toWideCharPointer(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
            OPEN_EXISTING, SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr));
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(client.get(), "x", 1, &written, nullptr));
        EXPECT_EQ(server.read(1), bytesOf("x"));
        if (levelGivenTo(server) != SecurityIdentification)
            GTEST_SKIP() << "this Windows gives every pipe's maker the full level (Wine does)";
    }
    server.reopen();
    connect();
    std::thread sender([&] { listener.send(OrvaneEvent("e")); });
    EXPECT_FALSE(server.readPayload().empty());
    sender.join();
    EXPECT_EQ(levelGivenTo(server), SecurityIdentification);
}

// The player may serve a command's call on the very thread that closes the pipe. What was posted to
// that thread is for the player's own loop.
TEST_F(PipeTest, ClosingServesTheRunningMessageAndWaitsForIt) {
    for (const bool apartment : {false, true}) {
        SCOPED_TRACE(apartment);
        if (apartment) CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        CountingWindow window;
        std::atomic<bool> begun{false};
        std::atomic<bool> ended{false};
        listener.onMessage = [&] {
            begun = true;
            PostMessageW(window.get(), CountingWindow::message, 0, 0);
            Sleep(100);
            EXPECT_EQ(SendMessageW(window.get(), CountingWindow::message, 0, 0), 42);
            ended = true;
        };
        window.onMessage = [&] { EXPECT_FALSE(listener.send(OrvaneEvent("e"))); };
        ASSERT_TRUE(listener.initConnection());
        server.accept();
        server.writeFrame("go");
        ASSERT_TRUE(eventually([&] { return begun.load(); }));
        listener.terminate();
        EXPECT_TRUE(ended);
        EXPECT_EQ(window.count, 1);
        server.reopen();
        if (apartment) CoUninitialize();
    }
    EXPECT_EQ(listener.lost, 2);
}

// What a command makes on the reader thread (the player's helper windows, COM's own) needs its
// messages dispatched also after the command.
TEST_F(PipeTest, TheReaderIsAnApartmentThatServesItsMessages) {
    std::unique_ptr<CountingWindow> window;
    std::atomic<int> apartment{-1};
    listener.onMessage = [&] {
        APTTYPE type{};
        APTTYPEQUALIFIER qualifier{};
        CoGetApartmentType(&type, &qualifier);
        if (window == nullptr)
            window = std::make_unique<CountingWindow>();
        else
            window = nullptr;
        apartment = type;
    };
    connect();
    server.writeFrame("make");
    ASSERT_TRUE(eventually([&] { return apartment >= 0; }));
    EXPECT_TRUE(apartment == APTTYPE_STA || apartment == APTTYPE_MAINSTA);
    DWORD_PTR answer = 0;
    EXPECT_TRUE(SendMessageTimeoutW(window->get(), CountingWindow::message, 0, 0, SMTO_NORMAL, 3000,
                                    &answer));
    PostMessageW(window->get(), CountingWindow::message, 0, 0);
    EXPECT_TRUE(eventually([&] { return window->count == 2; }));
    server.writeFrame("unmake");
    EXPECT_TRUE(eventually([&] { return listener.payloads().size() == 2; }));
}

TEST(Waiting, EndsWithTheTimeOrTheHandle) {
    const UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    for (const bool apartment : {false, true}) {
        if (apartment) CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        ResetEvent(event.get());
        PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
        const auto ms = millisecondsFor(
            [&] { EXPECT_EQ(waitServingCalls(event.get(), 150), WaitOutcome::timedOut); });
        EXPECT_GE(ms, 130);
        EXPECT_LT(ms, 2000);
        SetEvent(event.get());
        EXPECT_EQ(waitServingCalls(event.get(), INFINITE), WaitOutcome::signalled);
        if (apartment) CoUninitialize();
    }
    EXPECT_EQ(waitServingCalls(nullptr, 10), WaitOutcome::failed);
}

}  // namespace
}  // namespace orvane
