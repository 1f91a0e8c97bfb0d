// SPDX-License-Identifier: Apache-2.0
// Fast blur: a box blur of color pixels whose cost does not depend on the radius.
//
// Pixels are 32-bit words with blue in bits 0 to 7, green in 8 to 15, red in 16 to 23; on little-endian processors that
// is the byte order B, G, R, A, and since the three channels are treated alike, R, G, B, A does as well. Nothing is
// logged; scratch memory comes from galloc_malloc. Any thread may call.
#ifndef KORVANE_ALGORITHMS_FAST_BLUR_H_
#define KORVANE_ALGORITHMS_FAST_BLUR_H_

#include "frameworks/core/export.h"

// Each pixel of `dst` becomes the mean of the 2r + 1 x 2r + 1 pixels of `src` around it, rounded down once after the
// rows and once after the columns. r is `radius`, at most the smaller of `w` and `h`; beyond its border the image goes
// on with its border pixels. The exception: when r reaches the height, each column starts with a black pixel in place
// of the first one below the image, and so comes out darker.
//
// Both images are w x h words, rows packed. `src` is only read; `dst` may be `src` itself, and may lie at any address.
// The result is opaque: bits 24 to 31 are not read and are written as 0xFF. With a radius or a size below 1, a null
// pointer, or when memory is short, `dst` stays untouched.
KORVANE_API void fast_blur(unsigned int* src, unsigned char* dst, int w, int h, int radius);

#endif  // KORVANE_ALGORITHMS_FAST_BLUR_H_
