// SPDX-License-Identifier: Apache-2.0
#include "tests/support/jvm.h"

namespace {

class Effects : public JvmTest {};

TEST_F(Effects, JUnitTestsPass) {
    EXPECT_EQ(junit_failures("EffectsTest"), "");
}

}  // namespace
