// SPDX-License-Identifier: Apache-2.0
#include "algorithms/alpha_blend.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/guarded_bytes.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Color = std::array<int, 3>;

// What both blends promise, byte by byte; `stepped` is the one of the bitmap path.
void expect_both(int size, size_t misalignment, Color color, int a) {
    const Bytes before = random_bytes(static_cast<size_t>(size > 0 ? size : 0) * 4, static_cast<uint32_t>(size));
    for (const bool stepped : {false, true}) {
        const int64_t inverse = stepped ? (256 - int64_t{a}) & 255 : 256 - int64_t{a};
        Bytes expected = before;
        for (size_t i = 0; i < (stepped ? before.size() / 32 * 32 : before.size()); ++i) {
            if (i % 4 != 3) {
                expected[i] = static_cast<unsigned char>((a * int64_t{color[i % 4]} + before[i] * inverse) >> 8);
            }
        }
        GuardedBytes pixels(before, misalignment);
        (stepped ? alpha_blend_neon : alpha_blend)(pixels.data(), size, color[0], color[1], color[2], a);
        ASSERT_TRUE(pixels.content() == expected && pixels.intact())
            << (stepped ? "stepped" : "plain") << " size " << size << " offset " << misalignment << " a " << a;
    }
}

TEST(AlphaBlend, FollowsTheFormulaForEveryWeightAndSize) {
    for_each_simd_target([](const std::string&) {
        for (int a = 0; a <= 256; ++a) {
            expect_both(77, 0, {0, 255, a & 255}, a);
        }
        for (int size = -9; size <= 83; ++size) {
            for (const int a : {0, 1, 128, 256}) {
                expect_both(size, static_cast<size_t>(size + 9) % 5, {16, 32, 48}, a);
            }
        }
        expect_both(INT_MIN, 0, {1, 2, 3}, 100);
        // Out of range, arithmetic wraps.
        for (const int a : {-1, -300, 257, 511, 70000, INT_MAX, INT_MIN}) {
            expect_both(41, 1, {-1, 256, 100000}, a);
            expect_both(41, 1, {INT_MIN, INT_MAX, 7}, a);
        }
    });
}

}  // namespace
