#include "algorithms/lbp.h"

#include <algorithm>
#include <cstdint>

#include "algorithms/lbp_scalar.h"

void make_offsets(int* offsets, unsigned int stride) {
    if (offsets == nullptr) {
        return;
    }
    const unsigned int lines[3] = {0U - stride, 0U, stride};
    for (const unsigned int line : lines) {
        for (unsigned int step = 0; step < 3; ++step) {
            *offsets++ = static_cast<int>(line + step - 1U);
        }
    }
}

void lbp_pyr_features(char* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                      unsigned short img_nCols) {
    if (vec != nullptr) {
        lbp_pyr_features_scalar(vec, vec_nDim, img, img_nRows, img_nCols);
    }
}

void lbp_pyr_features_sparse(unsigned int* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                             unsigned short img_nCols) {
    if (vec != nullptr) {
        lbp_pyr_features_sparse_scalar(vec, vec_nDim, img, img_nRows, img_nCols);
    }
}

double lbp_pyr_dotprod(double* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                       unsigned short img_nCols) {
    return vec == nullptr ? 0.0 : lbp_pyr_dotprod_scalar(vec, vec_nDim, img, img_nRows, img_nCols);
}

void lbp_pyr_addvec(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                    unsigned short img_nCols) {
    if (vec != nullptr) {
        lbp_pyr_addvec_scalar(vec, vec_nDim, img, img_nRows, img_nCols);
    }
}

void lbp_pyr_subvec(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                    unsigned short img_nCols) {
    if (vec != nullptr) {
        lbp_pyr_subvec_scalar(vec, vec_nDim, img, img_nRows, img_nCols);
    }
}

unsigned int lbp_pyr_get_dim(unsigned short img_nRows, unsigned short img_nCols, unsigned short nPyramids) {
    uint64_t positions = 0;
    unsigned int rows = img_nRows;
    unsigned int cols = img_nCols;
    for (unsigned int level = 0; level < nPyramids && std::min(rows, cols) >= 3; ++level) {
        positions += static_cast<uint64_t>(rows - 2) * (cols - 2);
        rows /= 2;
        cols /= 2;
    }
    return static_cast<unsigned int>(positions * 256);
}
