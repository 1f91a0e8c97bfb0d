// SPDX-License-Identifier: Apache-2.0
#include "algorithms/gauss_blur.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "tests/algorithms/window_sum.h"
#include "tests/support/guarded_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

Bytes expected_pass(bool isOfRows, const Bytes& src, int width, int height, int radius) {
    const int inside = std::clamp(radius, 0, ((isOfRows ? width : height) - 1) / 2);
    const float reciprocal = 1.0F / static_cast<float>(2 * inside + 1);
    return plain_pass(isOfRows, src, width, height, 1, inside, [&](const auto& sum, int i) {
        return std::round(static_cast<float>(sum(i, inside)) * reciprocal);
    });
}

TEST(GaussBlur, PassesEqualThePlainMeanForEverySizeAndRadius) {
    struct Case {
        int width, height, radius;
        Bytes src, rows, columns;
    };
    std::vector<Case> cases;
    const auto add = [&](int width, int height, int radius) {
        const Bytes src = random_picture(width, height, 1, static_cast<uint32_t>(cases.size()));
        cases.push_back({width, height, radius, src, expected_pass(true, src, width, height, radius),
                         expected_pass(false, src, width, height, radius)});
    };
    for (const int other : {1, 2, 15, 17, 63, 65, 130}) {
        for (const int length : {1, 2, 3, 4, 5, 6, 8, 14, 15, 16, 17, 31, 33, 48, 63, 64, 65, 67, 129}) {
            for (const int radius : {-3, 0, 1, 2, 7, 30, INT_MAX}) {
                add(length, other, radius);
                add(other, length, radius);
            }
        }
    }
    // Every division of the narrow sums, in images that are large enough both ways for vectors.
    for (int radius = 3; radius < 128; ++radius) {
        add(2 * radius + 2, 7, radius);
        add(67, 2 * radius + 2, radius);
    }
    for (const int radius : {127, 128, 200, 1501, 2000}) {
        add(4003, 67, radius);
        add(67, 4003, radius);
    }
    for_each_simd_target([&](const std::string&) {
        for (const Case& c : cases) {
            for (const auto& [pass, result] : {std::pair(&box_blurH, &c.rows), {&box_blurV, &c.columns}}) {
                GuardedBytes from(c.src, static_cast<size_t>(c.width) % 7);
                GuardedBytes to(Bytes(c.src.size(), 1), static_cast<size_t>(c.radius & 3));
                pass(from.data(), to.data(), c.width, c.height, c.radius);
                ASSERT_TRUE(to.content() == *result && from.content() == c.src && to.intact() && from.intact())
                    << c.width << 'x' << c.height << " radius " << c.radius;
            }
        }
    });
}

TEST(GaussBlur, BlursLeaveTheirResultAndTheirLastRowsPass) {
    auto boxes = std::make_unique<gauss_blur_coef>();
    for_each_simd_target([&](const std::string&) {
        for (const auto& [width, height, radius] : {std::tuple(1, 1, 3),
                                                    {67, 130, 1},
                                                    {131, 64, 4},
                                                    {200, 19, 10},
                                                    {19, 200, -10},
                                                    {70, 70, 0},
                                                    {300, 280, 130},
                                                    {65, 33, INT_MAX}}) {
            const Bytes original = random_picture(width, height, 1, 3);
            GuardedBytes src(original, 1);
            GuardedBytes dst(Bytes(original.size(), 1), 2);
            box_blur(src.data(), dst.data(), width, height, radius);
            Bytes rows = expected_pass(true, original, width, height, radius);
            EXPECT_EQ(src.content(), rows);
            EXPECT_EQ(dst.content(), expected_pass(false, rows, width, height, radius));

            calculate_gauss_blur_coef(static_cast<float>(radius), 3, boxes.get());
            Bytes image = original;
            for (int i = 0; i < 3; ++i) {
                const int boxRadius = (boxes->coef_values[i] - 1) / 2;
                rows = expected_pass(true, image, width, height, boxRadius);
                image = expected_pass(false, rows, width, height, boxRadius);
            }
            std::copy(original.begin(), original.end(), src.data());
            gauss_blur(src.data(), dst.data(), width, height, radius);
            EXPECT_EQ(dst.content(), image) << width << 'x' << height << " radius " << radius;
            EXPECT_EQ(src.content(), rows);
            EXPECT_TRUE(src.intact() && dst.intact());
        }
    });
}

TEST(GaussBlur, NothingHappensWithoutAnImage) {
    Bytes src = {1, 2, 3, 4};
    Bytes dst = {5, 6, 7, 8};
    for (const auto blur : {box_blur, gauss_blur, box_blurH, box_blurV}) {
        for (const auto& [width, height] : {std::pair(0, 2), {2, 0}, {-1, 2}, {INT_MIN, INT_MIN}, {INT_MAX, -1}}) {
            blur(src.data(), dst.data(), width, height, 1);
        }
        blur(nullptr, dst.data(), 2, 2, 1);
        blur(src.data(), nullptr, 2, 2, 1);
    }
    EXPECT_EQ(src, (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(dst, (Bytes{5, 6, 7, 8}));
}

TEST(GaussBlur, BoxWidthsComeAsCloseToTheVarianceAsOddWidthsCanAndStayInTheTable) {
    auto boxes = std::make_unique<gauss_blur_coef>();
    calculate_gauss_blur_coef(1.0F, 3, boxes.get());
    EXPECT_EQ(std::vector<int>(boxes->coef_values, boxes->coef_values + 3), (std::vector<int>{1, 1, 3}));

    for (int n = 1; n <= 6; ++n) {
        for (float sigma = 0; sigma < 200; sigma += 0.37F) {
            calculate_gauss_blur_coef(sigma, n, boxes.get());
            ASSERT_EQ(boxes->coef_n, n);
            double excess = -12.0 * static_cast<double>(sigma) * static_cast<double>(sigma);
            for (int i = 0; i < n; ++i) {
                const int width = boxes->coef_values[i];
                ASSERT_EQ(width % 2, 1);
                ASSERT_TRUE(i == 0 || width >= boxes->coef_values[i - 1]);
                excess += width * width - 1;
            }
            // One box more or less of the wider kind changes the sum by 4 (width + 1).
            const int narrow = boxes->coef_values[0];
            EXPECT_LE(std::abs(excess), 2.0 * (narrow + 1) * 1.001 + 0.01) << n << " boxes, deviation " << sigma;
        }
    }

    // For any argument, nothing behind the table is written.
    auto two = std::make_unique<gauss_blur_coef[]>(2);
    for (const float sigma : {0.0F, -5.0F, 1e20F, std::numeric_limits<float>::infinity(), std::nanf("")}) {
        for (const int n : {INT_MIN, -1, 0, 1, 2048, 2049, INT_MAX}) {
            two[0].coef_values[0] = two[1].coef_n = -7;
            calculate_gauss_blur_coef(sigma, n, two.get());
            EXPECT_EQ(two[0].coef_n, n);
            EXPECT_EQ(two[0].coef_values[0] == -7, n < 1);
            EXPECT_EQ(two[1].coef_n, -7);
        }
    }
    calculate_gauss_blur_coef(1.0F, 3, nullptr);
}

}  // namespace
