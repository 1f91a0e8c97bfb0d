// SPDX-License-Identifier: Apache-2.0
// The scalar twin of the recursive Gaussian, line by line.
#ifndef KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_SCALAR_H_
#define KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_SCALAR_H_

#include "algorithms/gauss_blur_iir.h"

namespace korvane {

void gaussiir_scalar(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert);
void blur_line_scalar(gaussiirContext* ctx, const unsigned char* src, unsigned char* dst, int width, int depth);

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_SCALAR_H_
