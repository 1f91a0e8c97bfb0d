// SPDX-License-Identifier: Apache-2.0
// Recursive Gaussian blur: a true Gaussian whose cost does not depend on the deviation.
//
// Each line is filtered once forwards and once backwards by recursions of the fourth order, whose sum is the result
// (R. Deriche, "Recursively implementing the Gaussian and its derivatives", INRIA research report 1893, 1993). It is
// computed in single precision, in one fixed order of terms and without fused operations, so that every processor gives
// the same bytes. The sums are within about 0.1 gray levels of the true Gaussian for deviations of 1 to 10 pixels (0.5
// at 0.6) and then cut off to bytes. From about 20 pixels on single precision adds errors of its own, at 30 a few
// levels of brightness; at 60 the picture is lost.
//
// Pixels have `depth` bytes, 3 or 4, of which bytes 0, 1 and 2 are blurred; byte 3 stays as it is. While a call runs,
// the calling thread's floating-point mode flushes denormal numbers to zero (recursions that fade out on black would
// otherwise run many times slower); the mode found is restored. Any thread may call, with a context of its own.
#ifndef KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_H_
#define KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_H_

#include "frameworks/core/export.h"

struct gaussiirContext {
    float np[5];  // numerators of the forward recursion
    float nm[5];  // numerators of the backward recursion
    float dp[5];  // denominators of the forward recursion
    float dm[5];  // denominators of the backward recursion
    float bp[5];  // forward edge: the denominators times the steady state of a line that is constant before its start
    float bm[5];  // backward edge
    float* vp;    // the forward recursion's line: width x depth numbers
    float* vm;    // the backward recursion's line
};

// Blurs an image in place, rows `stride` bytes apart. `horz` and `vert` are the distances in pixels at which a single
// point has faded to about 1 / 255: 10 is a deviation of 3.3. `horz` acts down the columns and `vert` along the rows.
// Nothing changes when either is not above 0, when the width or the height is below 5, when `depth` is neither 3 nor 4,
// when `image` is null or when memory is short.
KORVANE_API void gaussiir(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert);

// Fills the six coefficient arrays for a deviation of `std_dev` pixels; vp and vm stay as they are.
KORVANE_API void calculate_gauss_iir_coefficients(gaussiirContext* ctx, float std_dev);

// Filters one line of `width` pixels. `src` is only read; `dst` may be `src`. `ctx` brings the coefficients, and vp and
// vm with width x depth numbers each, which the caller owns. Outputs are cut off towards zero and held within 0 to 255.
KORVANE_API void blur_line(gaussiirContext* ctx, unsigned char* src, unsigned char* dst, int width, int depth);

#endif  // KORVANE_ALGORITHMS_GAUSS_BLUR_IIR_H_
