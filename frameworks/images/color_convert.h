// SPDX-License-Identifier: Apache-2.0
// Conversions between raw pixel buffers in RGB, RGBA, gray and seven YUV layouts, and between images.
//
// Each color_convert_ function takes its source planes, its destination planes, width and height, and returns 1 when it
// has converted and 0, with nothing written, when it refuses: a null pointer, or width x height (a 32-bit product, read
// as signed) below the function's minimum. Byte orders are those of image.h; pixels are taken in scan order without row
// padding, so only the product of width and height counts but where said otherwise. Buffers must not overlap. The
// functions keep no state and may run on any thread. With P = width x height:
//
//   gray P bytes; RGB and YUV 3P; RGBA 4P; YUYV and YVYU 4 bytes for each pair of pixels;
//   YUV422P: luma P, u and v one byte each for each pair; YV12 and YU12: luma P, u and v one byte each for each quad;
//   NV12 and NV21: luma P, chroma two bytes for each quad.
//
// Pairs and quads are consecutive pixels of the scan: chroma is subsampled along it and not over 2 x 2 blocks, except
// in color_convert_rgb2nv21. Pixels left over behind the last whole pair or quad are not written.
//
// The arithmetic is BT.601 in studio range (luma 16 to 235, chroma 16 to 240) in fixed point with truncated table
// entries; gray from RGB is the full-range 0.299, 0.587, 0.114, and gray from YUV is the luma plane as it is.
#ifndef KORVANE_FRAMEWORKS_IMAGES_COLOR_CONVERT_H_
#define KORVANE_FRAMEWORKS_IMAGES_COLOR_CONVERT_H_

#include "frameworks/core/auto_ptr.h"
#include "frameworks/core/export.h"
#include "frameworks/images/image.h"

// From one pixel on.
KORVANE_API int color_convert_gray2rgb(const unsigned char* gray, unsigned char* rgb, int width, int height);
// Alpha becomes 255.
KORVANE_API int color_convert_gray2rgba(const unsigned char* gray, unsigned char* rgba, int width, int height);
KORVANE_API int color_convert_rgb2gray(const unsigned char* rgb, unsigned char* gray, int width, int height);
// Takes only red from the source: green and blue of pixel i are read from gray[i + 1] and gray[i + 2], the output that
// is not yet written. The gray buffer must have two readable bytes behind its P. For a true gray, convert RGBA to RGB
// and that to gray.
KORVANE_API int color_convert_rgba2gray(const unsigned char* rgba, unsigned char* gray, int width, int height);
// Alpha becomes 255.
KORVANE_API int color_convert_rgb2rgba(const unsigned char* rgb, unsigned char* rgba, int width, int height);
KORVANE_API int color_convert_rgba2rgb(const unsigned char* rgba, unsigned char* rgb, int width, int height);
KORVANE_API int color_convert_rgb2yuv(const unsigned char* rgb, unsigned char* yuv, int width, int height);
KORVANE_API int color_convert_yuv2rgb(const unsigned char* yuv, unsigned char* rgb, int width, int height);
// Copies width x height bytes of any YUV format's first plane; of a packed format that is its first bytes as they lie.
// Needs a width and a height of at least 1.
KORVANE_API int color_convert_yuv2gray(const unsigned char* yuv, unsigned char* gray, int width, int height);

// From two pixels on.
KORVANE_API int color_convert_rgb2yuyv(const unsigned char* rgb, unsigned char* yuyv, int width, int height);
KORVANE_API int color_convert_yuyv2rgb(const unsigned char* yuyv, unsigned char* rgb, int width, int height);
KORVANE_API int color_convert_rgb2yvyu(const unsigned char* rgb, unsigned char* yvyu, int width, int height);
KORVANE_API int color_convert_yvyu2rgb(const unsigned char* yvyu, unsigned char* rgb, int width, int height);
KORVANE_API int color_convert_rgb2yuv422p(const unsigned char* rgb, unsigned char* y, unsigned char* u,
                                          unsigned char* v, int width, int height);
KORVANE_API int color_convert_yuv422p2rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                                          unsigned char* rgb, int width, int height);

// From four pixels on.
KORVANE_API int color_convert_rgb2yv12oryu12(const unsigned char* rgb, unsigned char* y, unsigned char* u,
                                             unsigned char* v, int width, int height);
KORVANE_API int color_convert_yv12oryu122rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                                             unsigned char* rgb, int width, int height);
// The V of a quad counts its first pixel twice and its second not at all.
KORVANE_API int color_convert_rgb2nv12(const unsigned char* rgb, unsigned char* y, unsigned char* uv, int width,
                                       int height);
KORVANE_API int color_convert_nv122rgb(const unsigned char* y, const unsigned char* uv, unsigned char* rgb, int width,
                                       int height);
KORVANE_API int color_convert_nv212rgb(const unsigned char* y, const unsigned char* vu, unsigned char* rgb, int width,
                                       int height);

// True 2 x 2 blocks; color_convert_nv212rgb does not read them back. Answers 0 for a null pointer and, when both exist,
// 1 without writing for a width or height below 2. The U of a block counts its top left pixel twice and its top right
// one not at all. Rows are taken as two times width / 2 pixels after the first of each pair: with an odd width the
// picture drifts by a pixel for each pair of rows. Chroma rows are 2 x (width / 2) bytes.
KORVANE_API int color_convert_rgb2nv21(const unsigned char* rgb, unsigned char* y, unsigned char* vu, int width,
                                       int height);

class KORVANE_API ColorConvert {
  public:
    // A new image (count 0, the caller adopts it) of `src`'s size and depth. `code` is the source format x 256 + the
    // target format, for instance 0x0301 for RGB to gray. Null when `src` is null or of another format than the code
    // says, or when there is no memory for the object. A code without a conversion, or a conversion that is refused,
    // gives a zeroed image: among them YV12 and YU12 in both directions but to gray, since such images have two planes.
    static Image* convert(Image* src, int code);
    static Image* convert(auto_ptr<Image>& src, int code);
};

#endif  // KORVANE_FRAMEWORKS_IMAGES_COLOR_CONVERT_H_
