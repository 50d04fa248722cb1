// docs/protocol.md, held against the code: every example of it is what the code writes and reads.

#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "common/link/orvane_app_connector.h"
#include "common/messages/frame.h"
#include "common/messages/orvane_message.h"
#include "harness/child.h"
#include "harness/recording_methods.h"
#include "harness/running_app.h"
#include "harness/waiting.h"
#include "tests/support/in_tree.h"

namespace orvane::test {
namespace {

// The fenced blocks of one kind, without their fences.
std::vector<std::string> blocksOf(const std::string& kind) {
    std::ifstream file(inTree("docs/protocol.md"), std::ios::binary);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    const std::string fence = "\n```" + kind + "\n";
    std::vector<std::string> blocks;
    for (auto at = page.find(fence); at != page.npos; at = page.find(fence, at)) {
        at += fence.size();
        blocks.push_back(page.substr(at, page.find("```", at) - at));
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

TEST(ProtocolPage, EventsAreThoseThatTheConnectorSends) {
    RunningApp app;
    OrvaneAppConnector connector({});
    ASSERT_TRUE(connector.connect());
    const juce::String player("wmp");
    connector.playerHello(player);
    connector.playerMoved(player, 10, 20, 800, 600);
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
    app.events.messages(12);  // the move comes last
    connector.playerGoodbye(player);
    std::map<std::string, std::string> sent;
    for (const OrvaneMessage& event : app.events.messages(13))
        sent[event.getName().toStdString()] = event.toDocument().toStdString();
    EXPECT_EQ(readPage().events, sent);
}

TEST(ProtocolPage, CommandsAreAnsweredAsDocumented) {
    const Page page = readPage();
    PageMethods methods;
    std::set<std::string_view> names;
    for (const auto& [name, text] : page.commands) {
        names.insert(name);
        const auto message = OrvaneMessage::parse(juce::String::fromUTF8(text.c_str()));
        const auto* const command = dynamic_cast<const OrvaneCommand*>(message.get());
        ASSERT_NE(command, nullptr) << name;
        ASSERT_TRUE(page.responses.contains(name)) << name;
        EXPECT_EQ(command->executeCommand(&methods).toDocument().toStdString(),
                  page.responses.at(name));
    }
    const auto all = OrvaneCommand::names();
    const std::set<std::string_view> routed(all.begin(), all.end());
    EXPECT_EQ(names, routed);
    EXPECT_EQ(page.responses.size(), routed.size());
}

// A copy of common/names on purpose: the application's own developers rely on these.
TEST(Names, AreTheNamesThatOtherProgramsUse) {
    const std::pair<const char*, const char*> table[] = {
        {names::kRunningMutex.narrow(), "OrVaneApp_Process"},
        {names::kEventPipe.narrow(), "IpcOrvaneEventPipe"},
        {names::kCommandPipe.narrow(), "IpcOrvaneCommandPipe"},
        {names::kSettingsKey.narrow(), "Software\\OrVaneMedia\\Settings"},
        {names::kPathValue.narrow(), "Path"},
        {names::kApplicationFile.narrow(), "OrVaneApp.exe"},
        {names::kModuleFile.narrow(), "OrVaneWmpPlugin.dll"},
        {names::kClassId.narrow(), "{9893A0E1-EE98-448F-81EE-D2D15666215E}"}};
    for (const auto& [name, text] : table) EXPECT_STREQ(name, text);
}

TEST(ProtocolPage, FramesHaveTheDocumentedBytes) {
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

TEST(ProtocolPage, TheExampleApplicationRunsASessionTwice) {
    Child application(L"application.exe");
    ASSERT_TRUE(application.prints("ready", 10'000));
    const std::shared_ptr<IOrvanePluginMethods> methods = std::make_shared<PageMethods>();
    juce::StringArray paths;
    for (int i = 0; i < 10'000; ++i) paths.add("C:\\Music\\" + juce::String(i) + ".wma");
    for (const std::string question : {"isPlaying", "isPaused"}) {
        OrvaneAppConnector connector(methods);
        ASSERT_TRUE(eventually([&] { return connector.connect(); }, 5000));
        application.tell(question);
        const std::string answer =
            R"("name":")" + question + R"(","parameters":{"return_value":"true")";
        EXPECT_TRUE(application.prints(answer, 5000)) << application.output();
        connector.cleanTracks("wmp", paths);
        EXPECT_TRUE(application.prints(R"("trackPaths9999":"C:\\Music\\9999.wma"}})", 5000));
    }
    application.tell("quit");
    EXPECT_EQ(application.exitCode(5000), 0U);
}

}  // namespace
}  // namespace orvane::test
