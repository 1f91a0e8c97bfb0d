// SPDX-License-Identifier: Apache-2.0
// The scalar twins of merge_kernels.h.
#ifndef KORVANE_APPLICATIONS_SUPER_CAPTURE_MERGE_KERNELS_SCALAR_H_
#define KORVANE_APPLICATIONS_SUPER_CAPTURE_MERGE_KERNELS_SCALAR_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

void merge_max_scalar(const uint8_t* frame, int* sums, size_t count);
void merge_first_scalar(const uint8_t* frame, int* sums, size_t count);
void merge_add_scalar(const uint8_t* frame, int* sums, size_t count);
void merged_low_bytes_scalar(const int* sums, uint8_t* frame, size_t count);
void merged_mean_scalar(const int* sums, uint8_t* frame, size_t count, int frames);
uint32_t luma_sum_scalar(const uint8_t* plane, size_t pixels);
uint32_t luma_sum_yuyv_scalar(const uint8_t* yuyv, size_t pixels);

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_SUPER_CAPTURE_MERGE_KERNELS_SCALAR_H_
