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
    int width, height;
    std::vector<unsigned char> pixels =
        std::vector<unsigned char>(static_cast<size_t>(width) * static_cast<size_t>(height));
};

using Point = std::pair<int, int>;

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
        return index + kCircle[k % 16][1] * static_cast<int64_t>(m_Picture.width) + kCircle[k % 16][0];
    }

    // The first and the last byte of the circle.
    bool circle_is_inside(int64_t index) const {
        return neighbour(index, 9) >= 0 && neighbour(index, 1) < static_cast<int64_t>(m_Picture.pixels.size());
    }

    bool passes(int64_t index, int threshold) const {
        const int centre = m_Picture.pixels[static_cast<size_t>(index)];
        int darker = 0;
        int brighter = 0;
        for (int k = 0; k < 16 + 8 && darker < 9 && brighter < 9; ++k) {
            const int value = m_Picture.pixels[static_cast<size_t>(neighbour(index, k))];
            darker = value < centre - threshold ? darker + 1 : 0;
            brighter = value > centre + threshold ? brighter + 1 : 0;
        }
        return darker == 9 || brighter == 9;
    }

    // A neighbour that is no corner counts as score 0, so a corner that scores 0 is never a maximum.
    bool is_maximum(int x, int y) const {
        int most = 0;
        for (int i = 0; i < 9; ++i) {
            most = std::max(most, i == 4 ? 0 : score(x + i % 3 - 1, y + i / 3 - 1));
        }
        return score(x, y) > most;
    }

    const Picture& m_Picture;
    const FastParams m_Params;
    std::vector<int> m_Scores;
};

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

TEST(Fast16, EqualsTheDefinitions) {
    for_each_simd_target([](const std::string& target) {
        size_t found = 0;
        uint32_t seed = 1;
        const auto check = [&](int width, int height, const FastParams& params) {
            const Picture picture = random_picture(width, height, ++seed);
            const std::vector<Point> expected = Model(picture, params).corners();
            std::vector<KeyPoint> keypoints(3, {9, 9, nullptr});
            fast16(picture.pixels.data(), keypoints, width, height, &params);
            std::vector<Point> points;
            for (const KeyPoint& keypoint : keypoints) {
                EXPECT_EQ(keypoint.values, nullptr);
                points.emplace_back(keypoint.x, keypoint.y);
            }
            ASSERT_EQ(points, expected) << width << " x " << height << ", row " << &params - kSweep;
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
    const std::vector<unsigned char> flat(64, 3);
    const FastParams params = {0, 1, 2, 0, 3, 3};
    const FastParams wide = {0, 1, 2, 0, kMax / 2, 0};
    const auto expect_none = [](const unsigned char* pixels, int width, int height, const FastParams* given) {
        std::vector<KeyPoint> keypoints(1, {1, 1, nullptr});
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
