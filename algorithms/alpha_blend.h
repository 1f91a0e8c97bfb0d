// SPDX-License-Identifier: Apache-2.0
// Alpha blend: dims an image towards a solid color, in fixed point with weights out of 256.
//
// Pixels are 4 bytes each without padding; bytes 0, 1 and 2 move towards `r`, `g` and `b`, byte 3 (alpha) stays. A
// byte c becomes (a * color + c * (256 - a)) >> 8, of which the low 8 bits are stored; arithmetic wraps, so arguments
// outside 0 to 255 (color) and 0 to 256 (a) give defined, if odd, bytes. Nothing is allocated, any thread may call.
#ifndef KORVANE_ALGORITHMS_ALPHA_BLEND_H_
#define KORVANE_ALGORITHMS_ALPHA_BLEND_H_

#include "frameworks/core/export.h"

// Blends `size` pixels: `a` = 0 leaves them, `a` = 256 makes them the color. A `size` below 1 does nothing.
KORVANE_API void alpha_blend(unsigned char* dest, int size, int r, int g, int b, int a);

// The blend of the bitmap path, which steps by 8 pixels and holds its weight in 8 bits. Between `a` = 1 and 256 it
// gives the bytes of alpha_blend, with two differences that are part of the interface: the last `size` mod 8 pixels are
// not blended, and `a` = 0 turns the blended pixels black instead of leaving them. Equal on every processor.
KORVANE_API void alpha_blend_neon(unsigned char* dest, int size, int r, int g, int b, int a);

#endif  // KORVANE_ALGORITHMS_ALPHA_BLEND_H_
