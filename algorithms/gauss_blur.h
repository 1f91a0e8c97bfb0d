// SPDX-License-Identifier: Apache-2.0
// Gaussian blur by box blurs: three box blurs in turn come close to a Gaussian. The cost does not depend on the radius.
//
// Images are one byte a pixel, rows packed (the stride is the width), width x height bytes. `src` and `dst` are two
// buffers that do not overlap. Beyond its border the image goes on with its border pixels. Nothing is allocated but a
// few lines of sums from galloc_malloc; where these cannot be had, the same bytes are computed without them. With a
// null pointer or a size below 1 nothing happens. Any thread may call.
//
// The box widths follow the method published for Gaussians from successive boxes (P. Kovesi, "Fast almost-Gaussian
// filtering", DICTA 2010).
#ifndef KORVANE_ALGORITHMS_GAUSS_BLUR_H_
#define KORVANE_ALGORITHMS_GAUSS_BLUR_H_

#include <cstdint>

#include "frameworks/core/export.h"

struct gauss_blur_coef {
    int32_t coef_n;             // the number of boxes that was asked for
    int32_t coef_values[2048];  // the width of each box in pixels, odd
};

// The widths of the `n` boxes whose succession has the deviation `sigma` (in pixels). `coef_n` becomes `n` as it is; of
// more than 2048 boxes the first 2048 get their width. Below 1 no width is written. A null `coef` is ignored.
KORVANE_API void calculate_gauss_blur_coef(float sigma, int n, gauss_blur_coef* coef);

// One pass along the rows or down the columns: each byte of `dst` becomes the mean of the 2 radius + 1 bytes around it,
// rounded to nearest. `src` is only read. A radius below 0 counts as 0, which copies. The largest radius is
// (length - 1) / 2 of the line, as a wider window would leave the line at both ends; a larger one counts as that.
KORVANE_API void box_blurH(unsigned char* src, unsigned char* dst, int width, int height, int radius);
KORVANE_API void box_blurV(unsigned char* src, unsigned char* dst, int width, int height, int radius);

// Both passes. The result is in `dst`; `src` ends as the rows' pass left it.
KORVANE_API void box_blur(unsigned char* src, unsigned char* dst, int width, int height, int radius);

// Three box blurs whose widths approximate a Gaussian with a deviation of `radius` pixels. The result is in `dst`;
// `src` is scratch and ends with an intermediate image. A radius of 0 copies; only its square counts, so -5 blurs as 5
// does.
KORVANE_API void gauss_blur(unsigned char* src, unsigned char* dst, int width, int height, int radius);

#endif  // KORVANE_ALGORITHMS_GAUSS_BLUR_H_
