// SPDX-License-Identifier: Apache-2.0
// LBP pyramid features: local binary patterns of every level of an image pyramid, as one sparse 0/1 feature vector for
// a linear classifier.
//
// Every pixel of every level, but for a border of one pixel, owns a block of 256 feature slots; the slot whose number
// is the pixel's pattern is on. A pattern bit is set where a neighbour is strictly less than the centre:
//
//     column   c - 1   c      c + 1
//     row r-1  0x01    0x08   0x20
//     row r    0x02           0x40
//     row r+1  0x04    0x10   0x80
//
// Blocks are ordered level by level, within a level column by column (1 ... columns - 2), within a column row by row
// (1 ... rows - 2). The five feature functions make the same walk and differ in what they do with each slot.
//
// Images are `unsigned int` values in column-major order: row r, column c lies at img[c * img_nRows + r]. THE IMAGE IS
// CONSUMED: each level is summed into the memory of the level before (2 x 2 blocks, odd rows and columns at the end
// dropped, not divided, modulo 2^32), at the stride of the first level.
//
// `vec_nDim` decides how many levels are visited: pass what lbp_pyr_get_dim gives for the number wanted (that divided
// by 256 for the sparse form). Nothing is read or written at or past vec_nDim. A vec_nDim larger than the image can
// fill is harmless: the walk ends at the first level that has no inner pixel. Null pointers do nothing.
//
// No state is kept; calls on different images may run on any threads at once. Published source: T. Ojala, M.
// Pietikainen and D. Harwood, "A comparative study of texture measures with classification based on featured
// distributions", 1996; the 3 x 3 form with the comparison turned round.
#ifndef KORVANE_ALGORITHMS_LBP_H_
#define KORVANE_ALGORITHMS_LBP_H_

#include "frameworks/core/export.h"

// The nine offsets of a 3 x 3 neighbourhood in an image with `stride` elements from one line to the next: the line
// before, the line itself, the line after, each from -1 to +1. `offsets` takes 9 values, computed modulo 2^32.
KORVANE_API void make_offsets(int* offsets, unsigned int stride);

// Counts: vec[slot] += 1 in byte arithmetic, which wraps at 256 counts. `vec` holds vec_nDim bytes and is not cleared.
KORVANE_API void lbp_pyr_features(char* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                                  unsigned short img_nCols);

// Lists the slots that are on, in ascending order. Here vec_nDim is the number of entries to produce; when the pyramid
// has fewer positions, the entries behind them are left alone. Slot numbers are modulo 2^32.
KORVANE_API void lbp_pyr_features_sparse(unsigned int* vec, unsigned int vec_nDim, unsigned int* img,
                                         unsigned short img_nRows, unsigned short img_nCols);

// The sum of vec[slot], added in walking order: the dot product of the features with a weight vector.
KORVANE_API double lbp_pyr_dotprod(double* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                                   unsigned short img_nCols);

// vec[slot] += 1 and vec[slot] -= 1, modulo 2^64: the training steps of a perceptron.
KORVANE_API void lbp_pyr_addvec(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                                unsigned short img_nCols);
KORVANE_API void lbp_pyr_subvec(long* vec, unsigned int vec_nDim, unsigned int* img, unsigned short img_nRows,
                                unsigned short img_nCols);

// The number of slots of up to `nPyramids` levels: 256 for each inner pixel, modulo 2^32. Levels end where a side falls
// below 3. 0 for no levels.
KORVANE_API unsigned int lbp_pyr_get_dim(unsigned short img_nRows, unsigned short img_nCols, unsigned short nPyramids);

#endif  // KORVANE_ALGORITHMS_LBP_H_
