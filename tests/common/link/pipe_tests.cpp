#include <gtest/gtest.h>
#include <objbase.h>
#include <sddl.h>

#include <algorithm>
#include <thread>

#include "common/link/pipe_trust.h"
#include "common/messages/orvane_message.h"
#include "common/messages/text_coding.h"
#include "harness/process_state.h"
#include "platform/waiting.h"
#include "tests/common/link/pipe_fixtures.h"
#include "tests/support/captured_log.h"
#include "tests/support/test_window.h"

namespace orvane {
namespace {

using namespace test;
using Strings = std::vector<std::string>;

class Apartment {
public:
    explicit Apartment(bool wanted)
        : m_entered(wanted && SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    ~Apartment() {
        if (m_entered) CoUninitialize();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

private:
    bool m_entered;
};

class PipeTest : public ::testing::Test {
protected:
    void connect() {
        ASSERT_TRUE(listener->initConnection());
        ASSERT_TRUE(server.accept());
        m_log.lines();
    }

    CapturedLog m_log;
    const juce::String name = uniquePipeName();
    const std::string quoted = "\"" + name.toStdString() + "\"";
    RawServer server{name};
    std::shared_ptr<TestListener> listener = makePipe<TestListener>(name);
};

TEST_F(PipeTest, AMissingOrUsedPipeFailsAtOnceAndIsLogged) {
    m_log.lines();
    const juce::String absentName = uniquePipeName();
    const auto absent = makePipe<TestListener>(absentName);
    EXPECT_FALSE(absent->initConnection());
    EXPECT_TRUE(m_log.lines().empty());
    EXPECT_TRUE(absent->failure().empty());
    EXPECT_FALSE(absent->initConnection(50));
    EXPECT_EQ(m_log.lines(), Strings{"<7> PipeListener::initConnection: not connected to pipe " +
                                     absentName.toStdString()});
    EXPECT_FALSE(absent->isConnected() || absent->send(OrvaneEvent("e")));
    EXPECT_EQ(absent->made + absent->lost, 0);

    ASSERT_TRUE(listener->initConnection());
    EXPECT_EQ(m_log.lines(), (Strings{"<7> Pipe " + quoted + ": connection made",
                                      "<7> PipeListener::initConnection: connected to pipe " +
                                          name.toStdString()}));
    const auto second = makePipe<TestListener>(name);
    EXPECT_FALSE(second->initConnection());
    EXPECT_EQ(second->failure(), "cannot be opened: error 231");  // busy
    EXPECT_FALSE(listener->initConnection()) << "a connection lives once";
    EXPECT_TRUE(listener->isConnected());

    listener->terminate();
    const std::string terminated = "<7> PipeListener: connection " + quoted + " terminated";
    EXPECT_EQ(m_log.lines(), (Strings{"<7> Pipe " + quoted + ": connection lost", terminated}));
    EXPECT_EQ(listener->lostOn, GetCurrentThreadId());
    listener->terminate();
    EXPECT_EQ(m_log.lines(), Strings{terminated});
    EXPECT_FALSE(listener->initConnection());
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
                EXPECT_TRUE(listener->send(event));
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

TEST_F(PipeTest, StaysConnectedWhateverBytesArrive) {
    connect();
    for (const std::uint8_t byte : frame::encode(bytesOf("one"))) {
        ASSERT_TRUE(server.write({byte}));
        server.write({});
    }
    server.write(bytesOf("garbage!"));
    for (const std::size_t length : {frame::kPayloadLimit, std::size_t{0}}) {
        const auto header = frame::encodeHeader(static_cast<std::uint32_t>(length));
        server.write({header.begin(), header.end()});
    }
    listener->onMessage = [] { throw std::bad_alloc(); };
    Bytes together = frame::encode(bytesOf("two"));
    const std::string large(300'000, 'l');
    for (const std::string& payload : {std::string("three"), large, std::string("four")}) {
        const Bytes next = frame::encode(bytesOf(payload));
        together.insert(together.end(), next.begin(), next.end());
    }
    server.write(together);
    ASSERT_TRUE(eventually([&] { return listener->payloads().size() == 5; }));
    EXPECT_EQ(listener->payloads(), (Strings{"one", "two", "three", large, "four"}));
    EXPECT_TRUE(listener->isConnected());
    EXPECT_EQ(listener->lost, 0);
}

TEST_F(PipeTest, ReconnectsAfterTheApplicationEndsInTheMiddleOfAFrame) {
    connect();
    server.writeFrame("first");
    ASSERT_TRUE(eventually([&] { return listener->payloads().size() == 1; }));
    // Both ends of the pipe and the stream's three events: whatever of it stays would keep its
    // name.
    const int unlinked = ProcessState::now().handles - 5;
    int handles = 0;
    listener->onLost = [&] { handles = ProcessState::now().handles; };
    Bytes frame = frame::encode(Bytes(5'000'000, 'x'));
    frame.resize(8 + 10'000);
    server.write(frame);
    server.closeAfterReading();
    ASSERT_TRUE(eventually([&] { return listener->lost == 1; }));
    listener->onLost = nullptr;
    EXPECT_LE(handles, unlinked) << "nothing of ours keeps the pipe's name";
    EXPECT_EQ(listener->payloads(), (Strings{"first", std::string(10'000, 'x')}));
    EXPECT_FALSE(listener->isConnected());
    EXPECT_NE(listener->lostOn, GetCurrentThreadId());
    listener->terminate();
    EXPECT_EQ(listener->lost, 1);

    ASSERT_TRUE(server.reopen());
    listener = makePipe<TestListener>(name);
    connect();
    server.writeFrame("hello");
    EXPECT_TRUE(eventually([&] { return listener->payloads().size() == 1; }));
}

TEST_F(PipeTest, TheApplicationEndsWhileItsMessageIsHandled) {
    connect();
    Signal begun;
    Signal go;
    listener->onMessage = [&] {
        begun.give();
        go.await();
    };
    server.write([] {
        Bytes two = frame::encode(bytesOf("long"));
        const Bytes next = frame::encode(bytesOf("next"));
        two.insert(two.end(), next.begin(), next.end());
        return two;
    }());
    ASSERT_TRUE(begun.await());
    EXPECT_TRUE(listener->isConnected());
    server.close();
    EXPECT_FALSE(listener->isConnected()) << "nobody reads, but the other end has gone";
    EXPECT_FALSE(listener->abandon());
    EXPECT_TRUE(server.reopen()) << "while the message is still being handled";
    EXPECT_LT(millisecondsFor([&] { listener->terminate(); }), 100);
    go.give();
    EXPECT_TRUE(eventually([&] { return listener->abandon(); }));
    EXPECT_EQ(listener->lost, 1);
    EXPECT_EQ(listener->payloads(), Strings{"long"}) << "what came before the end of the link";
}

// An event that is not taken breaks the connection two seconds later, and nobody waits for that.
TEST_F(PipeTest, AReaderThatStopsReadingDoesNotBlockTheSender) {
    connect();
    OrvaneEvent big("Big");
    big.setValue("v", juce::String::repeatedString("x", 100'000));
    const auto first = GetTickCount64();
    for (int i = 0; i < 20; ++i)
        EXPECT_LT(millisecondsFor([&] { EXPECT_TRUE(listener->send(big)); }), 100);
    ASSERT_TRUE(eventually([&] { return listener->lost == 1; }));
    EXPECT_GE(GetTickCount64() - first, Pipe::kWriteTimeoutMs - 50);
    EXPECT_NE(listener->lostOn, GetCurrentThreadId());
    EXPECT_FALSE(listener->send(big));
}

TEST_F(PipeTest, AFullQueueBreaksTheConnectionWithOneLogLine) {
    connect();
    OrvaneEvent big("Big");
    big.setValue("v", juce::String::repeatedString("x", 10'000'000));
    int queued = 0;
    while (queued < 10 && listener->send(big)) ++queued;
    EXPECT_EQ(queued, 7);  // one is being written, six more fit into 64 MiB
    EXPECT_FALSE(listener->send(big));
    EXPECT_TRUE(eventually([&] { return listener->lost == 1; }, 1000));
    const Strings lines = m_log.lines();
    EXPECT_EQ(
        std::count(lines.begin(), lines.end(),
                   "<3> Pipe " + quoted + ": too much waits to be sent; the connection is broken"),
        1);
}

// What is queued is still written, for half a second; a write that is stuck is cut off then.
TEST_F(PipeTest, ClosingWaitsHalfASecondForQueuedFrames) {
    for (const bool reads : {true, false}) {
        SCOPED_TRACE(reads);
        connect();
        OrvaneEvent event("E");
        event.setValue("v", juce::String::repeatedString("x", 100'000));
        int received = 0;
        std::thread application([&] {
            while (reads && !server.readPayload().empty()) ++received;
        });
        for (int i = 0; i < 30; ++i) EXPECT_TRUE(listener->send(event));
        const auto took = millisecondsFor([&] { listener->terminate(); });
        EXPECT_EQ(listener->lost, 1);
        EXPECT_TRUE(reads || took >= Pipe::kAnswerMs - 50);
        EXPECT_LT(took, Pipe::kAnswerMs + 300);
        application.join();
        EXPECT_EQ(received, reads ? 30 : 0);
        ASSERT_TRUE(server.reopen());
        listener = makePipe<TestListener>(name);
    }
}

// The player may serve a command's call on the very thread that closes the pipe. What was posted to
// that thread is for the player's own loop. The command is still answered, and no other begun.
TEST_F(PipeTest, ClosingServesTheRunningMessageWaitsForItAndLetsItAnswer) {
    for (const bool inApartment : {false, true}) {
        SCOPED_TRACE(inApartment);
        const Apartment apartment(inApartment);
        AnsweringWindow window;
        Signal begun;
        std::atomic<bool> ended{false};
        listener->onMessage = [&] {
            PostMessageW(window.hwnd(), AnsweringWindow::kMessage, 0, 0);
            begun.give();
            EXPECT_TRUE(eventually([&] { return !listener->isConnected(); }));
            EXPECT_EQ(window.send(AnsweringWindow::kMessage), 42);
            EXPECT_TRUE(listener->send(OrvaneEvent("answer")));
            ended = true;
        };
        window.inside = [&] { EXPECT_FALSE(listener->send(OrvaneEvent("e"))); };
        connect();
        server.writeFrame("go");
        server.writeFrame("one too many");
        ASSERT_TRUE(begun.await());
        Bytes answer;
        std::thread application([&] { answer = server.readPayload(); });
        listener->terminate();
        EXPECT_TRUE(ended);
        EXPECT_EQ(window.reached, 1);
        EXPECT_EQ(listener->lostOn, GetCurrentThreadId());
        application.join();
        EXPECT_FALSE(answer.empty());
        EXPECT_EQ(listener->payloads(), Strings{"go"});
        server.reopen();
        listener = makePipe<TestListener>(name);
    }
}

// What a command makes on the reader thread (the player's helper windows, COM's own) needs its
// messages dispatched also after the command.
TEST_F(PipeTest, TheReaderIsAnApartmentThatServesItsMessages) {
    std::unique_ptr<AnsweringWindow> window;
    std::atomic<int> apartment{-1};
    listener->onMessage = [&] {
        APTTYPE type{};
        APTTYPEQUALIFIER qualifier{};
        CoGetApartmentType(&type, &qualifier);
        window = window == nullptr ? std::make_unique<AnsweringWindow>() : nullptr;
        apartment = type;
    };
    connect();
    server.writeFrame("make");
    ASSERT_TRUE(eventually([&] { return apartment >= 0; }));
    EXPECT_TRUE(apartment == APTTYPE_STA || apartment == APTTYPE_MAINSTA);
    PostMessageW(window->hwnd(), AnsweringWindow::kMessage, 0, 0);
    EXPECT_TRUE(eventually([&] { return window->reached == 1; }));
    server.writeFrame("unmake");
    EXPECT_TRUE(eventually([&] { return listener->payloads().size() == 2; }));
}

TEST(PipeTrust, OnlyThisUserTheAdministratorsAndTheSystemAreTrusted) {
    constexpr const char* user = "S-1-5-21-1-2-3-1001";
    const auto sid = [](const char* text) {
        UniqueLocalMemory converted;
        EXPECT_TRUE(ConvertStringSidToSidA(text, converted.put()));
        return converted;
    };
    for (const auto& [owner, trusted] :
         std::vector<std::pair<const char*, bool>>{{user, true},
                                                   {"S-1-5-32-544", true},
                                                   {"S-1-5-18", true},
                                                   {"S-1-5-21-1-2-3-1002", false},
                                                   {"S-1-5-21-1-2-3-544", false},
                                                   {"S-1-5-32-545", false},
                                                   {"S-1-5-19", false},
                                                   {"S-1-1-0", false}})
        EXPECT_EQ(isTrustedOwner(sid(owner).get(), sid(user).get()), trusted) << owner;
    EXPECT_FALSE(isTrustedOwner(sid(user).get(), nullptr));

    // Without a label the owner tells; a label tells more than any owner.
    EXPECT_EQ(levelOfPipe(nullptr, nullptr), 0x2000U);
    EXPECT_EQ(levelOfPipe(nullptr, sid(user).get()), 0x2000U);
    EXPECT_EQ(levelOfPipe(nullptr, sid("S-1-5-32-544").get()), 0x3000U);
    UniqueLocalMemory descriptor;
    ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
        "S:(ML;;NW;;;LW)", SDDL_REVISION_1, descriptor.put(), nullptr));
    BOOL present = FALSE, defaulted = FALSE;
    PACL label = nullptr;
    ASSERT_TRUE(GetSecurityDescriptorSacl(descriptor.get(), &present, &label, &defaulted));
    EXPECT_EQ(levelOfPipe(label, sid("S-1-5-32-544").get()), 0x1000U);
}

TEST_F(PipeTest, APipeWithAnUntrustedOwnerOrLowIntegrityIsRefused) {
    for (const auto& [security, linked] :
         std::vector<std::pair<const char*, bool>>{{"O:S-1-5-21-1-2-3-1234D:(A;;GA;;;WD)", false},
                                                   {"O:WDD:(A;;GA;;;WD)", false},
                                                   {"O:BAD:(A;;GA;;;WD)S:(ML;;NW;;;LW)", false},
                                                   {"O:BAD:(A;;GA;;;WD)", true},
                                                   {nullptr, true}}) {  // the system's default
        ASSERT_TRUE(server.reopen(security));
        listener = makePipe<TestListener>(name);
        EXPECT_EQ(listener->initConnection(), linked);
        EXPECT_EQ(listener->failure().starts_with("is not linked to: it"), !linked);
        EXPECT_EQ(listener->isConnected(), linked);
        listener->terminate();
    }
}

TEST(Waiting, EndsWithTheTimeOrTheHandleAndLeavesAQuitToTheThreadsLoop) {
    for (const bool inApartment : {false, true}) {
        SCOPED_TRACE(inApartment);
        const Apartment apartment(inApartment);
        const UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        const HANDLE handle = event.get();
        for (const bool dispatching : {false, true}) {
            const auto wait = [&](DWORD timeoutMs) {
                if (dispatching) return waitDispatchingMessages({&handle, 1}, timeoutMs);
                const WaitOutcome outcome = waitServingCalls(handle, timeoutMs);
                return outcome == WaitOutcome::signalled  ? WAIT_OBJECT_0
                       : outcome == WaitOutcome::timedOut ? DWORD{WAIT_TIMEOUT}
                                                          : WAIT_FAILED;
            };
            ResetEvent(handle);
            PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
            PostQuitMessage(7);
            EXPECT_GE(millisecondsFor([&] { EXPECT_EQ(wait(60), WAIT_TIMEOUT); }), 50);
            SetEvent(handle);
            EXPECT_EQ(wait(INFINITE), WAIT_OBJECT_0);
            MSG message{};
            for (const UINT left :
                 dispatching ? std::vector<UINT>{WM_QUIT} : std::vector<UINT>{WM_APP, WM_QUIT}) {
                EXPECT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
                EXPECT_EQ(message.message, left);
            }
            EXPECT_EQ(message.wParam, 7U);
        }
    }
    EXPECT_EQ(waitServingCalls(nullptr, 10), WaitOutcome::failed);
}

}  // namespace
}  // namespace orvane
