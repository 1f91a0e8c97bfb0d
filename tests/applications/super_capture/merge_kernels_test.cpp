// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/merge_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <vector>

#include "tests/support/guarded_bytes.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

constexpr size_t kMostBytes = 300;
constexpr size_t kOffsets = 3;

using Fold = void (*)(const uint8_t*, int*, size_t);

// Every fold over every count up to kMostBytes from unaligned starts, against `expected` for each element, with the
// elements beyond the count untouched.
void check_fold(Fold fold, int (*expected)(int sum, int byte)) {
    const std::vector<unsigned char> frame = random_bytes(kMostBytes + kOffsets, 1);
    const std::vector<unsigned char> noise = random_bytes(kMostBytes + kOffsets, 2);
    std::vector<int> before(noise.begin(), noise.end());
    before[7] = 0x7FFFFFF0;
    for (size_t count = 0; count <= kMostBytes; ++count) {
        const size_t offset = count % kOffsets;
        std::vector<int> sums = before;
        fold(frame.data() + offset, sums.data() + offset, count);
        for (size_t i = 0; i < sums.size(); ++i) {
            const bool inside = i >= offset && i < offset + count;
            ASSERT_EQ(sums[i], inside ? expected(before[i], frame[i]) : before[i]) << "count " << count << " at " << i;
        }
    }
}

TEST(MergeKernels, FoldFrames) {
    for_each_simd_target([](const std::string&) {
        check_fold(korvane::merge_max, [](int sum, int byte) { return sum > byte ? sum : byte; });
        check_fold(korvane::merge_first, [](int, int byte) { return byte; });
        check_fold(korvane::merge_add, [](int sum, int byte) {
            return static_cast<int>(static_cast<uint32_t>(sum) + static_cast<uint32_t>(byte));
        });
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
            std::vector<uint8_t> bytes(sums.size());
            korvane::merged_mean(sums.data(), bytes.data(), sums.size(), frames);
            for (size_t i = 0; i < sums.size(); ++i) {
                ASSERT_EQ(bytes[i], frames == 0 ? 0 : std::clamp(sums[i] / frames, 0, 255))
                    << sums[i] << " / " << frames;
            }
        }
    });
}

TEST(MergeKernels, ResultsFitEverySize) {
    const std::vector<unsigned char> noise = random_bytes(2 * kMostBytes, 3);
    std::vector<int> sums(kMostBytes);
    std::vector<int> threeFrames(kMostBytes);
    for (size_t i = 0; i < kMostBytes; ++i) {
        sums[i] = static_cast<int>(noise[i] * 256U * 256U * 128U + noise[i + kMostBytes]);
        threeFrames[i] = sums[i] & 0x2FF;
    }
    for_each_simd_target([&](const std::string&) {
        for (size_t count = 0; count < kMostBytes; ++count) {
            GuardedBytes low(std::vector<unsigned char>(count), count % kOffsets);
            GuardedBytes mean(std::vector<unsigned char>(count), count % kOffsets);
            korvane::merged_low_bytes(sums.data(), low.data(), count);
            korvane::merged_mean(threeFrames.data(), mean.data(), count, 3);
            ASSERT_TRUE(low.intact() && mean.intact()) << "count " << count;
            for (size_t i = 0; i < count; ++i) {
                ASSERT_EQ(low.data()[i], static_cast<uint8_t>(sums[i])) << "count " << count;
                ASSERT_EQ(mean.data()[i], threeFrames[i] / 3) << "count " << count;
            }
        }
    });
}

TEST(MergeKernels, LumaSumsOfEverySizeAndModulo32Bits) {
    const std::vector<unsigned char> bytes = random_bytes(2 * kMostBytes + kOffsets, 4);
    for_each_simd_target([&](const std::string&) {
        for (size_t pixels = 0; pixels <= kMostBytes; ++pixels) {
            const unsigned char* start = bytes.data() + pixels % kOffsets;
            uint32_t plane = 0;
            uint32_t yuyv = 0;
            for (size_t i = 0; i < pixels; ++i) {
                plane += start[i];
                yuyv += start[2 * i];
            }
            ASSERT_EQ(korvane::luma_sum(start, pixels), plane);
            ASSERT_EQ(korvane::luma_sum_yuyv(start, pixels), yuyv);
        }
        constexpr size_t kManyPixels = 17'000'001;
        const std::vector<unsigned char> bright(kManyPixels, 255);
        EXPECT_EQ(korvane::luma_sum(bright.data(), kManyPixels), static_cast<uint32_t>(kManyPixels * 255));
    });
    EXPECT_EQ(korvane::mean_luma(99, 4), 24);
    EXPECT_EQ(korvane::mean_luma(7, 0), 0);
    EXPECT_EQ(korvane::mean_luma(3'060'000'000U, 12'000'000), -102);
    EXPECT_EQ(korvane::mean_luma(0x80000000U, 0xFFFFFFFFU), -2147483647 - 1);
}

}  // namespace
