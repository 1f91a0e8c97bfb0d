// SPDX-License-Identifier: Apache-2.0
#include "algorithms/fast_detection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

constexpr int kCircle[16][2] = {{0, 3},  {1, 3},   {2, 2},   {3, 1},   {3, 0},  {3, -1}, {2, -2}, {1, -3},
                                {0, -3}, {-1, -3}, {-2, -2}, {-3, -1}, {-3, 0}, {-3, 1}, {-2, 2}, {-1, 3}};

struct Picture {
    int width;
    int height;
    std::vector<unsigned char> pixels;

    unsigned char& at(int x, int y) {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

Picture flat(int width, int height, unsigned char value = 0) {
    return {width, height, std::vector<unsigned char>(static_cast<size_t>(width) * static_cast<size_t>(height), value)};
}

using Point = std::pair<int, int>;

std::vector<Point> detect(const Picture& picture, const FastParams& params) {
    std::vector<KeyPoint> keypoints(3, {9, 9, nullptr});
    fast16(picture.pixels.data(), keypoints, picture.width, picture.height, &params);
    std::vector<Point> points;
    for (const KeyPoint& keypoint : keypoints) {
        EXPECT_EQ(keypoint.values, nullptr);
        points.emplace_back(keypoint.x, keypoint.y);
    }
    return points;
}

// The detector from its definitions, one pixel and one threshold at a time.
class Model {
  public:
    Model(const Picture& picture, const FastParams& params)
        : m_Picture(picture), m_Params(params), m_Scores(picture.pixels.size(), kNoCorner) {
        const int threshold = std::clamp(params.threshold, 0, 255);
        const int64_t borderX = std::max(params.borderx, 0);
        const int64_t borderY = std::max(params.bordery, 0);
        for (int64_t y = borderY; y < picture.height - borderY; ++y) {
            for (int64_t x = borderX; x < picture.width - borderX; ++x) {
                const int64_t index = y * picture.width + x;
                if (circle_is_inside(index) && passes(index, threshold)) {
                    int score = threshold;
                    while (passes(index, score + 1)) {
                        ++score;
                    }
                    m_Scores[static_cast<size_t>(index)] = score;
                }
            }
        }
    }

    std::vector<Point> corners() const {
        const int half = std::max(m_Params.min_dist, 0) / 2;
        std::set<Point> taken;
        std::vector<Point> result;
        for (int y = 0; y < m_Picture.height; ++y) {
            for (int x = 0; x < m_Picture.width; ++x) {
                if (score(x, y) == kNoCorner || (m_Params.nonmax_suppression != 0 && !is_maximum(x, y))) {
                    continue;
                }
                const int bin = m_Params.min_dist > 0 ? x / m_Params.min_dist : 0;
                const int band = half > 0 ? (y + 1) / half : 0;
                if (taken.insert({band, bin % 32}).second) {
                    result.emplace_back(x, y);
                }
            }
        }
        return result;
    }

    // -1 where there is no corner.
    int score(int x, int y) const {
        const bool inside = x >= 0 && x < m_Picture.width && y >= 0 && y < m_Picture.height;
        return inside ? m_Scores[static_cast<size_t>(y * m_Picture.width + x)] : kNoCorner;
    }

  private:
    static constexpr int kNoCorner = -1;

    int64_t neighbour(int64_t index, int k) const {
        return index + kCircle[k][1] * static_cast<int64_t>(m_Picture.width) + kCircle[k][0];
    }

    bool circle_is_inside(int64_t index) const {
        for (int k = 0; k < 16; ++k) {
            if (neighbour(index, k) < 0 || neighbour(index, k) >= static_cast<int64_t>(m_Picture.pixels.size())) {
                return false;
            }
        }
        return true;
    }

    bool passes(int64_t index, int threshold) const {
        const int centre = m_Picture.pixels[static_cast<size_t>(index)];
        for (int start = 0; start < 16; ++start) {
            int darker = 0;
            int brighter = 0;
            for (int k = start; k < start + 9; ++k) {
                const int value = m_Picture.pixels[static_cast<size_t>(neighbour(index, k % 16))];
                darker += value < centre - threshold;
                brighter += value > centre + threshold;
            }
            if (darker == 9 || brighter == 9) {
                return true;
            }
        }
        return false;
    }

    // A neighbour that is no corner counts as score 0, so a corner that scores 0 is never a maximum.
    bool is_maximum(int x, int y) const {
        for (int dy = -1; dy <= 1; ++dy) {
            for (int dx = -1; dx <= 1; ++dx) {
                if ((dx != 0 || dy != 0) && score(x, y) <= std::max(score(x + dx, y + dy), 0)) {
                    return false;
                }
            }
        }
        return true;
    }

    const Picture& m_Picture;
    const FastParams m_Params;
    std::vector<int> m_Scores;
};

// Blocks and lone pixels with noise: flat parts, plateaus of equal scores, dark and bright corners of every strength.
Picture random_picture(int width, int height, uint32_t seed) {
    Picture picture = flat(width, height);
    const std::vector<unsigned char> random = random_bytes(picture.pixels.size() + 64, seed);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const unsigned char noise = random[static_cast<size_t>(y * width + x)];
            const int block = random[picture.pixels.size() + static_cast<size_t>((y / 4 * 7 + x / 5) % 64)] & 0xC0;
            const int value =
                noise < 20 ? 255 : (noise > 240 ? 0 : block + 30 + noise % (1 + static_cast<int>(seed % 9)));
            picture.at(x, y) = static_cast<unsigned char>(value);
        }
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

TEST(Fast16, EqualsTheDefinitions) {
    for_each_simd_target([](const std::string& target) {
        size_t found = 0;
        uint32_t seed = 1;
        const auto check = [&](int width, int height, const FastParams& params) {
            const Picture picture = random_picture(width, height, ++seed);
            const std::vector<Point> expected = Model(picture, params).corners();
            ASSERT_EQ(detect(picture, params), expected)
                << width << " x " << height << ", threshold " << params.threshold << ", suppression "
                << params.nonmax_suppression << ", min_dist " << params.min_dist << ", borders " << params.borderx
                << " " << params.bordery;
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

TEST(Fast16, ScoreIsTheLargestThresholdThatPasses) {
    int pixel[25];
    makeOffsets(pixel, 60, 16);
    const Picture picture = random_picture(60, 40, 5);
    const Model model(picture, {0, 0, 2, 0, 3, 3});
    for (int y = 3; y < 37; ++y) {
        for (int x = 3; x < 57; ++x) {
            const unsigned char* ptr = &picture.pixels[static_cast<size_t>(y * 60 + x)];
            const int score = model.score(x, y);
            for (const int threshold : {0, 1, 20, 100, kMax}) {
                EXPECT_EQ(cornerScore16(ptr, pixel, threshold), std::max(score, threshold - 1)) << x << ", " << y;
            }
        }
    }
}

TEST(Fast16, SizesAndPointersOfNoImage) {
    const Picture picture = flat(8, 8, 3);
    const FastParams params = {0, 1, 2, 0, 3, 3};
    std::vector<KeyPoint> keypoints(1);
    const FastParams wide = {0, 1, 2, 0, kMax / 2, 0};
    for (const auto& [width, height] :
         {Point{0, 8}, {8, 0}, {-8, -8}, {kMin, kMin}, {kMax, 6}, {kMax, kMax}, {6, kMax / 8}, {8, 8}}) {
        keypoints.assign(1, {1, 1, nullptr});
        fast16(picture.pixels.data(), keypoints, width, height, width == 8 && height == 8 ? &params : &wide);
        EXPECT_TRUE(keypoints.empty()) << width << " x " << height;
    }
    for (const unsigned char* pixels : {static_cast<const unsigned char*>(nullptr), picture.pixels.data()}) {
        keypoints.assign(1, {1, 1, nullptr});
        fast16(pixels, keypoints, 8, 8, pixels == nullptr ? &params : nullptr);
        EXPECT_TRUE(keypoints.empty());
    }
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
