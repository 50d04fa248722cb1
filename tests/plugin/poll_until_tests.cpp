#include "plugin/poll_until.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace orvane {
namespace {

// A clock that moves on by `step` with each poll.
struct Polling {
    std::uint32_t now;
    std::uint32_t step;
    int reachedAt;  // poll number, counted from 1; 0 is never
    int polls = 0;
    int works = 0;

    bool run(std::uint32_t timeoutMs) {
        return pollUntil(
            timeoutMs, [this] { return now; },
            [this] {
                ++polls;
                now += step;
                return polls == reachedAt;
            },
            [this] { ++works; });
    }
};

TEST(PollUntil, PollsOnceWhateverTheTimeOut) {
    Polling reached{.now = 5, .step = 0, .reachedAt = 1};
    EXPECT_TRUE(reached.run(0));
    EXPECT_EQ(reached.polls, 1);

    Polling missed{.now = 5, .step = 0, .reachedAt = 0};
    EXPECT_FALSE(missed.run(0));
    EXPECT_EQ(missed.polls, 1);
    EXPECT_EQ(missed.works, 1);
}

TEST(PollUntil, LastsItsWholeTimeOutAlsoAcrossTheClocksWrap) {
    for (const std::uint32_t start : {0U, 1000U, 0xFFFFFFFFU, 0xFFFFFE00U, 0xFFFFFC19U}) {
        Polling waiting{.now = start, .step = 100, .reachedAt = 0};
        EXPECT_FALSE(waiting.run(1000));
        EXPECT_EQ(waiting.polls, 10) << start;

        Polling lastMoment{.now = start, .step = 100, .reachedAt = 10};
        EXPECT_TRUE(lastMoment.run(1000)) << start;
    }
}

}  // namespace
}  // namespace orvane
