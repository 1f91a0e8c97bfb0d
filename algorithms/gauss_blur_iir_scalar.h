// The plain form of the recursive Gaussian, line by line: what processors without vector instructions run, and what the
// kernel is tested with.
#ifndef KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_SCALAR_H_
#define KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_SCALAR_H_

#include "algorithms/gauss_blur_iir.h"

void gaussiir_scalar(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert);
void blur_line_scalar(gaussiirContext* ctx, const unsigned char* src, unsigned char* dst, int width, int depth);

#endif  // KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_SCALAR_H_
