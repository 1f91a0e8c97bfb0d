// SPDX-License-Identifier: Apache-2.0
#include "tests/support/simd_targets.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <hwy/targets.h>

void for_each_simd_target(const std::function<void(const std::string& target)>& body) {
    int64_t targets = hwy::SupportedTargets() & HWY_TARGETS;
    bool sawVectorTarget = false;
    while (targets != 0) {
        const int64_t target = targets & -targets;
        targets &= ~target;
        sawVectorTarget = sawVectorTarget || (target != HWY_SCALAR && target != HWY_EMU128);
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(target);
        const std::string name = hwy::TargetName(target);
        SCOPED_TRACE("SIMD target " + name);
        body(name);
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    EXPECT_TRUE(sawVectorTarget) << "no vector instruction set: only the scalar path was tested";
}
