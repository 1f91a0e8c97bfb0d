// SPDX-License-Identifier: Apache-2.0
// Stack blur: a fast approximation of a Gaussian blur, in place, at a cost per pixel that does not depend on the
// radius.
//
// Two passes, rows then columns, each a sliding sum with the triangular weights 1, 2, ..., radius + 1, ..., 2, 1;
// beyond an edge the edge pixel repeats. The division by the weights' sum is a multiplication and a shift, which gives
// at most one level more than a true division. The deviation of the Gaussian that it resembles is about sqrt(radius *
// (radius + 2) / 6). The algorithm is Mario Klingemann's published Stack Blur.
#ifndef KORVANE_ALGORITHMS_STACK_BLUR_H_
#define KORVANE_ALGORITHMS_STACK_BLUR_H_

#include "frameworks/core/export.h"

// Blurs bytes 0, 1 and 2 of each of the `w` x `h` pixels at `src`; a pixel is 4 bytes, rows follow each other without
// padding, byte 3 (alpha) keeps its value. `radius` is clamped to 0 ... 254; 0 changes nothing. A width or height below
// 1 touches nothing. No heap is used, up to 160 KiB of stack are. Safe on any thread, one image per thread at a time.
KORVANE_API void stack_blur(unsigned char* src, int w, int h, int radius);

#endif  // KORVANE_ALGORITHMS_STACK_BLUR_H_
