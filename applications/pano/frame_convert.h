// SPDX-License-Identifier: Apache-2.0
// Camera preview frames to planar YV12.
//
// All frames are 4:2:0 with width * height luma bytes first. NV12 goes on with interleaved U, V; NV21 with V, U; YV12
// with the V plane and then the U plane. With n = width * height there are n / 4 chroma pairs, and the U plane begins
// at byte n * 5 / 4, both truncated, also for odd sizes. Buffers hold n * 3 / 2 bytes at any alignment and must not
// overlap. A null pointer or a size below 1 converts nothing.
#ifndef KORVANE_APPLICATIONS_PANO_FRAME_CONVERT_H_
#define KORVANE_APPLICATIONS_PANO_FRAME_CONVERT_H_

void convert_nv12_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height);
void convert_nv21_to_yv12(const unsigned char* src, unsigned char* dst, int width, int height);

#endif  // KORVANE_APPLICATIONS_PANO_FRAME_CONVERT_H_
