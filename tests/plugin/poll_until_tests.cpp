#include "plugin/poll_until.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(PollUntil, PollsOnceAtLeastAndUntilTheTimeOutAlsoWhenTheClockWraps) {
    const struct {
        std::uint32_t timeoutMs;
        int reachedAt;  // poll number, counted from 1; 0 is never
        int polls;
    } cases[] = {{0, 1, 1}, {0, 0, 1}, {1000, 0, 10}, {1000, 10, 10}, {1000, 3, 3}};
    for (const auto& [timeoutMs, reachedAt, expected] : cases)
        for (const std::uint32_t start : {0U, 1000U, 0xFFFFFFFFU, 0xFFFFFE00U, 0xFFFFFC19U}) {
            std::uint32_t now = start;
            int polls = 0;
            int works = 0;
            const bool reached = pollUntil(
                timeoutMs, [&] { return now; },
                [&, at = reachedAt] {
                    now += 100;
                    return ++polls == at;
                },
                [&] { ++works; });
            EXPECT_EQ(reached, reachedAt != 0) << start;
            EXPECT_EQ(polls, expected) << start;
            EXPECT_EQ(works, polls);
        }
}

}  // namespace
}  // namespace orvane
