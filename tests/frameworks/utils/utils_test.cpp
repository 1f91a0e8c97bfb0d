// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <string>

#include "frameworks/utils/string_format.h"
#include "frameworks/utils/timers.h"

namespace {

TEST(Timers, DelayRoundsUpToWholeMilliseconds) {
    using Limits = std::numeric_limits<nsecs_t>;
    constexpr nsecs_t kRows[][3] = {{5, 5, 0},
                                    {6, 5, 0},
                                    {0, 1, 1},
                                    {0, 1'000'000, 1},
                                    {0, 1'000'001, 2},
                                    {0, 2'147'483'646'000'000, 2'147'483'646},
                                    {0, 2'147'483'646'000'001, -1},
                                    {Limits::min(), Limits::max(), -1}};
    for (const auto& [from, until, milliseconds] : kRows) {
        EXPECT_EQ(toMillisecondTimeoutDelay(from, until), milliseconds) << until;
    }
}

TEST(Timers, SystemTimeIsTheWallClock) {
    const auto microseconds = [] {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    };
    const auto before = microseconds();
    const nsecs_t now = systemTime(17);
    EXPECT_EQ(now % 1000, 0);
    EXPECT_LE(before, now / 1000);
    EXPECT_GE(microseconds(), now / 1000);
}

TEST(StringFormat, OneBufferClearedForEachCall) {
    char* first = string_format("%s%d", "frame-", 12345);
    EXPECT_STREQ(first, "frame-12345");
    char* second = string_format("%c", 'x');
    EXPECT_EQ(first, second);
    EXPECT_EQ(std::string(second, 12), std::string("x") + std::string(11, '\0'));
}

TEST(StringFormat, AbortsWhenTheTextDoesNotFit) {
    const std::string longest(2047, 'a');
    EXPECT_EQ(string_format("%s", longest.c_str()), longest);
    EXPECT_DEATH(string_format("%s!", longest.c_str()), "");
}

}  // namespace
