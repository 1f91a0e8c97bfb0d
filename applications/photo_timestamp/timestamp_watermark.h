// SPDX-License-Identifier: Apache-2.0
// A date and time stamped into the bottom right corner of a camera frame.
//
// The text (digits, ":", "-" and blanks) is laid out as a strip of 8-bit coverage from the glyphs for the frame's
// shape, scaled with the frame, and blended into the packed YUYV frame in place: white where coverage is full, darker
// towards the glyphs' edges. Calls on different frames may run in parallel.
//
// Fixed by the interface: the functions here, the glyphs' sizes and the arithmetic of the stamp.
#ifndef KORVANE_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_WATERMARK_H_
#define KORVANE_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_WATERMARK_H_

#include "applications/photo_timestamp/timestamp_symbols.h"
#include "frameworks/core/export.h"

// Draws the coverage of `symbol` (0 none, 255 full) into the box of `width` x `height` pixels at (x, y) of an 8-bit
// image, clipped to the image. Each row takes as many bytes of the bitmap as the clipped box is wide, so the glyph
// looks right only in a box of its own width that lies inside the image. Pixels beyond the bitmap's end are left alone.
KORVANE_API void DrawSymbol(unsigned char* image, int image_width, int image_height, Symbol* symbol, int x, int y,
                            int width, int height);

// Lays `timestamp` out as a new strip of 8-bit coverage with the glyphs of `ratio_type` (0: 4:3, 1: 16:9). On success
// the caller owns *watermark and frees it with galloc_free. An unknown character, an empty text, another ratio type or
// a failed allocation gives a null strip of 0 x 0. With a null argument nothing is touched.
KORVANE_API void CreateTimestampWatermark(const char* timestamp, unsigned char** watermark, int* watermark_width,
                                          int* watermark_height, int ratio_type);

// Stamps `timestamp` into the frame `yuyv` of `width` x `height` pixels: Y0 U Y1 V, rows of width * 2 bytes without
// padding. `type` is ignored. True when the frame was processed, also when the stamp does not fit and the frame stays
// as it was; false, with the frame untouched, for bad arguments, an unknown character, an empty text or a failed
// allocation.
extern "C" KORVANE_API bool make_photo_timestamp_watermark_to_yuyv(unsigned char* yuyv, int width, int height,
                                                                   const char* timestamp, int type);

#endif  // KORVANE_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_WATERMARK_H_
