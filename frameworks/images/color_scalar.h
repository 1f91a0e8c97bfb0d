// SPDX-License-Identifier: Apache-2.0
// The scalar twins of the color conversions. Counts are in pixels, in pairs or in quads of consecutive pixels.
#ifndef KORVANE_FRAMEWORKS_IMAGES_COLOR_SCALAR_H_
#define KORVANE_FRAMEWORKS_IMAGES_COLOR_SCALAR_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

void gray2rgb_scalar(const uint8_t* gray, uint8_t* rgb, size_t pixels);
void gray2rgba_scalar(const uint8_t* gray, uint8_t* rgba, size_t pixels);
void rgb2gray_scalar(const uint8_t* rgb, uint8_t* gray, size_t pixels);
// Reads the green and blue of pixel i from gray[i + 1] and gray[i + 2], as they are before gray[i] is written.
void rgba2gray_scalar(const uint8_t* rgba, uint8_t* gray, size_t pixels);

void rgb2rgba_scalar(const uint8_t* rgb, uint8_t* rgba, size_t pixels);
void rgba2rgb_scalar(const uint8_t* rgba, uint8_t* rgb, size_t pixels);
void rgb2yuv_scalar(const uint8_t* rgb, uint8_t* yuv, size_t pixels);
void yuv2rgb_scalar(const uint8_t* yuv, uint8_t* rgb, size_t pixels);

void rgb2yuyv_scalar(const uint8_t* rgb, uint8_t* yuyv, size_t pairs);
void rgb2yvyu_scalar(const uint8_t* rgb, uint8_t* yvyu, size_t pairs);
void rgb2yuv422p_scalar(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t pairs);
void yuyv2rgb_scalar(const uint8_t* yuyv, uint8_t* rgb, size_t pairs);
void yvyu2rgb_scalar(const uint8_t* yvyu, uint8_t* rgb, size_t pairs);
void yuv422p2rgb_scalar(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, size_t pairs);

void rgb2yv12oryu12_scalar(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t quads);
void rgb2nv12_scalar(const uint8_t* rgb, uint8_t* y, uint8_t* uv, size_t quads);
// A pair of rows, counted in 2 x 2 blocks.
void rgb2nv21_rows_scalar(const uint8_t* top, const uint8_t* bottom, uint8_t* yTop, uint8_t* yBottom, uint8_t* vu,
                          size_t pairs);
void yv12oryu122rgb_scalar(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, size_t quads);
void nv122rgb_scalar(const uint8_t* y, const uint8_t* uv, uint8_t* rgb, size_t quads);
void nv212rgb_scalar(const uint8_t* y, const uint8_t* vu, uint8_t* rgb, size_t quads);

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_IMAGES_COLOR_SCALAR_H_
