// SPDX-License-Identifier: Apache-2.0
#include "algorithms/lbp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "tests/support/simd_targets.h"

namespace {

using Values = std::vector<unsigned int>;

struct Size {
    unsigned short rows;
    unsigned short cols;
};

// The picture's levels one by one in row-major copies, pixel by pixel.
class Model {
  public:
    Model(const Values& img, Size size, size_t limit) : image(img) {
        size_t rows = size.rows;
        size_t cols = size.cols;
        while (slots.size() < limit && rows >= 3 && cols >= 3) {
            for (size_t c = 1; c + 1 < cols; ++c) {
                for (size_t r = 1; r + 1 < rows; ++r) {
                    slots.push_back(slots.size() * 256 + pattern(size.rows, r, c));
                }
            }
            if (slots.size() < limit) {
                halve(size.rows, rows, cols);
                rows /= 2;
                cols /= 2;
            }
        }
        slots.resize(std::min(slots.size(), limit));
    }

    std::vector<size_t> slots;
    Values image;

  private:
    size_t pattern(size_t stride, size_t r, size_t c) const {
        size_t bits = 0;
        for (const size_t i : std::initializer_list<size_t>{8, 7, 6, 5, 3, 2, 1, 0}) {
            bits = bits * 2 + (image[(c + i / 3 - 1) * stride + r + i % 3 - 1] < image[c * stride + r] ? 1 : 0);
        }
        return bits;
    }

    // Width first, then height; what lies outside the new level keeps what the two passes left there.
    void halve(size_t stride, size_t rows, size_t cols) {
        for (size_t x = 0; x < cols / 2; ++x) {
            for (size_t j = 0; j < rows / 2 * 2; ++j) {
                image[x * stride + j] = image[2 * x * stride + j] + image[(2 * x + 1) * stride + j];
            }
        }
        for (size_t y = 0; y < rows / 2; ++y) {
            for (size_t j = 0; j < cols / 2; ++j) {
                image[j * stride + y] = image[j * stride + 2 * y] + image[j * stride + 2 * y + 1];
            }
        }
    }
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

// With `dim` slots, which need not be a number that fits the image, and one more that nothing may touch.
void expect_model(Size size, unsigned int dim, const Values& img) {
    SCOPED_TRACE(testing::Message() << size.rows << " x " << size.cols << ", " << dim << " slots");
    Model model(img, size, (static_cast<size_t>(dim) + 255) / 256);
    std::erase_if(model.slots, [&](size_t slot) { return slot >= dim; });
    const auto expect_stepped = [&](auto walk, auto from, auto to) {
        std::vector<decltype(from)> vec(dim + 1, from);
        auto expected = vec;
        for (const size_t slot : model.slots) {
            expected[slot] = to;
        }
        Values used = img;
        walk(vec.data(), dim, used.data(), size.rows, size.cols);
        EXPECT_EQ(vec, expected);
        EXPECT_EQ(used, model.image);
    };
    using Limits = std::numeric_limits<long>;
    expect_stepped(lbp_pyr_features, static_cast<char>(-1), static_cast<char>(0));
    expect_stepped(lbp_pyr_addvec, Limits::max(), Limits::min());
    expect_stepped(lbp_pyr_subvec, Limits::min(), Limits::max());
    std::vector<double> weights(dim + 1, 1e9);
    for (size_t i = 0; i < dim; ++i) {
        weights[i] = 1.0 / static_cast<double>(i + 3);
    }
    Values used = img;
    EXPECT_EQ(lbp_pyr_dotprod(weights.data(), dim, used.data(), size.rows, size.cols),
              std::accumulate(model.slots.begin(), model.slots.end(), 0.0,
                              [&](double dot, size_t slot) { return dot + weights[slot]; }));
    EXPECT_EQ(used, model.image);
}

void expect_sparse_model(Size size, unsigned int entries, const Values& img) {
    SCOPED_TRACE(testing::Message() << size.rows << " x " << size.cols << ", " << entries << " entries");
    const Model model(img, size, entries);
    Values expected(entries, 7);
    std::copy(model.slots.begin(), model.slots.end(), expected.begin());
    Values listed(entries, 7);
    Values used = img;
    lbp_pyr_features_sparse(listed.data(), entries, used.data(), size.rows, size.cols);
    EXPECT_EQ(listed, expected);
    EXPECT_EQ(used, model.image);
}

TEST(Lbp, EqualsThePixelModelForEverySize) {
    for_each_simd_target([](const std::string&) {
        for (unsigned short rows = 0; rows <= 41; ++rows) {
            for (const unsigned short cols : std::initializer_list<unsigned short>{0, 2, 3, 6, 13}) {
                const Size size = {rows, cols};
                const Values img = random_image(size, rows * 64U + cols);
                const unsigned int levels = 1U + rows % 3U;
                const unsigned int dim = lbp_pyr_get_dim(rows, cols, static_cast<unsigned short>(levels));
                // All of it, cut in the middle of a block and of a level, and more than the pyramid holds.
                for (const unsigned int slots : {dim, dim / 3, dim / 3 | 255U, dim + 5000}) {
                    expect_sparse_model(size, slots / 256, img);
                }
                if (rows % 7 == 2 || rows < 6) {
                    expect_model(size, dim, img);
                    expect_model(size, dim / 3 | 77U, img);
                    expect_model(size, dim + 5000, img);
                    const Model model(img, size, dim / 512);
                    if (!model.slots.empty()) {
                        expect_model(size, static_cast<unsigned int>(model.slots.back()), img);
                    }
                }
            }
        }
        expect_sparse_model({301, 37}, 12'000, random_image({301, 37}, 1));
        expect_sparse_model({2, 65'535}, 9, Values(2 * 65'535));
        expect_model({67, 71}, lbp_pyr_get_dim(67, 71, 5), random_image({67, 71}, 2));
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
