// SPDX-License-Identifier: Apache-2.0
// Other sizes and alignments are the fuzz targets', and the buffers' edges those of the protected pages.
#include "applications/super_capture/merge_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <vector>

#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

constexpr size_t kCount = 299;  // whole vectors and a rest

TEST(MergeKernels, FoldFramesAndSumTheirLuma) {
    using Fold = void (*)(const uint8_t*, int*, size_t);
    const std::pair<Fold, int (*)(int sum, int byte)> folds[] = {
        {korvane::merge_max, [](int sum, int byte) { return std::max(sum, byte); }},
        {korvane::merge_first, [](int, int byte) { return byte; }},
        {korvane::merge_add, [](int sum, int byte) { return sum + byte; }},
    };
    const std::vector<unsigned char> frame = random_bytes(kCount * 2, 1);
    std::vector<int> before(frame.rbegin(), frame.rend());
    before[7] = 0x7FFFFF00;
    uint32_t plane = 0;
    uint32_t yuyv = 0;
    for (size_t i = 0; i < kCount; ++i) {
        plane += frame[i];
        yuyv += frame[2 * i];
    }
    const std::vector<unsigned char> bright(17'000'001, 255);
    for_each_simd_target([&](const std::string&) {
        for (const auto& [fold, expected] : folds) {
            std::vector<int> sums = before;
            fold(frame.data(), sums.data(), kCount);
            for (size_t i = 0; i < sums.size(); ++i) {
                ASSERT_EQ(sums[i], i < kCount ? expected(before[i], frame[i]) : before[i]) << i;
            }
        }
        EXPECT_EQ(korvane::luma_sum(frame.data(), kCount), plane);
        EXPECT_EQ(korvane::luma_sum_yuyv(frame.data(), kCount), yuyv);
        EXPECT_EQ(korvane::luma_sum(bright.data(), bright.size()), static_cast<uint32_t>(bright.size() * 255));
    });
}

TEST(MergeKernels, MeansAreTruncatedForEveryFrameCount) {
    for_each_simd_target([](const std::string&) {
        // Just below, at and above every step of the quotient, and sums that no such burst has. Around the switch to
        // plain division at 100 frames too.
        for (int frames : {0, 1, 2, 3, 5, 7, 24, 64, 65, 99, 100, 101, 128, 4097, 8'000'000}) {
            std::vector<int> sums = {INT_MIN, -65536, -32769, -1, 32767, 32768, 65536, INT_MAX};
            for (int value = 0; value <= 255; ++value) {
                for (int nudge = -1; nudge <= 1; ++nudge) {
                    sums.push_back(value * frames + nudge);
                }
            }
            std::vector<uint8_t> means(sums.size() - 1);  // an odd number
            std::vector<uint8_t> low(means);
            korvane::merged_mean(sums.data(), means.data(), means.size(), frames);
            korvane::merged_low_bytes(sums.data(), low.data(), low.size());
            for (size_t i = 0; i < means.size(); ++i) {
                ASSERT_EQ(means[i], frames == 0 ? 0 : std::clamp(sums[i] / frames, 0, 255))
                    << sums[i] << " / " << frames;
                ASSERT_EQ(low[i], static_cast<uint8_t>(sums[i]));
            }
        }
    });
}

}  // namespace
