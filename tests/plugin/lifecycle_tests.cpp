// Creation, attachment to the player's core, reconnecting and release; also with a command running
// on the command pipe's thread, whose calls a real player serves on its own.

#include <gtest/gtest.h>
#include <olectl.h>

#include <cstdlib>

#include "tests/common/launcher/install_path.h"
#include "tests/plugin/plugin_fixture.h"
#include "tests/support/captured_log.h"
#include "tests/support/temp_folder.h"

namespace orvane::test {
namespace {

class LifecycleTest : public PluginTest {
protected:
    // The plug-in in a player whose thread serves all calls; its isPlaying has just arrived, and
    // is served when this thread next waits or pumps.
    void startWithACommand(const std::function<void()>& whileServed) {
        m_options.serveOnOwnThread = true;
        start();
        m_player->during("IWMPCore::get_playState", [=] {
            whileServed();
            return S_OK;
        });
        ASSERT_TRUE(m_app->sendCommand("isPlaying"));
        while (m_player->callCount("IWMPCore::get_playState") == 0) Sleep(1);
    }
};

TEST_F(LifecycleTest, CreationFailsWholeAndSaysWhy) {
    const auto attempt = [] {
        CapturedLog log;
        auto* object = reinterpret_cast<IWMPEvents*>(&log);
        EXPECT_EQ(create(&object), E_FAIL);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(canUnloadNow(), S_OK);
        return log.lines().back();
    };
    m_window.reset();
    EXPECT_EQ(attempt(), "<3> COrVaneWmpPlugin: can't install WMP window hook");
    m_app->waitForDisconnectAndReopen();

    m_window = std::make_unique<PlayerWindow>();
    m_app->closePipes();
    EXPECT_EQ(attempt(), "<5> COrVaneWmpPlugin: can't connect to the application");
    EXPECT_FALSE(m_window->isHooked());

    m_app.reset();
    const InstallPath nowhere(L"C:\\no such folder");
    EXPECT_EQ(attempt(), "<4> COrVaneWmpPlugin::FinalConstruct: Error launching OrVane");
}

TEST_F(LifecycleTest, TheLogIsOursWhileWeLive) {
    const std::filesystem::path log =
        std::filesystem::path(std::getenv("ProgramData")) / L"OrVaneMedia" / L"OrVane.log";
    const auto lineOf = [&](const char* text) {
        const std::size_t before = readText(log).size();
        syslog(LOG_INFO, "masked");
        syslog(LOG_NOTICE, "%s", text);
        return readText(log).substr(before);
    };
    const std::string ours = " OrVaneWmpPlugin : [" + std::to_string(GetCurrentProcessId()) + "] ";
    // An application that runs is not launched, wherever it may be.
    const InstallPath nowhere(L"C:\\no such folder");
    const std::size_t before = readText(log).size();
    ASSERT_NO_FATAL_FAILURE(open());
    EXPECT_TRUE(m_window->isHooked());
    EXPECT_EQ(readText(log).size(), before);
    const std::string line = lineOf("ours");
    EXPECT_TRUE(line.ends_with("<5>" + ours + "ours\n")) << line;
    EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
    m_plugin.Release();
    EXPECT_TRUE(m_app->events.lines().empty()) << "no core was ever set, so there is no goodbye";

    m_app->closePipes();
    IWMPEvents* object = nullptr;
    EXPECT_EQ(create(&object), E_FAIL);
    const std::string theirs = lineOf("somebody else");
    EXPECT_TRUE(theirs.ends_with("else\n") && theirs.find(ours) == std::string::npos) << theirs;
}

TEST_F(LifecycleTest, EachCoreGetsItsHelloAndGoodbye) {
    ASSERT_NO_FATAL_FAILURE(open());
    VARIANT value{};
    EXPECT_EQ(m_plugin->GetProperty(L"MediaSendTo", nullptr), E_POINTER);
    EXPECT_EQ(m_plugin->GetProperty(L"MediaSendTo", &value), E_NOTIMPL);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);

    TestPlayer second(m_options);
    for (const auto* player : {m_player.get(), &second}) {
        EXPECT_EQ(m_plugin->SetCore(player->core()), S_OK);
        EXPECT_EQ(player->sinkCount(), 1U);
    }
    EXPECT_EQ(m_player->sinkCount(), 0U);
    EXPECT_EQ(m_player->coreReferences(), 1U);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    EXPECT_EQ(second.sinkCount(), 0U);
    EXPECT_EQ(second.coreReferences(), 1U);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);

    // One that cannot report is held all the same.
    const struct {
        const char* call;
        HRESULT answer;
        HRESULT expected;
    } cases[] = {
        {"IWMPCore::QueryInterface", E_FAIL, E_NOINTERFACE},
        {"IConnectionPointContainer::FindConnectionPoint", CONNECT_E_NOCONNECTION,
         CONNECT_E_NOCONNECTION},
        {"IConnectionPointContainer::FindConnectionPoint", S_FALSE, E_POINTER},  // and gives none
        {"IConnectionPoint::Advise", CONNECT_E_ADVISELIMIT, CONNECT_E_ADVISELIMIT},
        {"IConnectionPoint::Advise", S_FALSE, S_FALSE}  // nor a cookie
    };
    for (const auto& [call, answer, expected] : cases) {
        m_player->during(call, [answer = answer] { return answer; });
        EXPECT_EQ(m_plugin->SetCore(m_player->core()), expected) << call;
        EXPECT_EQ(m_player->coreReferences(), 2U);
        EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
        EXPECT_EQ(m_player->coreReferences(), 1U);
    }
    EXPECT_EQ(m_player->callCount("IConnectionPoint::Unadvise"), 1U);

    Names expected;
    for (int i = 0; i < 7; ++i) expected.insert(expected.end(), {kHello, kGoodbye});
    EXPECT_EQ(m_app->events.lines(expected.size()), expected);
}

TEST_F(LifecycleTest, OfSetCoreWithinSetCoreTheLaterOneCounts) {
    ASSERT_NO_FATAL_FAILURE(open());
    IWMPCore* const core = m_player->core();
    m_player->during("IConnectionPoint::Advise", [&] { return m_plugin->SetCore(nullptr); });
    m_plugin->SetCore(core);
    EXPECT_EQ(m_player->coreReferences(), 1U);
    EXPECT_EQ(m_player->sinkCount(), 0U);

    // Away and back again: one subscription of the two remains.
    m_player->during("IConnectionPoint::Advise", [&] {
        m_player->during();
        m_plugin->SetCore(nullptr);
        return m_plugin->SetCore(core);
    });
    m_plugin->SetCore(core);
    EXPECT_EQ(m_player->coreReferences(), 2U);
    EXPECT_EQ(m_player->sinkCount(), 1U);

    TestPlayer second(m_options);
    TestPlayer third(m_options);
    m_player->during("IConnectionPoint::Unadvise", [&] { return m_plugin->SetCore(third.core()); });
    m_plugin->SetCore(second.core());
    EXPECT_EQ(second.coreReferences(), 1U);
    EXPECT_EQ(third.sinkCount(), 1U);
    EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
    for (const auto* player : {m_player.get(), &second, &third}) {
        EXPECT_EQ(player->coreReferences(), 1U);
        EXPECT_EQ(player->sinkCount(), 0U);
    }
}

TEST_F(LifecycleTest, ReleasedFromWithinItsTimer) {
    ASSERT_NO_FATAL_FAILURE(open());
    {
        // As when the player releases the object while the timer's callback waits.
        const JuceSession::CallbackScope callback;
        m_plugin.Release();
        EXPECT_EQ(canUnloadNow(), S_OK);
        EXPECT_TRUE(JuceSession::isUp()) << "its own callback is on the stack";
    }
    EXPECT_TRUE(pumpUntil([] { return !JuceSession::isUp(); }));
    m_app->waitForDisconnectAndReopen();
    open();
    EXPECT_TRUE(JuceSession::isUp());
}

TEST_F(LifecycleTest, TheCoreMayBeTakenBackInTheMiddleOfACommand) {
    ULONG references = 0;
    ASSERT_NO_FATAL_FAILURE(startWithACommand([&] {
        EXPECT_EQ(m_plugin->SetCore(nullptr), S_OK);
        references = m_player->coreReferences();
    }));
    EXPECT_EQ(m_app->commands.lines(1), Names{"isPlaying return_value=false"});
    EXPECT_EQ(references, 2U) << "the command has a reference of its own";
    EXPECT_TRUE(pumpUntil([&] { return m_player->coreReferences() == 1; }));

    // The next command finds no core.
    EXPECT_TRUE(m_app->sendCommand("isPlaying"));
    EXPECT_EQ(m_app->commands.lines(2).size(), 2U);
    EXPECT_EQ(m_player->callCount("IWMPCore::get_playState"), 1U);
}

TEST_F(LifecycleTest, ReleaseWaitsForTheCommandAndServesItsCallsAndThePlayers) {
    IWMPPluginUI* going = nullptr;
    IWMPEvents* goingEvents = nullptr;
    const TestPlayer other(m_options);
    ASSERT_NO_FATAL_FAILURE(startWithACommand([&] {
        ASSERT_NE(going, nullptr) << "not before the release waits";
        going->AddRef();
        EXPECT_EQ(going->SetCore(nullptr), S_OK);
        EXPECT_EQ(going->SetCore(other.core()), E_UNEXPECTED);
        goingEvents->PlayStateChange(wmppsStopped);
        std::exchange(going, nullptr)->Release();
    }));
    goingEvents = sink();
    going = m_plugin.p;
    const ULONGLONG start = GetTickCount64();
    m_plugin.Release();
    EXPECT_LT(GetTickCount64() - start, 3000U);
    EXPECT_EQ(going, nullptr);
    EXPECT_EQ(m_player->coreReferences(), 1U) << "the command was over when Release returned";
    EXPECT_EQ(other.coreReferences(), 1U);
    EXPECT_EQ(canUnloadNow(), S_OK);
    EXPECT_EQ(eventNames(1), Names{"PlayerGoodbye"});
}

}  // namespace
}  // namespace orvane::test
