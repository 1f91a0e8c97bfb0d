// SPDX-License-Identifier: Apache-2.0
// The loops of burst merging and light metering: vector code chosen for the processor at run time.
//
// Accumulators hold one 32-bit integer for each frame byte. They are far larger than any cache, so these loops run at
// the speed of memory. Nothing is allocated. Buffers may have any alignment and must not overlap.
#ifndef KORVANE_APPLICATIONS_SUPER_CAPTURE_MERGE_KERNELS_H_
#define KORVANE_APPLICATIONS_SUPER_CAPTURE_MERGE_KERNELS_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

// sums[i] = max(sums[i], frame[i])
void merge_max(const uint8_t* frame, int* sums, size_t count);

// sums[i] = frame[i]
void merge_first(const uint8_t* frame, int* sums, size_t count);

// sums[i] += frame[i], wrapping in 32 bits
void merge_add(const uint8_t* frame, int* sums, size_t count);

// frame[i] = the low 8 bits of sums[i]
void merged_low_bytes(const int* sums, uint8_t* frame, size_t count);

// frame[i] = sums[i] / frames, truncated and clamped to a byte; 0 when `frames` is 0. Each sum is one of `frames`
// bytes, so it lies in 0 ... 255 * frames unless it has wrapped.
void merged_mean(const int* sums, uint8_t* frame, size_t count, int frames);

// Sums modulo 2^32: of the bytes of a luma plane, and of the even bytes (the luma) of `pixels` YUYV pixels.
uint32_t luma_sum(const uint8_t* plane, size_t pixels);
uint32_t luma_sum_yuyv(const uint8_t* yuyv, size_t pixels);

// A luma sum divided by its area, both as signed 32-bit numbers, truncated; 0 for the area 0. A very bright frame
// of 8.4 megapixels or more has a sum of 2^31 or more and so a negative mean, which counts as dark.
inline int mean_luma(uint32_t sum, uint32_t area) {
    // In 64 bits, where -2^31 / -1 has an answer.
    return area == 0 ? 0 : static_cast<int>(int64_t{static_cast<int32_t>(sum)} / int64_t{static_cast<int32_t>(area)});
}

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_SUPER_CAPTURE_MERGE_KERNELS_H_
