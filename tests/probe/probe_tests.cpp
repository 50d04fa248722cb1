// The rules of docs/player-rules.md, asked of the stand-in player and of Wine's own player object.

#include "probe/probe.h"

#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <thread>

#include "harness/files.h"
#include "standins/player/player.h"
#include "tests/support/in_tree.h"

namespace orvane::test {
namespace {

using probe::Answer;
using testing::ElementsAreArray;
using Rules = std::vector<std::string>;

class Probe : public testing::Test {
protected:
    // The rules that the player does not keep; the answers are printed.
    Rules different(IWMPCore* core, HWND window, bool mayPlay, bool allAsked) {
        Rules rules;
        for (const auto& finding :
             probe::ask({core, window, testData() / "sakura.wma", m_folder.path(), mayPlay})) {
            std::puts(describe(finding).c_str());
            if (finding.answer == Answer::different) rules.push_back(finding.rule);
            EXPECT_TRUE(!allAsked || finding.answer != Answer::notAsked) << finding.rule;
        }
        return rules;
    }

    const standin::ComApartment m_apartment;
    const TempFolder m_folder;
};

TEST_F(Probe, FindsTheStandInAsDocumentedUnlessItIsMadeDifferent) {
    using Options = standin::PlayerOptions;
    const struct {
        std::function<void(Options&)> make;
        Rules different;
    } cases[] = {{[](Options& of) { of.refuseOtherThreads = true; }, {}},
                 {[](Options& of) {
                      of.language = L"fr";
                      of.modes = {{L"autoRewind", false}};
                      of.tagsAfterMs = Options::kNever;
                      of.neverReached = {wmppsPlaying};
                  },
                  {"auto-rewind-is-on", "modes-are-known", "file-follows-the-library",
                   "plays-within-a-second"}},
                 {[](Options& of) {
                      of.documentedAttributes = false;
                      of.tagsAfterMs = 300;
                  },
                  {"release-date-is-the-librarys-alone", "part-of-set-is-not-the-librarys",
                   "unknown-attribute-lives-with-its-object"}}};
    for (const auto& [make, expected] : cases) {
        Options options;
        make(options);
        standin::Player player(options);
        ASSERT_TRUE(player.createWindow());
        EXPECT_EQ(different(player.core(), player.window(), true, true), expected);
        EXPECT_EQ(player.itemCount(), 0U) << "a copy is left in the library";
        EXPECT_TRUE(player.playlistNames().empty());
    }
    EXPECT_EQ(standin::usesOnOtherThreads(), 0);
}

// Wine's. On a real Windows only the check of the real player may do this: it adds to the library.
TEST_F(Probe, AsksThePlayerObjectOfTheSystem) {
    CComPtr<IWMPCore> core;
    ASSERT_EQ(CoCreateInstance(__uuidof(WindowsMediaPlayer), nullptr, CLSCTX_INPROC_SERVER,
                               __uuidof(IWMPCore), reinterpret_cast<void**>(&core)),
              S_OK);
    EXPECT_EQ(different(core, nullptr, false, false), Rules());
}

TEST_F(Probe, ItsRulesAreThoseOfPlayerRulesMd) {
    std::ifstream page(inTree("docs/player-rules.md"));
    Rules rows;
    for (std::string line; std::getline(page, line);)
        if (line.starts_with("| `")) rows.push_back(line.substr(3, line.find('`', 3) - 3));
    EXPECT_THAT(rows, ElementsAreArray(probe::ruleNames()));
}

TEST_F(Probe, TheStandInRefusesOtherThreads) {
    standin::PlayerOptions options;
    options.refuseOtherThreads = true;
    const standin::Player player(options);
    std::thread([&] {
        WMPPlayState state{};
        EXPECT_EQ(player.core()->get_playState(&state), RPC_E_WRONG_THREAD);
        CComPtr<IWMPCore>(player.core()).Release();
    }).join();
    EXPECT_EQ(standin::usesOnOtherThreads().exchange(0), 3);
}

}  // namespace
}  // namespace orvane::test
