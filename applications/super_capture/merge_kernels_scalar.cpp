// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/merge_kernels_scalar.h"

#include <algorithm>

namespace korvane {

void merge_max_scalar(const uint8_t* frame, int* sums, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        sums[i] = std::max(sums[i], static_cast<int>(frame[i]));
    }
}

void merge_first_scalar(const uint8_t* frame, int* sums, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        sums[i] = frame[i];
    }
}

void merge_add_scalar(const uint8_t* frame, int* sums, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        sums[i] = static_cast<int>(static_cast<uint32_t>(sums[i]) + frame[i]);
    }
}

void merged_low_bytes_scalar(const int* sums, uint8_t* frame, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        frame[i] = static_cast<uint8_t>(sums[i] & 0xFF);
    }
}

void merged_mean_scalar(const int* sums, uint8_t* frame, size_t count, int frames) {
    if (frames == 0) {
        std::fill_n(frame, count, uint8_t{0});
        return;
    }
    for (size_t i = 0; i < count; ++i) {
        frame[i] = static_cast<uint8_t>(std::clamp(sums[i] / frames, 0, 255));
    }
}

uint32_t luma_sum_scalar(const uint8_t* plane, size_t pixels) {
    uint32_t sum = 0;
    for (size_t i = 0; i < pixels; ++i) {
        sum += plane[i];
    }
    return sum;
}

uint32_t luma_sum_yuyv_scalar(const uint8_t* yuyv, size_t pixels) {
    uint32_t sum = 0;
    for (size_t i = 0; i < pixels; ++i) {
        sum += yuyv[2 * i];
    }
    return sum;
}

}  // namespace korvane
