// SPDX-License-Identifier: Apache-2.0
#include "applications/pano/frame_convert.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/guarded_bytes.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

using Frame = std::vector<unsigned char>;

Frame plain_yv12(const unsigned char* src, int width, int height, bool isNv12, Frame dst) {
    const int n = width * height;
    std::copy_n(src, n, dst.begin());
    for (int i = 0; i < n / 4; ++i) {
        dst[static_cast<size_t>(n * 5 / 4 + i)] = src[n + 2 * i + (isNv12 ? 0 : 1)];
        dst[static_cast<size_t>(n + i)] = src[n + 2 * i + (isNv12 ? 1 : 0)];
    }
    return dst;
}

TEST(FrameConvert, EverySmallAndOddSizeAtAnyAlignment) {
    const Frame noise = random_bytes(70 * 13 * 3 / 2, 1);
    for_each_simd_target([&](const std::string&) {
        for (int width = 1; width <= 67; ++width) {
            for (const int height : {1, 2, 3, 8, 13}) {
                const auto offset = static_cast<size_t>(width % 3);
                // Bytes that no plane covers, as odd sizes have them, stay as they are.
                const Frame before(static_cast<size_t>(width * height * 3 / 2), 0xA5);
                for (const bool isNv12 : {true, false}) {
                    GuardedBytes got(before, offset);
                    const auto convert = isNv12 ? convert_nv12_to_yv12 : convert_nv21_to_yv12;
                    convert(noise.data() + offset, got.data(), width, height);
                    ASSERT_EQ(got.content(), plain_yv12(noise.data() + offset, width, height, isNv12, before))
                        << width << " x " << height << (isNv12 ? " NV12" : " NV21");
                    ASSERT_TRUE(got.intact());
                }
            }
        }
    });
}

TEST(FrameConvert, BadSizesConvertNothing) {
    const Frame src(6);
    Frame untouched(6, 7);
    for (const auto convert : {convert_nv12_to_yv12, convert_nv21_to_yv12}) {
        for (const int bad : {0, -1, -2147483647 - 1}) {
            convert(src.data(), untouched.data(), bad, 2);
            convert(src.data(), untouched.data(), 2, bad);
            convert(src.data(), untouched.data(), bad, bad);
        }
        convert(nullptr, untouched.data(), 2, 2);
        convert(src.data(), nullptr, 2, 2);
    }
    EXPECT_EQ(untouched, Frame(6, 7));
}

}  // namespace
