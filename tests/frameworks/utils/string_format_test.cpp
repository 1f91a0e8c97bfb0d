// SPDX-License-Identifier: Apache-2.0
#include "frameworks/utils/string_format.h"

#include <gtest/gtest.h>

#include <string>

namespace {

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
