// SPDX-License-Identifier: Apache-2.0
#include "applications/pano/frame_convert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

using Frame = std::vector<unsigned char>;

// Odd sizes; other ones are the fuzz target's, and the buffers' edges those of the protected pages.
TEST(FrameConvert, MovesEveryByteToItsPlane) {
    constexpr int kWidth = 67;
    constexpr int kHeight = 13;
    constexpr size_t kPixels = size_t{kWidth} * kHeight;
    const Frame source = random_bytes(kPixels * 3 / 2, 1);
    for_each_simd_target([&](const std::string&) {
        for (const bool isNv12 : {true, false}) {
            // The bytes that no plane covers stay as they are.
            Frame expected(source.size(), 0xA5);
            Frame planar(expected);
            std::copy_n(source.begin(), kPixels, expected.begin());
            for (size_t i = 0; i < kPixels / 4; ++i) {
                expected[kPixels * 5 / 4 + i] = source[kPixels + 2 * i + (isNv12 ? 0 : 1)];
                expected[kPixels + i] = source[kPixels + 2 * i + (isNv12 ? 1 : 0)];
            }
            (isNv12 ? convert_nv12_to_yv12 : convert_nv21_to_yv12)(source.data(), planar.data(), kWidth, kHeight);
            EXPECT_EQ(planar, expected) << isNv12;
        }
    });
}

TEST(FrameConvert, BadSizesConvertNothing) {
    const Frame src(6);
    Frame untouched(6, 7);
    for (const auto convert : {convert_nv12_to_yv12, convert_nv21_to_yv12}) {
        for (const auto& [width, height] : {std::pair(0, 2), {2, -1}, {-2, -2}, {INT_MIN, INT_MIN}}) {
            convert(src.data(), untouched.data(), width, height);
        }
        convert(nullptr, untouched.data(), 2, 2);
        convert(src.data(), nullptr, 2, 2);
    }
    EXPECT_EQ(untouched, Frame(6, 7));
}

}  // namespace
