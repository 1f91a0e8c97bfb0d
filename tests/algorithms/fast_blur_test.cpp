// SPDX-License-Identifier: Apache-2.0
#include "algorithms/fast_blur.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/algorithms/window_sum.h"
#include "tests/support/guarded_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

struct Case {
    Case(int w, int h, int r)
        : width(w),
          height(h),
          radius(r),
          src(random_picture(w, h, 4, static_cast<uint32_t>(w * 131) + static_cast<uint32_t>(r))) {
        const int inside = std::min({r, w, h});
        const int divisor = 2 * inside + 1;
        const Bytes rows =
            plain_pass(true, src, w, h, 4, inside, [&](const auto& sum, int x) { return sum(x, inside) / divisor; });
        expected = plain_pass(false, rows, w, h, 4, inside, [&](const auto& sum, int y) {
            // A window that reaches the height counts a black pixel for the first one below the image.
            return (sum(y, inside) - (inside == h ? sum(h - 1, 0) : 0)) / divisor;
        });
        for (size_t i = 3; i < expected.size(); i += 4) {
            expected[i] = 0xFF;
        }
    }

    int width, height, radius;
    Bytes src;
    Bytes expected;
};

TEST(FastBlur, EqualsThePlainMeanForEverySizeAndRadius) {
    std::vector<Case> cases;
    for (const int height : {1, 2, 3, 15, 16, 17, 33, 50}) {
        for (const int width : {1, 2, 3, 4, 5, 15, 16, 17, 19, 31, 32, 33, 47, 64, 65, 66, 67, 131}) {
            for (const int radius : {1, 2, 3, 7, 16, 33, 60}) {
                cases.emplace_back(width, height, radius);
            }
        }
    }
    for (int radius = 4; radius < 128; ++radius) {  // every division of the narrow sums
        cases.emplace_back(radius + 3, radius + 1, radius);
    }
    for (const int radius : {127, 128, 129, 255, 300, INT_MAX}) {
        cases.emplace_back(283, 290, radius);
        cases.emplace_back(260, 133, radius);
    }
    for_each_simd_target([&](const std::string&) {
        for (size_t i = 0; i < cases.size(); ++i) {
            const auto& [width, height, radius, bytes, expected] = cases[i];
            // Apart, in place, and overlapping by all but some pixels.
            GuardedBytes dst(Bytes(bytes.size(), 1), i % 5);
            const size_t shift = i % (bytes.size() / 4);
            std::vector<uint32_t> src(bytes.size() / 4 + shift);
            auto* inPlace = reinterpret_cast<unsigned char*>(src.data());
            for (unsigned char* to : {dst.data(), inPlace, inPlace + 4 * shift}) {
                std::memcpy(src.data(), bytes.data(), bytes.size());
                fast_blur(src.data(), to, width, height, radius);
                ASSERT_EQ(std::memcmp(to, expected.data(), bytes.size()), 0)
                    << width << 'x' << height << " radius " << radius << (to == dst.data() ? " apart" : " over it");
                ASSERT_TRUE(to != dst.data() || std::memcmp(src.data(), bytes.data(), bytes.size()) == 0);
            }
            ASSERT_TRUE(dst.intact());
        }
    });
}

TEST(FastBlur, NothingToDoLeavesTheResultUntouched) {
    uint32_t src[4] = {1, 2, 3, 4};
    Bytes dst(16, 7);
    const int refused[][3] = {
        {2, 2, 0}, {2, 2, -1},  {2, 2, INT_MIN}, {0, 2, 1},
        {2, 0, 1}, {-1, -1, 1}, {INT_MIN, 2, 1}, {INT_MAX, INT_MAX, INT_MAX}};  // the last: no memory for its sums
    for_each_simd_target([&](const std::string&) {
        for (const auto& [width, height, radius] : refused) {
            fast_blur(src, dst.data(), width, height, radius);
            EXPECT_EQ(dst, Bytes(16, 7)) << width << 'x' << height << " radius " << radius;
        }
        fast_blur(nullptr, dst.data(), 2, 2, 1);
        fast_blur(src, nullptr, 2, 2, 1);
        EXPECT_EQ(dst, Bytes(16, 7));
    });
}

}  // namespace
