#include <ocidl.h>
#include <olectl.h>

#include "tests/standins/player/event_log.h"
#include "tests/standins/player/fixture.h"

namespace orvane::standin {
namespace {

class EventsTest : public PlayerTest {
protected:
    Player& startEmpty(PlayerOptions options = {}) {
        options.synthetic = 1;
        return start(std::move(options));
    }
};

TEST_F(EventsTest, EverySinkHearsUntilItLeaves) {
    Player& player = startEmpty();
    const auto point = eventsOf(player.core());
    const auto first = makeObject<EventLog>();
    const auto second = makeObject<EventLog>();
    DWORD cookies[2] = {};
    ASSERT_EQ(point->Advise(first.get(), &cookies[0]), S_OK);
    ASSERT_EQ(point->Advise(second.get(), &cookies[1]), S_OK);
    EXPECT_NE(cookies[0], cookies[1]);
    EXPECT_EQ(player.sinkCount(), 2U);

    // The first takes the second away while an event is being raised: it must not hear it.
    first->onEvent = [&](const std::string&) { point->Unadvise(cookies[1]); };
    player.fire([](IWMPEvents& sink) { sink.Error(); });
    player.pump(50);
    EXPECT_TRUE(first->has("Error"));
    EXPECT_TRUE(second->lines.empty());
    EXPECT_EQ(player.sinkCount(), 1U);
    EXPECT_EQ(point->Unadvise(cookies[1]), CONNECT_E_NOCONNECTION);

    // Events that are under way when a sink leaves do not reach it.
    player.fire([](IWMPEvents& sink) { sink.Error(); });
    EXPECT_EQ(point->Unadvise(cookies[0]), S_OK);
    player.pump(50);
    EXPECT_EQ(first->lines.size(), 1U);
}

TEST_F(EventsTest, RefusedAndUselessSinks) {
    PlayerOptions options;
    options.refuseAdvise = true;
    Player& player = startEmpty(options);
    const auto log = makeObject<EventLog>();
    DWORD cookie = 7;
    EXPECT_EQ(eventsOf(player.core())->Advise(log.get(), &cookie), CONNECT_E_ADVISELIMIT);
    EXPECT_EQ(cookie, 0U);

    player.change([](PlayerOptions& o) {
        o.refuseAdvise = false;
        o.cookieZero = true;
    });
    EXPECT_EQ(eventsOf(player.core())->Advise(log.get(), &cookie), S_OK);
    EXPECT_EQ(cookie, 0U);
    EXPECT_EQ(player.sinkCount(), 0U);

    player.change([](PlayerOptions& o) { o.cookieZero = false; });
    EXPECT_EQ(eventsOf(player.core())->Advise(player.core(), &cookie), CONNECT_E_CANNOTCONNECT);
    ComRef<IConnectionPoint> other;
    const auto container = ComRef<IWMPCore>(player.core()).query<IConnectionPointContainer>();
    EXPECT_EQ(container->FindConnectionPoint(__uuidof(IWMPCore), other.put()),
              CONNECT_E_NOCONNECTION);
}

TEST_F(EventsTest, APlayerThatEndsLetsItsSinksGo) {
    const auto log = makeObject<EventLog>();
    DWORD cookie = 0;
    Player& player = startEmpty();
    ASSERT_EQ(eventsOf(player.core())->Advise(log.get(), &cookie), S_OK);
    player.fire([](IWMPEvents& sink) { sink.Error(); });
    m_player.reset();
    EXPECT_TRUE(log->lines.empty());
    EXPECT_EQ(log->AddRef(), 2U) << "the player still holds the sink";
    log->Release();
}

}  // namespace
}  // namespace orvane::standin
