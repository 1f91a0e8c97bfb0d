// SPDX-License-Identifier: Apache-2.0
// Row writers: each turns one row of `width` pixels into 3 bytes a pixel, as libjpeg takes them. `src` and `dst` must
// not overlap. A width below 1 or a null pointer writes nothing.
#ifndef KORVANE_FRAMEWORKS_IMAGES_JPEG_ROW_WRITERS_H_
#define KORVANE_FRAMEWORKS_IMAGES_JPEG_ROW_WRITERS_H_

#include "frameworks/core/export.h"

// The grey byte three times.
KORVANE_API void Write_Gray(const unsigned char* src, unsigned char* dst, int width);

KORVANE_API void Write_RGB(const unsigned char* src, unsigned char* dst, int width);

// R, G, B; the alpha byte is left out.
KORVANE_API void Write_RGBA(const unsigned char* src, unsigned char* dst, int width);

// Y, U, V as they lie.
KORVANE_API void Write_YUV(const unsigned char* src, unsigned char* dst, int width);

#endif  // KORVANE_FRAMEWORKS_IMAGES_JPEG_ROW_WRITERS_H_
