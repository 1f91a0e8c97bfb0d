// SPDX-License-Identifier: Apache-2.0
// LBP features of a 2-megapixel image over five levels: sparse against a copy of the image, dense against the bare
// minimum of memory traffic, one increment in each position's block of 256 bytes.
#include <cstddef>
#include <memory>
#include <vector>

#include "algorithms/lbp.h"
#include "algorithms/lbp_scalar.h"
#include "benchmarks/support/comparison.h"
#include "benchmarks/support/picture.h"
#include "benchmarks/support/plain_loop.h"

namespace {

using namespace korvane::bench;

constexpr unsigned short kRows = 1080;
constexpr unsigned short kCols = 1920;
constexpr unsigned short kLevels = 5;

struct Scene {
    std::vector<unsigned int> source;
    std::vector<unsigned int> image;
    unsigned int dim;

    void restore() { image = source; }
};

std::shared_ptr<Scene> make_scene() {
    auto scene = std::make_shared<Scene>();
    const std::vector<unsigned char> picture = rgba_picture(kCols, kRows);
    for (size_t x = 0; x < kCols; ++x) {
        for (size_t y = 0; y < kRows; ++y) {
            scene->source.push_back(picture[(y * kCols + x) * 4 + 1]);
        }
    }
    scene->image = scene->source;
    scene->dim = lbp_pyr_get_dim(kRows, kCols, kLevels);
    return scene;
}

// All levels, one pixel and one neighbour after the other.
void list_plainly(std::vector<unsigned int>& slots, std::vector<unsigned int>& image) {
    const std::ptrdiff_t step = kRows;
    const std::ptrdiff_t neighbours[] = {-step - 1, -step, -step + 1, -1, 1, step - 1, step, step + 1};
    size_t position = 0;
    size_t rows = kRows;
    size_t cols = kCols;
    for (unsigned short level = 0; level < kLevels; ++level) {
        for (size_t c = 1; c + 1 < cols; ++c) {
            plain_loop(rows - 2, [&](size_t r) {
                const unsigned int* centre = &image[c * kRows + r + 1];
                unsigned int pattern = 0;
                plain_loop(8, [&](size_t bit) {
                    if (centre[neighbours[bit]] < *centre) {
                        pattern |= 1U << bit;
                    }
                });
                slots[position] = static_cast<unsigned int>(position * 256 + pattern);
                ++position;
            });
        }
        rows /= 2;
        cols /= 2;
        for (size_t c = 0; c < cols; ++c) {
            plain_loop(rows, [&](size_t r) {
                const unsigned int* corner = &image[2 * c * kRows + 2 * r];
                image[c * kRows + r] = corner[0] + corner[1] + corner[kRows] + corner[kRows + 1];
            });
        }
    }
}

void compare_sparse(Comparison& comparison) {
    const auto scene = make_scene();
    const unsigned int entries = scene->dim / 256;
    const auto slots = std::make_shared<std::vector<unsigned int>>(entries);
    comparison.verify("equals the scalar twin", [=] {
        std::vector<unsigned int> expected(entries);
        lbp_pyr_features_sparse(slots->data(), entries, scene->image.data(), kRows, kCols);
        scene->restore();
        korvane::lbp_pyr_features_sparse_scalar(expected.data(), entries, scene->image.data(), kRows, kCols);
        return *slots == expected;
    });
    comparison.verify("equals the plain loop", [=] {
        std::vector<unsigned int> expected(entries);
        scene->restore();
        list_plainly(expected, scene->image);
        return *slots == expected;
    });
    const auto restore = [=] { scene->restore(); };
    comparison.kernel([=] { lbp_pyr_features_sparse(slots->data(), entries, scene->image.data(), kRows, kCols); },
                      restore);
    comparison.against(
        "plain loop", {faster(12)}, [=] { list_plainly(*slots, scene->image); }, restore);
    comparison.against(
        "scalar twin", {},
        [=] { korvane::lbp_pyr_features_sparse_scalar(slots->data(), entries, scene->image.data(), kRows, kCols); },
        restore);
    comparison.against_memcpy({at_most(4.0)}, scene->source.size() * sizeof(unsigned int));
}

void compare_dense(Comparison& comparison) {
    const auto scene = make_scene();
    const unsigned int dim = scene->dim;
    const auto vec = std::make_shared<std::vector<char>>(dim);
    comparison.verify("equals the scalar twin", [=] {
        std::vector<char> expected(dim);
        lbp_pyr_features(vec->data(), dim, scene->image.data(), kRows, kCols);
        scene->restore();
        korvane::lbp_pyr_features_scalar(expected.data(), dim, scene->image.data(), kRows, kCols);
        return *vec == expected;
    });
    const auto restore = [=] { scene->restore(); };
    comparison.kernel([=] { lbp_pyr_features(vec->data(), dim, scene->image.data(), kRows, kCols); }, restore);
    comparison.against(
        "scalar twin", {faster(1.7)},
        [=] { korvane::lbp_pyr_features_scalar(vec->data(), dim, scene->image.data(), kRows, kCols); }, restore);
    comparison.against("one increment per 256 bytes", {at_most(0.95)}, [=] {
        for (size_t block = 0; block < dim; block += 256) {
            (*vec)[block] = static_cast<char>((*vec)[block] + 1);
        }
    });
}

const Registration kSparse("lbp_pyr_features_sparse/1920x1080", compare_sparse);
const Registration kDense("lbp_pyr_features/1920x1080", compare_dense);

}  // namespace
