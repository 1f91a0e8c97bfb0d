#include "algorithms/gauss_blur_scalar.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "algorithms/gauss_blur.h"

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

void blur_lines(const unsigned char* src, unsigned char* dst, int lines, size_t lineStep, int length, size_t step,
                int radius) {
    const auto inside = static_cast<size_t>(std::clamp(radius, 0, (length - 1) / 2));
    for (int i = 0; i < lines; ++i, src += lineStep, dst += lineStep) {
        blur_line_by_box(src, dst, static_cast<size_t>(length), step, inside);
    }
}

}  // namespace

void box_blurH_scalar(const unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    if (src != nullptr && dst != nullptr && width > 0 && height > 0) {
        blur_lines(src, dst, height, static_cast<size_t>(width), width, 1, radius);
    }
}

void box_blurV_scalar(const unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    if (src != nullptr && dst != nullptr && width > 0 && height > 0) {
        blur_lines(src, dst, width, 1, height, static_cast<size_t>(width), radius);
    }
}

void box_blur_scalar(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    if (src != nullptr && dst != nullptr && width > 0 && height > 0) {
        std::memcpy(dst, src, static_cast<size_t>(width) * static_cast<size_t>(height));
        box_blurH_scalar(dst, src, width, height, radius);
        box_blurV_scalar(src, dst, width, height, radius);
    }
}

void gauss_blur_scalar(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    gauss_blur_coef boxes;
    calculate_gauss_blur_coef(static_cast<float>(radius), 3, &boxes);
    for (int i = 0; i < boxes.coef_n; ++i) {
        box_blur_scalar(src, dst, width, height, (boxes.coef_values[i] - 1) / 2);
        std::swap(src, dst);
    }
}
