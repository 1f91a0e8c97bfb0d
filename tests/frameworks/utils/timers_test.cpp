// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/timers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

namespace {

TEST(Timers, DelayRoundsUpToWholeMilliseconds) {
    EXPECT_EQ(toMillisecondTimeoutDelay(5, 5), 0);
    EXPECT_EQ(toMillisecondTimeoutDelay(6, 5), 0);
    EXPECT_EQ(toMillisecondTimeoutDelay(0, 1), 1);
    EXPECT_EQ(toMillisecondTimeoutDelay(0, 1'000'000), 1);
    EXPECT_EQ(toMillisecondTimeoutDelay(0, 1'000'001), 2);
    EXPECT_EQ(toMillisecondTimeoutDelay(0, 2'147'483'646'000'000), 2'147'483'646);
    EXPECT_EQ(toMillisecondTimeoutDelay(0, 2'147'483'646'000'001), -1);
    EXPECT_EQ(toMillisecondTimeoutDelay(std::numeric_limits<nsecs_t>::min(), std::numeric_limits<nsecs_t>::max()), -1);
}

TEST(Timers, SystemTimeIsTheWallClock) {
    using namespace std::chrono;
    const auto before = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    const nsecs_t now = systemTime(17);
    const auto after = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    EXPECT_EQ(now % 1000, 0);
    EXPECT_LE(before, now / 1000);
    EXPECT_GE(after, now / 1000);
}

}  // namespace
