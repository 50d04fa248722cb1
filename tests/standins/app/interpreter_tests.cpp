#include "standins/app/interpreter.h"

#include "standins/app/frame_scanner.h"
#include "standins/app/protocol.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace orvane::standin::app {
namespace {

using namespace std::string_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using Outcome = Interpreter::Outcome;

// A plug-in that answers at once, and a record of what was sent and printed.
class ScriptLines : public testing::Test, protected Link, protected Output {
protected:
    bool isConnected(PipeId) override { return m_connected; }
    std::string send(PipeId, std::string_view bytes) override {
        m_sent += bytes;
        for (const FrameScanner::Found& found : m_scanner.feed(bytes)) {
            if (!found.isFrame || !m_answers) continue;
            const auto command = readPayload(PipeId::command, found.text).message;
            if (command) answer(command->name);
        }
        return {};
    }
    void drop(PipeId) override { m_connected = false; }
    void hold(PipeId, bool) override {}
    void print(Kind, const std::string& text) override { m_printed += text + "\n"; }

    void answer(const std::string& name) {
        Arrival arrival;
        arrival.pipe = PipeId::command;
        arrival.message = {Message::Kind::response,
                           name,
                           {{"return_value", "true"}, {"metadataOut.Filename", "C:\\a b.wma"}}};
        m_arrivals.add(std::move(arrival));
    }
    void event(const std::string& name, Parameters parameters = {}) {
        Arrival arrival;
        arrival.message = {Message::Kind::event, name, std::move(parameters)};
        m_arrivals.add(std::move(arrival));
    }

    bool m_connected = true;
    bool m_answers = true;
    std::string m_sent;
    std::string m_printed;
    FrameScanner m_scanner;
    Arrivals m_arrivals;
    Interpreter m_interpreter{*this, m_arrivals, *this};
};

TEST_F(ScriptLines, SendsAndChecksTheResponse) {
    EXPECT_TRUE(
        m_interpreter.runScript("# a comment\r\n"
                                "getMediaInfoFromIndex 2\r\n"
                                "expect return true\n"
                                "expect value metadataOut.Filename=*.wma\n"
                                "keep track metadataOut.Filename\n"
                                "start \"${track}\"\n",
                                "test"));
    EXPECT_THAT(m_sent, HasSubstr("<trackPath>C:\\a b.wma</trackPath>"));
    EXPECT_EQ(m_interpreter.checksMet(), 2u);
    EXPECT_THAT(m_printed, HasSubstr("result: good, all 2 checks"));
}

TEST_F(ScriptLines, MissesWhatDoesNotComeAndStops) {
    event("PlayStopped");
    EXPECT_FALSE(
        m_interpreter.runScript("step first\n"
                                "expect event PlayStarted within 10\n"
                                "step second\n"
                                "pause\n",
                                "test"));
    EXPECT_THAT(m_printed, HasSubstr("test:2: MISSED"));
    EXPECT_THAT(m_printed, HasSubstr("came PlayStopped"));
    EXPECT_THAT(m_printed, HasSubstr("step FAILED: first"));
    EXPECT_THAT(m_printed, Not(HasSubstr("second")));
    EXPECT_EQ(m_sent, "");
}

TEST_F(ScriptLines, GoesOnAfterAFailureWhenToldTo) {
    EXPECT_FALSE(
        m_interpreter.runScript("on-failure continue\n"
                                "step first\n"
                                "pause\n"
                                "expect return false\n"
                                "step second\n"
                                "expect return true\n",
                                "test"));
    EXPECT_THAT(m_printed, HasSubstr("step FAILED: first"));
    EXPECT_THAT(m_printed, HasSubstr("step good: second"));
    EXPECT_THAT(m_printed, HasSubstr("result: FAILED, 1 of 2"));
}

TEST_F(ScriptLines, TakesEachEventOnceAndInOrder) {
    event("PlayerMoved", {{"PlayerRect", "1,1,8,6"}});
    event("PlayerMoved", {{"PlayerRect", "2,2,8,6"}});
    event("PlayerShown");
    EXPECT_EQ(m_interpreter.run("expect event PlayerMoved PlayerRect=2,* within 0"), Outcome::done);
    EXPECT_EQ(m_interpreter.run("expect event PlayerMoved within 0"), Outcome::failed);
    EXPECT_EQ(m_interpreter.run("expect no event PlayerMoved within 0"), Outcome::done);
    EXPECT_EQ(m_interpreter.run("wait event PlayerHidden within 0"), Outcome::done);
    EXPECT_EQ(m_interpreter.run("expect event PlayerShown within 0"), Outcome::done);
}

TEST_F(ScriptLines, WaitsForAnEventThatComesLater) {
    std::thread later([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        event("PlayerHello");
    });
    EXPECT_EQ(m_interpreter.run("expect event PlayerHello within 5000"), Outcome::done);
    later.join();
}

TEST_F(ScriptLines, SaysWhatIsWrongWithALineAndSendsNothing) {
    for (const char* line :
         {"paus now", "isPlayign", "start", "expect event", "expect return maybe", "raw 2C9",
          "raw zz", "sleep long", "start ${nobody}", "cut", "burst 0", "expect event X a within",
          "drop both", "clean-library --art=x"}) {
        m_printed.clear();
        EXPECT_EQ(m_interpreter.run(line), Outcome::wrong) << line;
        EXPECT_NE(m_printed, "") << line;
    }
    EXPECT_EQ(m_sent, "");
}

TEST_F(ScriptLines, RunsNothingOfAScriptWithAWrongLine) {
    EXPECT_FALSE(m_interpreter.runScript("pause\nno-such-command\n", "test"));
    EXPECT_THAT(m_printed, HasSubstr("test:2: there is no command 'no-such-command'"));
    EXPECT_EQ(m_sent, "");
}

TEST_F(ScriptLines, TellsWhenNobodyIsThereOrAnswers) {
    m_answers = false;
    m_interpreter.run("patience 10");
    EXPECT_EQ(m_interpreter.run("pause"), Outcome::failed);
    EXPECT_THAT(m_printed, HasSubstr("no response to pause within 10 ms"));
    m_connected = false;
    EXPECT_EQ(m_interpreter.run("pause"), Outcome::failed);
    EXPECT_THAT(m_printed, HasSubstr("nobody is connected"));
    EXPECT_EQ(m_interpreter.run("expect disconnected within 0"), Outcome::done);
    EXPECT_EQ(m_interpreter.run("expect connected within 0"), Outcome::failed);
}

TEST_F(ScriptLines, SendsFramesThatAreWrongOnPurpose) {
    m_answers = false;
    m_interpreter.run("raw 2C 9e B4F2");
    EXPECT_EQ(m_sent, "\x2C\x9E\xB4\xF2");
    m_sent.clear();
    m_interpreter.run("xml <a \"quoted\"/>");
    EXPECT_EQ(m_sent, frameAround("<a \"quoted\"/>\0"s));
    m_sent.clear();
    m_interpreter.run("badmagic pause");
    EXPECT_EQ(m_sent.substr(0, 4), "\xEF\xBE\xAD\xDE");
    EXPECT_THAT(m_sent, HasSubstr("event=\"pause\""));
    EXPECT_EQ(m_sent.size() % 8, 0u);  // so that the reader finds the next frame
    m_sent.clear();
    m_interpreter.run("badlength 10485760 pause");
    EXPECT_EQ(m_sent.substr(4, 4), "\x00\x00\xA0\x00"s);
    m_sent.clear();
    m_interpreter.run("burst 3 isPlaying");
    EXPECT_EQ(m_sent.size(), 3 * frameAround(commandPayload("isPlaying", {})).size());
    m_sent.clear();
    m_interpreter.run("cut 5 pause");
    EXPECT_EQ(m_sent.size(), 5u);
    EXPECT_FALSE(m_connected);
}

}  // namespace
}  // namespace orvane::standin::app
