#include "standins/app/interpreter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "standins/app/frame_scanner.h"
#include "standins/app/protocol.h"

namespace orvane::standin::app {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;
using testing::Not;
using Outcome = Interpreter::Outcome;

// A plug-in that answers at once, and a record of what was sent and printed.
class ScriptLines : public testing::Test, protected Link, protected Output {
protected:
    bool isConnected(PipeId) override { return m_connected; }
    std::string send(PipeId, std::string_view bytes) override {
        m_sent += bytes;
        FrameScanner scanner;
        for (const FrameScanner::Found& found : scanner.feed(bytes))
            if (const auto command = readPayload(PipeId::command, found.text).message; m_answers)
                arrive(PipeId::command,
                       {Message::Kind::response,
                        command->name,
                        {{"return_value", "true"}, {"metadataOut.Filename", "C:\\a b.wma"}}});
        return {};
    }
    void drop(PipeId) override { m_connected = false; }
    void hold(PipeId, bool) override {}
    void print(Kind, const std::string& text) override { m_printed += text + "\n"; }

    void arrive(PipeId pipe, Message message) {
        m_arrivals.add({Arrival::What::message, pipe, std::move(message), {}});
    }
    void event(const std::string& name, Parameters parameters = {}) {
        arrive(PipeId::event, {Message::Kind::event, name, std::move(parameters)});
    }
    std::string sentBy(const char* line) {
        m_sent.clear();
        EXPECT_EQ(m_interpreter.run(line), Outcome::done) << line;
        return m_sent;
    }

    bool m_connected = true;
    bool m_answers = true;
    std::string m_sent;
    std::string m_printed;
    Arrivals m_arrivals;
    Interpreter m_interpreter{*this, m_arrivals, *this};
};

TEST_F(ScriptLines, SendsChecksAndGoesOnAfterAFailureWhenToldTo) {
    EXPECT_FALSE(
        m_interpreter.runScript("# a comment\r\n"
                                "on-failure continue\r\n"
                                "step first\n"
                                "getMediaInfoFromIndex 2\r\n"
                                "expect return true\n"
                                "expect value metadataOut.Filename=*.wma\n"
                                "keep track metadataOut.Filename\n"
                                "step second\n"
                                "start \"${track}\"\n"
                                "expect return false\n",
                                "test"));
    EXPECT_THAT(m_sent, HasSubstr("<trackPath>C:\\a b.wma</trackPath>"));
    EXPECT_THAT(m_printed, HasSubstr("step good: first"));
    EXPECT_THAT(m_printed, HasSubstr("step FAILED: second"));
    EXPECT_THAT(m_printed, HasSubstr("result: FAILED, 1 of 3"));
}

TEST_F(ScriptLines, MissesWhatDoesNotComeAndStops) {
    event("PlayStopped");
    EXPECT_FALSE(
        m_interpreter.runScript("step first\nexpect event PlayStarted within 10\npause\n", "test"));
    EXPECT_THAT(m_printed, HasSubstr("test:2: MISSED"));
    EXPECT_THAT(m_printed, HasSubstr("came PlayStopped"));
    EXPECT_THAT(m_printed, HasSubstr("step FAILED: first"));
    // And with a line that nobody understands nothing is run at all.
    EXPECT_FALSE(m_interpreter.runScript("pause\nno-such-command\n", "test"));
    EXPECT_THAT(m_printed, HasSubstr("test:2: there is no command 'no-such-command'"));
    EXPECT_EQ(m_sent, "");
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
    std::thread later([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        event("PlayerHello");
    });
    EXPECT_EQ(m_interpreter.run("expect event PlayerHello within 5000"), Outcome::done);
    later.join();
}

TEST_F(ScriptLines, TellsWhenNobodyIsThereOrAnswersOrALineIsWrong) {
    for (const char* line :
         {"paus now", "isPlayign", "start", "expect event", "expect return maybe", "raw 2C9",
          "raw zz", "sleep long", "start ${nobody}", "cut", "burst 0", "expect event X a within",
          "drop both", "clean-library --art=x"}) {
        m_printed.clear();
        EXPECT_EQ(m_interpreter.run(line), Outcome::wrong) << line;
        EXPECT_NE(m_printed, "") << line;
    }
    EXPECT_EQ(m_sent, "");
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
    EXPECT_EQ(sentBy("raw 2C 9e B4F2"), "\x2C\x9E\xB4\xF2");
    EXPECT_EQ(sentBy("xml <a \"quoted\"/>"), frameAround("<a \"quoted\"/>\0"s));
    EXPECT_THAT(sentBy("badmagic pause"), testing::AllOf(testing::StartsWith("\xEF\xBE\xAD\xDE"),
                                                         HasSubstr("event=\"pause\"")));
    EXPECT_EQ(m_sent.size() % 8, 0u) << "the reader does not find the next frame";
    EXPECT_EQ(sentBy("badlength 10485760 pause").substr(4, 4), "\x00\x00\xA0\x00"s);
    EXPECT_EQ(sentBy("burst 3 isPlaying").size(),
              3 * frameAround(commandPayload("isPlaying", {})).size());
    EXPECT_EQ(sentBy("cut 5 pause").size(), 5u);
    EXPECT_FALSE(m_connected);
}

}  // namespace
}  // namespace orvane::standin::app
