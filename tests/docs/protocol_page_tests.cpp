// docs/protocol.md, held against the code: every example of it is what the code writes and reads.

#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "common/link/app_connector.h"
#include "common/link/orvane_app_connector.h"
#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "tests/common/messages/recording_methods.h"
#include "tests/support/in_tree.h"
#include "tests/support/process.h"
#include "tests/support/waiting.h"

namespace orvane::test {
namespace {

// The fenced blocks of one kind, without their fences.
std::vector<std::string> blocksOf(const std::string& kind) {
    std::ifstream page(inTree("docs/protocol.md"), std::ios::binary);
    EXPECT_TRUE(page.good());
    std::vector<std::string> blocks;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (!inside && line == "```" + kind) {
            blocks.emplace_back();
            inside = true;
        } else if (inside && line == "```") {
            inside = false;
        } else if (inside) {
            blocks.back() += line + "\n";
        }
    }
    return blocks;
}

// As it goes over the pipe: CR LF, but for the two line feeds after the declaration.
std::string asSent(const std::string& block) {
    std::string text;
    int line = 0;
    for (const char c : block) {
        if (c == '\n' && ++line > 2) text += '\r';
        text += c;
    }
    return text;
}

struct Page {
    std::map<std::string, std::string> events, commands, responses;  // by name, as sent
};

Page readPage() {
    Page page;
    for (const std::string& block : blocksOf("xml")) {
        const std::string text = asSent(block);
        const auto message = OrvaneMessage::parse(juce::String::fromUTF8(text.c_str()));
        if (message == nullptr) {
            ADD_FAILURE() << "no message: " << block;
            continue;
        }
        EXPECT_EQ(message->toDocument().toStdString(), text);
        const std::string name = message->getName().toStdString();
        auto& kind = message->getTagName() == "command"    ? page.commands
                     : message->getTagName() == "response" ? page.responses
                                                           : page.events;
        EXPECT_TRUE(kind.emplace(name, text).second) << "twice: " << name;
    }
    return page;
}

class RecordingConnector : public AppConnector {
public:
    using AppConnector::AppConnector;
    bool connect() override { return true; }
    void disconnect() override {}
    bool isConnected() override { return true; }
    bool postEvent(const OrvaneEvent& event) override { return tryPostEvent(event).sent; }
    Pipe::Sending tryPostEvent(const OrvaneEvent& event) override {
        sent[event.getName().toStdString()] = event.toDocument().toStdString();
        return {true, 0};
    }
    using AppConnector::timerCallback;
    std::map<std::string, std::string> sent;
};

// Answers what the page's examples say.
class PageMethods final : public RecordingMethods {
public:
    bool getCurrentMediaInfo(Map out) override { return record(out); }
    bool getMediaInfoFromPath(Text, Map out, Text) override { return record(out); }
    bool getMediaInfoFromIndex(int, Map out, Text) override { return record(out); }

private:
    static bool record(Map out) {
        out.set("Filename", "C:\\Music\\Song.wma");
        out.set("TrackTitle", juce::String::fromUTF8("Caf\xC3\xA9 Song"));
        out.set("TrackArtist", juce::String::fromUTF8("Les M\xC3\xA9nestrels"));
        out.set("Year", "2004");
        out.set("AlbumArt", "1");
        return true;
    }
};

TEST(ProtocolPage, EventsAreWhatTheConnectorSends) {
    RecordingConnector connector(nullptr);
    const juce::String player("wmp");
    connector.playerHello(player);
    connector.playerMoved(player, 10, 20, 800, 600);
    connector.timerCallback();
    connector.playerMaximized(player, 10, 20, 800, 600);
    connector.playerMinimized(player);
    connector.playerHidden(player);
    connector.playerShown(player);
    connector.playerInSpecialMode(player, true);
    connector.playerActivated(player);
    connector.playStarted(player, juce::String::fromUTF8("Caf\xC3\xA9 Song"),
                          juce::String::fromUTF8("Les M\xC3\xA9nestrels"), "Rock & Roll", "Folk",
                          "C:\\Music\\Song.wma", "2004", "7");
    connector.playStopped(player);
    connector.cleanTracks(player, {"C:\\Music\\a.mp3", "D:\\Rock & Roll\\b.wma"});
    connector.mouseLButtonDown(player);
    connector.playerGoodbye(player);
    EXPECT_EQ(readPage().events, connector.sent);
}

TEST(ProtocolPage, CommandsAreAnsweredAsItSays) {
    const Page page = readPage();
    PageMethods methods;
    std::set<std::string> names;
    for (const auto& [name, text] : page.commands) {
        names.insert(name);
        const auto message = OrvaneMessage::parse(juce::String::fromUTF8(text.c_str()));
        const auto* const command = dynamic_cast<const OrvaneCommand*>(message.get());
        ASSERT_NE(command, nullptr) << name;
        const auto response = page.responses.find(name);
        ASSERT_NE(response, page.responses.end()) << name;
        EXPECT_EQ(command->executeCommand(&methods).toDocument().toStdString(), response->second);
    }
    std::set<std::string> routed;
    for (const std::string_view name : OrvaneCommand::names()) routed.emplace(name);
    EXPECT_EQ(names, routed);
    EXPECT_EQ(page.responses.size(), routed.size());
}

TEST(ProtocolPage, FramesHaveTheBytesItShows) {
    const auto blocks = blocksOf("frame");
    ASSERT_EQ(blocks.size(), 1U);
    const auto event = OrvaneMessage::parse(
        juce::String::fromUTF8(readPage().events.at("PlayerMaximized").c_str()));
    const auto bytes = frame::encode(event->toPayload());
    std::istringstream shown(blocks[0]);
    std::size_t at = 0;
    for (unsigned byte = 0; shown >> std::hex >> byte; ++at) {
        ASSERT_LT(at, bytes.size());
        EXPECT_EQ(bytes[at], byte) << at;
    }
    EXPECT_GT(at, 8U);
}

TEST(ProtocolPage, TheExampleHoldsASession) {
    const Process application(L"minimal_application.exe");
    ASSERT_TRUE(application.prints("ready", 10'000));
    PageMethods methods;
    {
        OrvaneAppConnector connector(&methods);
        ASSERT_TRUE(eventually([&] { return connector.connect(); }, 5000));
        connector.playerHello("wmp");
        EXPECT_TRUE(application.prints("isPlaying true", 5000)) << application.output();
        connector.playerGoodbye("wmp");
        EXPECT_EQ(application.exitCode(5000), 0U);
    }
    EXPECT_EQ(application.output(),
              "ready\r\nPlayerHello \r\nisPlaying true\r\nPlayerGoodbye \r\n");
}

}  // namespace
}  // namespace orvane::test
