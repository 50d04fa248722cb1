// A script must fail whenever something is not as it should be: what the demo shows rests on it.

#include "standins/app/interpreter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string_view>

namespace orvane::standin::app {
namespace {

using namespace std::string_literals;
using testing::HasSubstr;

// A plug-in that answers at once, and a record of what was sent and printed.
class ScriptLines : public testing::Test, protected InterpreterHost {
protected:
    bool isConnected(PipeId) override { return m_connected; }
    bool send(const OrvaneMessage& message) override {
        m_sent += message.toDocument().toStdString();
        OrvaneResponse response(message.getName());
        response.setReturnValue(true);
        response.setValue("metadataOut.Filename", "C:\\a b.wma");
        m_arrivals.add(std::make_shared<OrvaneMessage>(response));
        return true;
    }
    bool sendBytes(std::span<const std::uint8_t>) override { return m_connected; }
    void drop(PipeId) override { m_connected = false; }
    void hold(PipeId, bool) override {}
    void print(const String& text, bool) override { m_printed += text.toStdString() + "\n"; }

    void event(const char* name, const char* rectangle = "") {
        OrvaneEvent event(name);
        event.setValue("PlayerRect", rectangle);
        m_arrivals.add(std::make_shared<OrvaneEvent>(event));
    }

    bool m_connected = true;
    std::string m_sent;
    std::string m_printed;
    Arrivals m_arrivals;
    Interpreter m_interpreter{*this, m_arrivals};
};

TEST_F(ScriptLines, AScriptPassesWhenAllExpectationsAreMet) {
    EXPECT_TRUE(
        m_interpreter.runScript("# a comment\r\nstep first\r\n"
                                "setMediaInfoToPath Year=1 \"C:\\a=b.wma\" emptyOk=YES\n"
                                "expect return true\n"
                                "expect value metadataOut.Filename=*.wma\n"
                                "keep track metadataOut.Filename\nstep second\n"
                                "start \"${track}\"\nexpect no event X within 0\n",
                                "test"))
        << m_printed;
    EXPECT_THAT(m_sent, HasSubstr("  <trackPath>C:\\a=b.wma</trackPath>\r\n"
                                  "  <albumArtPath></albumArtPath>\r\n"
                                  "  <emptyOk>YES</emptyOk>\r\n"
                                  "  <metadata.Year>1</metadata.Year>\r\n"));
    EXPECT_THAT(m_sent, HasSubstr("<trackPath>C:\\a b.wma</trackPath>"));
    EXPECT_THAT(m_printed, HasSubstr("step good: first"));
    EXPECT_THAT(m_printed, HasSubstr("step good: second"));
}

TEST_F(ScriptLines, AFailedExpectationOrUnknownWordFailsTheScript) {
    for (const char* line : {"expect event PlayerShown within 0",
                             "expect event PlayerMoved PlayerRect=2,* within 0",
                             "expect event PlayerMoved Player=* within 0",
                             "expect no event PlayerMoved within 0",
                             "expect return false",
                             "expect value x=*",
                             "expect value return_value=*x",
                             "expect disconnected within 0",
                             "expect",
                             "expect event",
                             "expect no return true",
                             "expect event X within long",
                             "keep x nothing",
                             "start ${nobody}",
                             "start \"C:\\x",
                             "start",
                             "getMediaInfoFromIndex abc",
                             "setMediaInfoToIndex 1 emptyOk=1",
                             "pause now",
                             "start path=a",
                             "sleep long",
                             "burst 0",
                             "drop both",
                             "xml nothing.xml",
                             "clean-library --art=x",
                             "isR",
                             "no-such-word"}) {
        Interpreter interpreter(*this, m_arrivals);
        event("PlayerMoved", "1,1,8,6");
        EXPECT_FALSE(interpreter.runScript("step one\npause\n"s + line + "\nclose\n", "test"))
            << line;
        EXPECT_THAT(m_printed, HasSubstr("error: test:3: ")) << line;
        EXPECT_THAT(m_printed, HasSubstr("result: FAILED")) << line;
        EXPECT_EQ(m_sent.find("close"), std::string::npos) << "it went on after " << line;
        m_printed.clear();
    }
    m_connected = false;
    for (const char* line : {"pause", "slow 0", "burst 2", "badmagic", "expect connected within 0"})
        EXPECT_FALSE(Interpreter(*this, m_arrivals).runScript(line, "test")) << line;
    m_interpreter.problemCame();
    EXPECT_FALSE(m_interpreter.runScript("say nothing is missed", "test"));
}

TEST(DocumentForm, IsCheckedByteForByte) {
    // What follows the event's name, after its parameter Player.
    const auto problems = [](const char* event, const std::string& end,
                             const char* player = "\">\r\n  <Player>wmp</Player>\r\n") {
        std::string text("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n\n<OrVaneIPC event=\"");
        text.append(event).append(player).append(end).append(1, '\0');
        StringArray found;
        readPayload(PipeId::event,
                    {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, found);
        return found.joinIntoString("|").toStdString();
    };
    const std::string end = "</OrVaneIPC>\r\n";
    EXPECT_EQ(problems("PlayStopped", end), "");
    EXPECT_EQ(problems("CleanTracks", "  <trackPaths0>\\&amp;&#233;\n</trackPaths0>\r\n" + end),
              "");
    for (const char* text : {"\"a\"", "a$", "\xC3\xA9", "&eacute;", "&#;", "&", "a>"})
        EXPECT_NE(problems("CleanTracks",
                           std::string("  <trackPaths0>") + text + "</trackPaths0>\r\n" + end),
                  "")
            << text;
    EXPECT_NE(problems("CleanTracks", "  <trackPaths1>a</trackPaths1>\r\n" + end), "");
    EXPECT_NE(problems("PlayStopped", end + " "), "");
    EXPECT_NE(problems("PlayStopped", "</OrVaneIPC>"), "");
    EXPECT_NE(problems("PlayStopped", end, "\">\n  <Player>wmp</Player>\r\n"), "");
    EXPECT_NE(problems("PlayStopped", end, "\">\r\n  <Player/>\r\n"), "");
    EXPECT_NE(problems("PlayStopped", "", "\"/>\r\n"), "");
    EXPECT_NE(problems("PlayerMoved", end), "");
    EXPECT_NE(problems("PlayerSang", end), "");
}

}  // namespace
}  // namespace orvane::standin::app
