// SPDX-License-Identifier: Apache-2.0
#include "algorithms/gauss_blur_iir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "algorithms/flush_denormals.h"
#include "algorithms/gauss_blur_iir_scalar.h"
#include "tests/support/guarded_bytes.h"
#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// The distance whose deviation is `sigma`.
float distance(double sigma) {
    return static_cast<float>(sigma * std::sqrt(2 * std::log(255.0)) - 1);
}

// A Gaussian as it is defined, over a line that goes on with its border values.
std::vector<double> true_gaussian(const std::vector<double>& line, double sigma) {
    const int reach = static_cast<int>(8 * sigma) + 2;
    const int last = static_cast<int>(line.size()) - 1;
    std::vector<double> result(line.size());
    for (int i = 0; i <= last; ++i) {
        double sum = 0;
        double weights = 0;
        for (int k = -reach; k <= reach; ++k) {
            const double weight = std::exp(-k * k / (2 * sigma * sigma));
            sum += weight * line[static_cast<size_t>(std::clamp(i + k, 0, last))];
            weights += weight;
        }
        result[static_cast<size_t>(i)] = sum / weights;
    }
    return result;
}

// A context with lines to work on.
struct Context : gaussiirContext {
    Context(size_t count, float deviation) : gaussiirContext(), forwards(count), backwards(count) {
        calculate_gauss_iir_coefficients(this, deviation);
        vp = forwards.data();
        vm = backwards.data();
    }
    std::vector<float> forwards, backwards;
};

TEST(GaussBlurIir, LinesAreGaussiansUpToTheErrorOfTheFit) {
    constexpr int kWidth = 900;
    // The largest difference on this line, in gray levels. Single precision runs out at about 30 pixels.
    const std::pair<double, double> errors[] = {{0.6, 0.44},  {1, 0.093}, {2, 0.07},
                                                {3.3, 0.085}, {10, 0.14}, {20, 0.33}};
    Bytes src = random_bytes(kWidth * 3, 11);
    for (size_t i = 0; i < kWidth; ++i) {
        src[i * 3 + 1] = i / 150 % 2 == 0 ? 255 : 0;
    }
    for (const auto& [sigma, error] : errors) {
        Context context(src.size(), static_cast<float>(sigma));
        Bytes dst(src.size());
        blur_line(&context, src.data(), dst.data(), kWidth, 3);
        double worst = 0;
        for (size_t channel = 0; channel < 3; ++channel) {
            std::vector<double> line(kWidth);
            for (size_t i = 0; i < kWidth; ++i) {
                line[i] = src[i * 3 + channel];
            }
            const std::vector<double> blurred = true_gaussian(line, sigma);
            for (size_t i = 0; i < kWidth; ++i) {
                const float sum = context.forwards[i * 3 + channel] + context.backwards[i * 3 + channel];
                worst = std::max(worst, std::abs(static_cast<double>(sum) - blurred[i]));
                ASSERT_EQ(dst[i * 3 + channel], static_cast<int>(std::clamp(sum, 0.0F, 255.0F)));
            }
        }
        EXPECT_LT(worst, error) << "deviation " << sigma;
        EXPECT_GT(worst, 0.8 * error) << "the bound for the deviation " << sigma << " is lax";
    }
    // Coefficients that are not numbers give black.
    Context context(src.size(), kNaN);
    blur_line(&context, src.data(), src.data(), kWidth, 3);
    EXPECT_EQ(src, Bytes(src.size(), 0));
}

TEST(GaussBlurIir, HorzActsDownTheColumnsAndVertAlongTheRows) {
    constexpr int kSide = 41;
    const size_t side = kSide;
    const size_t centre = side / 2;
    Bytes image(side * side * 3, 10);
    std::fill_n(&image[(centre * side + centre) * 3], 3, 250);
    std::vector<double> point(side, 0);
    point[centre] = 240;
    const std::vector<double> columns = true_gaussian(point, 3);
    const std::vector<double> rows = true_gaussian(point, 0.8);
    gaussiir(image.data(), kSide, kSide, 3, kSide * 3, distance(3), distance(0.8));
    for (size_t y = 0; y < side; ++y) {
        for (size_t x = 0; x < side; ++x) {
            // Each of the two passes cuts off less than one level.
            const double expected = 10 + columns[y] * rows[x] / 240;
            EXPECT_NEAR(image[(y * side + x) * 3], expected - 0.9, 1.2) << x << ',' << y;
        }
    }
}

struct Case {
    int width, height, depth, stride;
    float horz, vert;
};

TEST(GaussBlurIir, EqualsItsTwinForEverySizeAndStride) {
    std::vector<Case> cases;
    const float distances[] = {0.001F, 1, 3, 10, 32.3F, 400, 1e30F, kInfinity};
    size_t next = 0;
    for (const int height : {5, 6, 15, 16, 17, 18, 31, 33, 50}) {
        for (const int width : {5, 7, 15, 16, 17, 19, 30, 31, 32, 33, 34, 47, 48, 49, 63, 64, 65, 67}) {
            for (const int depth : {3, 4}) {
                cases.push_back({width, height, depth, width * depth + (width + height) % 3 * 5, distances[next % 8],
                                 distances[next / 3 % 8]});
                ++next;
            }
        }
    }
    cases.push_back({321, 203, 4, 321 * 4, 10, 10});
    cases.push_back({203, 321, 3, 203 * 3 + 1, 10, 3});
    // Rows bottom up, all rows on one, and rows that overlap: what the twin makes of them.
    for (const int stride : {-35 * 4, 0, 7, -9}) {
        cases.push_back({35, 21, 4, stride, 3, 5});
    }
    const korvane::FlushDenormals mode;
    for_each_simd_target([&](const std::string&) {
        for (const Case& c : cases) {
            const int rowBytes = c.width * c.depth;
            const auto apart = static_cast<size_t>(std::abs(c.stride)) * static_cast<size_t>(c.height - 1);
            const size_t start = c.stride < 0 ? apart : 0;
            Bytes content = random_bytes(apart + static_cast<size_t>(std::max(rowBytes, c.stride)), 3);
            if (c.stride - rowBytes == 5) {  // mostly black, where the recursions fade out
                std::fill(content.begin() + static_cast<std::ptrdiff_t>(content.size() / 8), content.end(), 0);
            }
            Bytes plain = content;
            korvane::gaussiir_scalar(&plain[start], c.width, c.height, c.depth, c.stride, c.horz, c.vert);
            GuardedBytes image(content, static_cast<size_t>(c.width % 4));
            gaussiir(image.data() + start, c.width, c.height, c.depth, c.stride, c.horz, c.vert);
            ASSERT_TRUE(image.content() == plain && image.intact())
                << c.width << 'x' << c.height << 'x' << c.depth << ' ' << c.stride << ' ' << c.horz << ' ' << c.vert;
            for (size_t i = 0; c.stride >= rowBytes && i < plain.size(); ++i) {
                const size_t inRow = i % static_cast<size_t>(c.stride);
                if (inRow >= static_cast<size_t>(rowBytes) || inRow % static_cast<size_t>(c.depth) == 3) {
                    ASSERT_EQ(plain[i], content[i]) << "alpha and padding stay";
                }
            }
        }
    });
}

TEST(GaussBlurIir, ArgumentsOutsideTheRangeChangeNothing) {
    const Bytes content = random_bytes(6 * 6 * 4, 5);
    Bytes image = content;
    const Case refused[] = {{4, 6, 4, 24, 3, 3},       {6, 4, 4, 24, 3, 3},       {INT_MIN, 6, 4, 24, 3, 3},
                            {6, -1, 4, 24, 3, 3},      {6, 6, 2, 24, 3, 3},       {6, 6, 5, 24, 3, 3},
                            {6, 6, INT_MAX, 24, 3, 3}, {6, 6, INT_MIN, 24, 3, 3}, {6, 6, 4, 24, 0, 3},
                            {6, 6, 4, 24, 3, -1},      {6, 6, 4, 24, kNaN, 3},    {6, 6, 4, 24, 3, kNaN},
                            {4, INT_MAX, 4, 24, 3, 3}};
    for (const Case& c : refused) {
        gaussiir(image.data(), c.width, c.height, c.depth, c.stride, c.horz, c.vert);
    }
    gaussiir(nullptr, 6, 6, 4, 24, 3, 3);

    Context context(24, 1);
    calculate_gauss_iir_coefficients(nullptr, 1);
    blur_line(nullptr, image.data(), image.data(), 6, 4);
    blur_line(&context, nullptr, image.data(), 6, 4);
    blur_line(&context, image.data(), nullptr, 6, 4);
    for (const int width : {0, -1, INT_MIN}) {
        blur_line(&context, image.data(), image.data(), width, 4);
    }
    blur_line(&context, image.data(), image.data(), 6, 2);
    context.vp = nullptr;
    blur_line(&context, image.data(), image.data(), 6, 4);
    EXPECT_EQ(image, content);
}

TEST(GaussBlurIir, TheCallersDenormalsSurvive) {
    volatile float least = FLT_MIN;
    Bytes image(20 * 20 * 4);
    for_each_simd_target([&](const std::string&) {
        gaussiir(image.data(), 20, 20, 4, 80, 3, 3);
        EXPECT_GT(least / 4, 0.0F);
    });
    {
        const korvane::FlushDenormals mode;
        EXPECT_EQ(least / 4, 0.0F);
        gaussiir(image.data(), 20, 20, 4, 80, 3, 3);
        EXPECT_EQ(least / 4, 0.0F);
    }
    EXPECT_GT(least / 4, 0.0F);
}

}  // namespace
