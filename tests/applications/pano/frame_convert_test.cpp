#include "applications/pano/frame_convert.h"

#include <gtest/gtest.h>

#include <vector>

#include "applications/pano/frame_convert_scalar.h"
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
    constexpr int kGuard = 8;
    const Frame noise = random_bytes(70 * 13 * 3 / 2 + kGuard, 1);
    for_each_simd_target([&](const std::string&) {
        for (int width = 1; width <= 67; ++width) {
            for (const int height : {1, 2, 3, 8, 13}) {
                const auto bytes = static_cast<size_t>(width * height * 3 / 2);
                const auto offset = static_cast<size_t>(width % 3);
                // Bytes that no plane covers, as odd sizes have them, and those behind the frame stay as they are.
                const Frame before(bytes + kGuard, 0xA5);
                for (const bool isNv12 : {true, false}) {
                    Frame shifted(bytes + kGuard + offset, 0xA5);
                    (isNv12 ? convert_nv12_to_yv12 : convert_nv21_to_yv12)(
                        const_cast<unsigned char*>(noise.data()) + offset, shifted.data() + offset, width, height);
                    const Frame got(shifted.begin() + static_cast<std::ptrdiff_t>(offset), shifted.end());
                    ASSERT_EQ(got, plain_yv12(noise.data() + offset, width, height, isNv12, before))
                        << width << " x " << height << (isNv12 ? " NV12" : " NV21");
                }
            }
        }
    });
}

TEST(FrameConvert, TwinSplitsPairsAndBadSizesConvertNothing) {
    const unsigned char pairs[] = {1, 2, 3, 4, 5, 6};
    unsigned char evens[4] = {};
    unsigned char odds[4] = {};
    korvane::split_pairs_scalar(pairs, evens, odds, 3);
    EXPECT_EQ(Frame(evens, evens + 4), (Frame{1, 3, 5, 0}));
    EXPECT_EQ(Frame(odds, odds + 4), (Frame{2, 4, 6, 0}));
    unsigned char untouched[3] = {7, 7, 7};
    for (const int bad : {0, -1, -2147483647 - 1}) {
        convert_nv12_to_yv12(pairs, untouched, bad, 2);
        convert_nv21_to_yv12(pairs, untouched, 2, bad);
        convert_nv21_to_yv12(pairs, untouched, bad, bad);
    }
    convert_nv12_to_yv12(nullptr, untouched, 2, 1);
    convert_nv12_to_yv12(pairs, nullptr, 2, 1);
    EXPECT_EQ(Frame(untouched, untouched + 3), (Frame{7, 7, 7}));
}

}  // namespace
