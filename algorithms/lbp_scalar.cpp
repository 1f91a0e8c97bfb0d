// SPDX-License-Identifier: Apache-2.0
#include "algorithms/lbp_scalar.h"

#include "algorithms/lbp.h"
#include "algorithms/lbp_walk.h"

namespace {

using korvane::LbpLevel;

void halve(const LbpLevel& level, size_t x) {
    const size_t rows = level.rows / 2;
    unsigned int* column = level.img + x * level.stride;
    const unsigned int* left = level.img + 2 * x * level.stride;
    for (size_t r = 0; r < 2 * rows; ++r) {
        column[r] = left[r] + left[level.stride + r];
    }
    for (size_t r = 0; r < rows; ++r) {
        column[r] = column[2 * r] + column[2 * r + 1];
    }
}

// Calls action(position, pattern) for each position.
template <typename Action>
void walk(unsigned int* img, unsigned short rows, unsigned short cols, size_t limit, const Action& action) {
    int offsets[9];
    make_offsets(offsets, rows);
    const auto visit_column = [&](const unsigned int* centre, size_t count, size_t position) {
        for (size_t r = 0; r < count; ++r) {
            unsigned int pattern = 0;
            for (int neighbour = 0, bit = 0; neighbour < 9; ++neighbour) {
                if (neighbour != 4) {
                    pattern |= (centre[static_cast<ptrdiff_t>(r) + offsets[neighbour]] < centre[r] ? 1U : 0U) << bit++;
                }
            }
            action(position + r, pattern);
        }
    };
    const auto visit = [&](const unsigned int* centre, size_t columns, size_t count, size_t position) {
        for (size_t c = 0; c < columns; ++c) {
            visit_column(centre + c * rows, count, position + c * count);
        }
    };
    korvane::lbp_walk({img, rows, rows, cols}, limit, visit, halve);
}

template <typename Action>
void walk_slots(unsigned int vec_nDim, unsigned int* img, unsigned short rows, unsigned short cols,
                const Action& action) {
    walk(img, rows, cols, korvane::lbp_positions_for(vec_nDim), [&](size_t position, unsigned int pattern) {
        const size_t slot = position * korvane::kLbpSlotsPerPosition + pattern;
        if (slot < vec_nDim) {
            action(slot);
        }
    });
}

}  // namespace

namespace korvane {

void lbp_pyr_features_scalar(char* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                             unsigned short img_nCols) {
    walk_slots(vec_nDim, img, img_nRows, img_nCols, LbpCount{vec});
}

void lbp_pyr_features_sparse_scalar(unsigned int* vec, unsigned int vec_nDim, unsigned int* img,
                                    unsigned short img_nRows, unsigned short img_nCols) {
    walk(img, img_nRows, img_nCols, vec_nDim, [vec](size_t position, unsigned int pattern) {
        vec[position] = static_cast<unsigned int>(position * kLbpSlotsPerPosition + pattern);
    });
}

double lbp_pyr_dotprod_scalar(double* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                              unsigned short img_nCols) {
    double sum = 0;
    walk_slots(vec_nDim, img, img_nRows, img_nCols, LbpSum{vec, &sum});
    return sum;
}

void lbp_pyr_addvec_scalar(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                           unsigned short img_nCols) {
    walk_slots(vec_nDim, img, img_nRows, img_nCols, LbpStep{vec, 1UL});
}

void lbp_pyr_subvec_scalar(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                           unsigned short img_nCols) {
    walk_slots(vec_nDim, img, img_nRows, img_nCols, LbpStep{vec, ~0UL});
}

}  // namespace korvane
