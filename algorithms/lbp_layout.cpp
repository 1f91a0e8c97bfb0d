// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdint>

#include "algorithms/lbp.h"

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
