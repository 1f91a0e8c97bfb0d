// SPDX-License-Identifier: Apache-2.0
#include "algorithms/fast_detection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "algorithms/fast_detection_frame.h"
#include "algorithms/fast_detection_scalar.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

constexpr int kCircle[16][2] = {{0, 3},  {1, 3},   {2, 2},   {3, 1},   {3, 0},  {3, -1}, {2, -2}, {1, -3},
                                {0, -3}, {-1, -3}, {-2, -2}, {-3, -1}, {-3, 0}, {-3, 1}, {-2, 2}, {-1, 3}};

struct Picture {
    int width, height;
    std::vector<unsigned char> pixels =
        std::vector<unsigned char>(static_cast<size_t>(width) * static_cast<size_t>(height));
};

using Point = std::pair<int, int>;

std::vector<Point> corners_of(const Picture& picture, const FastParams& params) {
    std::vector<KeyPoint> keypoints(3, {9, 9, nullptr});
    fast16(picture.pixels.data(), keypoints, picture.width, picture.height, &params);
    std::vector<Point> points;
    for (const KeyPoint& keypoint : keypoints) {
        EXPECT_EQ(keypoint.values, nullptr);
        points.emplace_back(keypoint.x, keypoint.y);
    }
    return points;
}

// Blocks and lone pixels with noise: flat parts, plateaus of equal scores, dark and bright corners of every strength.
Picture random_picture(int width, int height, uint32_t seed) {
    Picture picture{width, height};
    const std::vector<unsigned char> random = random_bytes(picture.pixels.size() + 64, seed);
    const auto columns = static_cast<size_t>(width);
    for (size_t i = 0; i < picture.pixels.size(); ++i) {
        const unsigned char noise = random[i];
        const int block = random[picture.pixels.size() + (i / columns / 4 * 7 + i % columns / 5) % 64] & 0xC0;
        const int value = noise < 20 ? 255 : (noise > 240 ? 0 : block + 30 + noise % (1 + static_cast<int>(seed % 9)));
        picture.pixels[i] = static_cast<unsigned char>(value);
    }
    return picture;
}

constexpr FastParams kSweep[] = {
    // threshold, nonmax_suppression, min_dist, skipped_pixels, borderx, bordery
    {20, 1, 2, 0, 3, 3}, {20, 0, 2, 5, 3, 3},  {0, 1, 4, 0, 3, 4},     {-7, 0, 3, 0, 4, 3},
    {1, 1, 2, 0, 0, 0},  {60, 0, 9, 0, 1, -4}, {254, 0, 2, 0, 2, 3},   {300, 1, 2, 0, 3, 3},
    {40, 0, 1, 0, 3, 3}, {40, 1, 0, 0, -9, 1}, {10, 0, -6, 0, 3, 3},   {kMin, 1, kMax, 0, kMin, kMin},
    {12, 0, 2, 0, 3, 3}, {30, 1, 64, 0, 3, 3}, {20, 0, 2, 0, kMax, 3}, {20, 0, 2, 0, 3, kMax},
};

TEST(Fast16, EqualsItsTwinForEverySize) {
    for_each_simd_target([](const std::string& target) {
        size_t found = 0;
        uint32_t seed = 1;
        const auto check = [&](int width, int height, const FastParams& params) {
            const Picture picture = random_picture(width, height, ++seed);
            const korvane::FastFrame frame(width, height, params);
            std::vector<KeyPoint> keypoints;
            if (!frame.is_empty()) {
                korvane::fast16_scalar(picture.pixels.data(), keypoints, frame, params);
            }
            std::vector<Point> expected;
            for (const KeyPoint& keypoint : keypoints) {
                expected.emplace_back(keypoint.x, keypoint.y);
            }
            ASSERT_EQ(corners_of(picture, params), expected)
                << width << " x " << height << ", row " << &params - kSweep;
            found += expected.size();
        };
        for (int width = 1; width <= 90; ++width) {
            for (int height : {5, 7, 8, 11}) {
                check(width, height, kSweep[static_cast<size_t>(width * 3 + height) % std::size(kSweep)]);
            }
        }
        for (const FastParams& params : kSweep) {
            check(149, 37, params);
        }
        EXPECT_GT(found, 2000U) << target;
    });
}

// White dots on black: each is a corner and nothing else is, and of two neighbours neither scores more.
TEST(Fast16, KeepsTheFirstCornerOfEachCell) {
    Picture picture{100, 40};
    const std::vector<Point> dots = {{8, 7},   {15, 7},  {16, 7}, {9, 10}, {10, 11},
                                     {50, 20}, {51, 20}, {1, 25}, {42, 30}};
    for (const auto& [x, y] : dots) {
        picture.pixels[static_cast<size_t>(y * picture.width + x)] = 255;
    }
    const std::pair<FastParams, std::vector<Point>> rows[] = {
        // Cells of two columns by one row, then one column in 32 of the whole picture.
        {{254, 0, 2, 0, 3, 3}, {{8, 7}, {15, 7}, {16, 7}, {9, 10}, {10, 11}, {50, 20}, {42, 30}}},
        {{20, 0, 1, 0, 3, 3}, {{8, 7}, {15, 7}, {16, 7}, {9, 10}, {10, 11}, {50, 20}, {51, 20}}},
        {{20, 0, 8, 0, 3, 3}, {{8, 7}, {16, 7}, {10, 11}, {50, 20}, {42, 30}}},
        {{20, 1, 8, 0, 3, 3}, {{8, 7}, {42, 30}}},
        {{20, 0, 0, 0, 3, 3}, {{8, 7}}},
        {{20, 0, 8, 0, 9, 11}, {{10, 11}, {50, 20}}},
        {{20, 0, 8, 0, 50, 3}, {}},
        {{20, 1, 2, 0, 0, 0}, {{8, 7}, {1, 25}, {42, 30}}},
        {{255, 0, 8, 0, 3, 3}, {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(corners_of(picture, row.first), row.second) << "row " << &row - rows;
    }
}

TEST(Fast16, ScoreIsTheLargestThresholdThatPasses) {
    constexpr int kWidth = 60;
    int pixel[25];
    makeOffsets(pixel, kWidth, 16);
    const Picture picture = random_picture(kWidth, 40, 5);
    const auto passes = [&](const unsigned char* ptr, int threshold) {
        int darker = 0;
        int brighter = 0;
        for (int k = 0; k < 16 + 8 && darker < 9 && brighter < 9; ++k) {
            const int value = ptr[kCircle[k % 16][1] * kWidth + kCircle[k % 16][0]];
            darker = value < *ptr - threshold ? darker + 1 : 0;
            brighter = value > *ptr + threshold ? brighter + 1 : 0;
        }
        return darker == 9 || brighter == 9;
    };
    for (int i = 3 * kWidth + 3; i < 37 * kWidth - 3; ++i) {
        const unsigned char* ptr = &picture.pixels[static_cast<size_t>(i)];
        int score = -1;
        while (passes(ptr, score + 1)) {
            ++score;
        }
        for (const int threshold : {0, 1, 20, 100, kMax}) {
            EXPECT_EQ(cornerScore16(ptr, pixel, threshold), std::max(score, threshold - 1)) << i;
        }
    }
}

TEST(Fast16, SizesAndPointersOfNoImage) {
    const std::vector<unsigned char> flat(64, 3);
    const FastParams params = {0, 1, 2, 0, 3, 3};
    const FastParams wide = {0, 1, 2, 0, kMax / 2, 0};
    const auto expect_none = [](const unsigned char* pixels, int width, int height, const FastParams* given) {
        std::vector<KeyPoint> keypoints(1);
        fast16(pixels, keypoints, width, height, given);
        EXPECT_TRUE(keypoints.empty()) << width << " x " << height;
    };
    for (const auto& [width, height] :
         {Point{0, 8}, {8, 0}, {-8, -8}, {kMin, kMin}, {kMax, 6}, {kMax, kMax}, {6, kMax / 8}}) {
        expect_none(flat.data(), width, height, &wide);
    }
    expect_none(flat.data(), 8, 8, &params);
    expect_none(flat.data(), 8, 8, nullptr);
    expect_none(nullptr, 8, 8, &params);
}

TEST(MakeOffsets, WrapsThreeCirclesAndNoOther) {
    const std::vector<int> circles[] = {
        {300, 301, 202, 103, 3, -97, -198, -299, -300, -301, -202, -103, -3, 97, 198, 299},
        {200, 201, 102, 2, -98, -199, -200, -201, -102, -2, 98, 199},
        {100, 101, 1, -99, -100, -101, -1, 99}};
    int pixel[25];
    for (const std::vector<int>& circle : circles) {
        makeOffsets(pixel, 100, static_cast<int>(circle.size()));
        for (size_t k = 0; k < 25; ++k) {
            EXPECT_EQ(pixel[k], circle[k % circle.size()]) << k << " of " << circle.size();
        }
    }
    for (const int size : {0, -1, 10, 24, kMax}) {
        makeOffsets(pixel, kMax, size);
        EXPECT_EQ(pixel[0], 100) << "left as the circle of 8 was";
    }
    makeOffsets(pixel, kMin, 16);
}

}  // namespace
