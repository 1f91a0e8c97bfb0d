// SPDX-License-Identifier: Apache-2.0
#include "algorithms/gauss_blur_scalar.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace {

// One line of `length` bytes, `step` bytes apart. The line cannot be shorter than the window.
void blur_line_by_box(const unsigned char* src, unsigned char* dst, size_t length, size_t step, size_t radius) {
    const float reciprocal = 1.0F / static_cast<float>(2 * radius + 1);
    const int64_t first = src[0];
    const int64_t last = src[(length - 1) * step];
    const unsigned char* entering = src + radius * step;
    const unsigned char* leaving = src;
    int64_t sum = static_cast<int64_t>(radius + 1) * first;
    for (size_t i = 0; i < radius; ++i) {
        sum += src[i * step];
    }
    const auto write = [&] {
        *dst = static_cast<unsigned char>(std::round(static_cast<float>(sum) * reciprocal));
        dst += step;
    };
    for (size_t i = 0; i <= radius; ++i, entering += step) {
        sum += *entering - first;
        write();
    }
    for (size_t i = radius + 1; i < length - radius; ++i, entering += step, leaving += step) {
        sum += *entering - *leaving;
        write();
    }
    for (size_t i = 0; i < radius; ++i, leaving += step) {
        sum += last - *leaving;
        write();
    }
}

}  // namespace

namespace korvane {

void box_rows_scalar(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    for (size_t y = 0; y < height; ++y) {
        blur_line_by_box(src + y * width, dst + y * width, width, 1, radius);
    }
}

void box_rows_in_place_scalar(uint8_t* image, uint8_t* spare, size_t width, size_t height, size_t radius) {
    std::memcpy(spare, image, width * height);
    box_rows_scalar(spare, image, width, height, radius);
}

void box_columns_scalar(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    for (size_t x = 0; x < width; ++x) {
        blur_line_by_box(src + x, dst + x, height, width, radius);
    }
}

}  // namespace korvane
