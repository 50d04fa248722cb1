// How calls are served: where, when, counted, refused, and what happens after the player's end.

#include <atomic>
#include <thread>

#include "tests/standins/player/fixture.h"

namespace orvane::standin {
namespace {

using CallsTest = PlayerTest;

PlayerOptions synthetic(unsigned count) {
    PlayerOptions options;
    options.synthetic = count;
    return options;
}

TEST_F(CallsTest, ACallFromAnotherThreadWaitsForThePlayersOwn) {
    PlayerOptions options = synthetic(1);
    options.serveOnOwnThread = true;
    Player& player = start(options);
    std::atomic<int> served{0};
    std::thread worker([&] {
        WMPPlayState state{};
        for (int i = 0; i < 3; ++i) {
            if (player.core()->get_playState(&state) == S_OK) ++served;
        }
    });
    Sleep(150);
    EXPECT_EQ(served, 0) << "served although the player's thread did not listen";
    EXPECT_TRUE(player.pumpUntil([&] { return served == 3; }, 3000));
    worker.join();

    player.change([](PlayerOptions& o) { o.serveOnOwnThread = false; });
    std::thread direct([&] {
        WMPPlayState state{};
        if (player.core()->get_playState(&state) == S_OK) ++served;
    });
    direct.join();  // without a message loop
    EXPECT_EQ(served, 4);
    EXPECT_EQ(player.callCount("IWMPCore::get_playState"), 4U);
}

TEST_F(CallsTest, ManyThreadsWorkOnOnePlayer) {
    for (const bool own : {false, true}) {
        PlayerOptions options = synthetic(50);
        options.serveOnOwnThread = own;
        Player& player = start(options);
        std::atomic<int> failures{0};
        std::atomic<int> running{4};
        std::vector<std::thread> workers;
        for (int n = 0; n < 4; ++n) {
            workers.emplace_back([&, n] {
                for (int i = 0; i < 100; ++i) {
                    ComRef<IWMPMediaCollection> media;
                    ComRef<IWMPPlaylist> all;
                    ComRef<IWMPMedia> item;
                    player.core()->get_mediaCollection(media.put());
                    if (FAILED(media->getAll(all.put())) ||
                        FAILED(all->get_Item((i + n) % 50, item.put())) ||
                        FAILED(write(item, L"Title", L"x")))
                        ++failures;
                }
                --running;
            });
        }
        EXPECT_TRUE(player.pumpUntil([&] { return running == 0; }, 20000));
        for (std::thread& worker : workers) worker.join();
        EXPECT_EQ(failures, 0);
        EXPECT_EQ(player.callCount("IWMPMediaCollection::getAll"), 400U);
    }
}

TEST_F(CallsTest, FaultsAreThoseThatWereAskedFor) {
    PlayerOptions options = synthetic(1);
    options.failCalls = {"IWMPCore::get_controls", "IWMPPlaylist::get_count"};
    options.errors = {static_cast<long>(0xC00D1197), 5};
    Player& player = start(options);
    ComRef<IWMPControls> controls;
    EXPECT_EQ(player.core()->get_controls(controls.put()), E_FAIL);
    EXPECT_FALSE(controls);
    ComRef<IWMPMediaCollection> media;
    ComRef<IWMPPlaylist> all;
    ASSERT_EQ(player.core()->get_mediaCollection(media.put()), S_OK);
    ASSERT_EQ(media->getAll(all.put()), S_OK);
    LONG count = -1;
    EXPECT_EQ(all->get_count(&count), E_FAIL);
    EXPECT_EQ(count, -1);

    ComRef<IWMPError> errors;
    ComRef<IWMPErrorItem> first;
    ASSERT_EQ(player.core()->get_Error(errors.put()), S_OK);
    ASSERT_EQ(errors->get_Item(0, first.put()), S_OK);
    LONG code = 0;
    EXPECT_EQ(first->get_errorCode(&code), S_OK);
    EXPECT_EQ(static_cast<unsigned long>(code), 0xC00D1197U);
    EXPECT_TRUE(FAILED(errors->get_Item(2, first.put())));
    errors->clearErrorQueue();
    EXPECT_TRUE(FAILED(errors->get_Item(0, first.put())));

    ComRef<IWMPSettings> settings;
    ASSERT_EQ(player.core()->get_settings(settings.put()), S_OK);
    VARIANT_BOOL value = VARIANT_TRUE;
    EXPECT_EQ(settings->getMode(Text(L"shuffle").get(), &value), S_OK);
    EXPECT_EQ(value, VARIANT_FALSE);
    EXPECT_TRUE(FAILED(settings->getMode(Text(L"repeat").get(), &value)));
}

TEST_F(CallsTest, WhatIsHeldBeyondThePlayersEndIsCutOff) {
    for (const bool own : {false, true}) {
        PlayerOptions options = synthetic(1);
        options.serveOnOwnThread = own;
        Player& player = start(options);
        ComRef<IWMPCore> core(player.core());
        ComRef<IWMPMedia> item = player.item(0);
        m_player.reset();
        BSTR text = nullptr;
        EXPECT_EQ(item->get_sourceURL(&text), RPC_E_DISCONNECTED);
        std::thread([&] {
            WMPPlayState state{};
            EXPECT_EQ(core->get_playState(&state), RPC_E_DISCONNECTED);
        }).join();
    }
}

}  // namespace
}  // namespace orvane::standin
