// SPDX-License-Identifier: Apache-2.0
#include "algorithms/lbp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "algorithms/lbp_scalar.h"
#include "tests/support/simd_targets.h"

namespace {

using Values = std::vector<unsigned int>;

struct Size {
    unsigned short rows;
    unsigned short cols;
};

// Few values, so that neighbours are often equal, lying about the sign bit and the wrap of the sums.
Values random_image(Size size, uint32_t seed) {
    std::mt19937 generator(seed);
    Values img(static_cast<size_t>(size.rows) * size.cols);
    for (unsigned int& value : img) {
        value = static_cast<unsigned int>(generator() % 4 * 0x3FFFFFFF + generator() % 2);
    }
    return img;
}

// The function and its twin leave the same in the image and in `count` elements, and nothing in one more.
template <typename T, typename Walk>
void expect_twin(Walk walk, Walk twin, Size size, unsigned int count, const Values& img) {
    SCOPED_TRACE(testing::Message() << size.rows << " x " << size.cols << ", " << count << " elements");
    // Integers that wrap at the first step up or down.
    using Limits = std::numeric_limits<T>;
    std::vector<T> vec(count + 1);
    for (size_t i = 0; i <= count; ++i) {
        vec[i] = Limits::is_integer ? (i % 2 == 0 ? Limits::min() : Limits::max())
                                    : static_cast<T>(1.0 / (static_cast<int>(i) + 3));
    }
    std::vector<T> expected = vec;
    Values used = img;
    Values expectedUsed = img;
    if constexpr (Limits::is_integer) {
        walk(vec.data(), count, used.data(), size.rows, size.cols);
        twin(expected.data(), count, expectedUsed.data(), size.rows, size.cols);
    } else {
        EXPECT_EQ(walk(vec.data(), count, used.data(), size.rows, size.cols),
                  twin(expected.data(), count, expectedUsed.data(), size.rows, size.cols));
    }
    EXPECT_EQ(vec, expected);
    EXPECT_EQ(used, expectedUsed);
}

void expect_twins(Size size, unsigned int slots, const Values& img) {
    expect_twin<unsigned int>(lbp_pyr_features_sparse, korvane::lbp_pyr_features_sparse_scalar, size, slots / 256, img);
    expect_twin<char>(lbp_pyr_features, korvane::lbp_pyr_features_scalar, size, slots, img);
    expect_twin<long>(lbp_pyr_addvec, korvane::lbp_pyr_addvec_scalar, size, slots, img);
    expect_twin<long>(lbp_pyr_subvec, korvane::lbp_pyr_subvec_scalar, size, slots, img);
    expect_twin<double>(lbp_pyr_dotprod, korvane::lbp_pyr_dotprod_scalar, size, slots, img);
}

TEST(Lbp, EqualsItsTwinForEverySize) {
    for_each_simd_target([](const std::string&) {
        for (unsigned int rows = 0; rows <= 41; rows += rows < 20 ? 1 : 7) {
            for (const unsigned short cols : std::initializer_list<unsigned short>{0, 2, 3, 6, 13}) {
                const Size size = {static_cast<unsigned short>(rows), cols};
                const Values img = random_image(size, rows * 64 + cols);
                const unsigned int dim = lbp_pyr_get_dim(size.rows, cols, 2);
                // Cut in the middle of a block and of a level, and more than the pyramid holds.
                for (const unsigned int slots : {dim / 3 | 77U, dim / 3 | 255U, dim + 5000}) {
                    expect_twins(size, slots, img);
                }
            }
        }
        expect_twins({301, 37}, 12'000 * 256, random_image({301, 37}, 1));
        expect_twins({2, 65'535}, 9 * 256, Values(2 * 65'535));
        expect_twins({67, 71}, lbp_pyr_get_dim(67, 71, 5), random_image({67, 71}, 2));
    });
}

// Columns of seven that rise or fall. Two levels have pixels inside, and of one more nothing comes.
TEST(Lbp, PatternsOfSlopes) {
    constexpr unsigned int kPlaces = 5 * 4 + 1;
    constexpr unsigned int kSlots = (kPlaces + 1) * 256;
    for_each_simd_target([](const std::string&) {
        for (const auto& [alongRows, alongColumns, pattern] :
             {std::tuple(1, 10, 0x0FU), {10, -1, 0x69U}, {-1, -10, 0xF0U}}) {
            Values img;
            for (int i = 0; i < 6 * 7; ++i) {
                img.push_back(static_cast<unsigned int>(1000 + i % 7 * alongRows + i / 7 * alongColumns));
            }
            Values expected(kPlaces + 1);
            std::vector<long> counts(kSlots);
            for (unsigned int i = 0; i < kPlaces; ++i) {
                expected[i] = 256 * i + pattern;
                counts[expected[i]] = 1;
            }
            Values listed(kPlaces + 1);
            lbp_pyr_features_sparse(listed.data(), kPlaces + 1, Values(img).data(), 7, 6);
            EXPECT_EQ(listed, expected);
            std::vector<long> steps(kSlots);
            lbp_pyr_addvec(steps.data(), kSlots, Values(img).data(), 7, 6);
            EXPECT_EQ(steps, counts);
            // Just without the last one.
            lbp_pyr_subvec(steps.data(), expected[kPlaces - 1], img.data(), 7, 6);
            EXPECT_EQ(std::accumulate(steps.begin(), steps.end(), 0L), 1);
            EXPECT_EQ(steps[expected[kPlaces - 1]], 1);
        }
    });
}

TEST(Lbp, DimensionStopsAtTheFirstLevelWithoutInside) {
    EXPECT_EQ(lbp_pyr_get_dim(10, 10, 3), 256U * (64 + 9));
    EXPECT_EQ(lbp_pyr_get_dim(13, 7, 2), 256U * (11 * 5 + 4 * 1));
    EXPECT_EQ(lbp_pyr_get_dim(3, 2, 9), 0U);
    EXPECT_EQ(lbp_pyr_get_dim(500, 500, 0), 0U);
    EXPECT_EQ(lbp_pyr_get_dim(65'535, 65'535, 1), static_cast<unsigned int>(65'533ULL * 65'533 * 256));
}

TEST(Lbp, NeighbourOffsetsAndNull) {
    int offsets[9];
    make_offsets(offsets, 40);
    EXPECT_THAT(offsets, testing::ElementsAre(-41, -40, -39, -1, 0, 1, 39, 40, 41));
    make_offsets(offsets, 0xFFFFFFFFU);
    EXPECT_EQ(offsets[8], 0);

    Values img(25, 1);
    long vec[256];
    lbp_pyr_addvec(nullptr, 256, img.data(), 5, 5);
    lbp_pyr_addvec(vec, 256, nullptr, 5, 5);
    EXPECT_EQ(lbp_pyr_dotprod(nullptr, 256, img.data(), 5, 5), 0.0);
}

}  // namespace
