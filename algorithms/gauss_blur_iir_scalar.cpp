// SPDX-License-Identifier: Apache-2.0
#include "algorithms/gauss_blur_iir_scalar.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "algorithms/gauss_blur_iir_coefficients.h"
#include "algorithms/work_buffer.h"

namespace {

constexpr int kChannels = 3;
constexpr int kOrder = 4;

// One recursion over the bytes of one channel, `step` elements apart (negative for the backward one). Terms are added
// in a fixed order and each is formed on its own, so that vector lanes can do the same.
void run_recursion(const unsigned char* src, float* values, int width, std::ptrdiff_t step, const float (&numerator)[5],
                   const float (&denominator)[5], const float (&edge)[5]) {
    const float initial = src[0];
    for (int i = 0; i < width; ++i, src += step, values += step) {
        const int terms = std::min(i, kOrder);
        float sum = 0;
        for (int j = 0; j <= terms; ++j) {
            sum += numerator[j] * static_cast<float>(src[-j * step]) - denominator[j] * values[-j * step];
        }
        for (int j = terms + 1; j <= kOrder; ++j) {
            sum += (numerator[j] - edge[j]) * initial;
        }
        *values = sum;
    }
}

unsigned char to_byte(float value) {
    // A NaN fails both comparisons with what it should lie between, and becomes 0.
    return value > 255.0F ? 255 : (value >= 0.0F ? static_cast<unsigned char>(value) : 0);
}

}  // namespace

void korvane::blur_line_scalar(gaussiirContext* ctx, const unsigned char* src, unsigned char* dst, int width,
                               int depth) {
    const auto last = static_cast<std::ptrdiff_t>(width - 1) * depth;
    const auto count = static_cast<size_t>(last + depth);
    std::memset(ctx->vp, 0, count * sizeof(float));
    std::memset(ctx->vm, 0, count * sizeof(float));
    for (int c = 0; c < kChannels; ++c) {
        run_recursion(src + c, ctx->vp + c, width, depth, ctx->np, ctx->dp, ctx->bp);
        run_recursion(src + last + c, ctx->vm + last + c, width, -depth, ctx->nm, ctx->dm, ctx->bm);
    }
    for (std::ptrdiff_t i = 0; i <= last; i += depth) {
        for (int c = 0; c < kChannels; ++c) {
            dst[i + c] = to_byte(ctx->vp[i + c] + ctx->vm[i + c]);
        }
    }
}

void korvane::gaussiir_scalar(unsigned char* image, int width, int height, int depth, int stride, float horz,
                              float vert) {
    const auto longest = static_cast<size_t>(std::max(width, height));
    const auto pixelBytes = static_cast<size_t>(depth);
    const WorkBuffer<unsigned char> line(longest, pixelBytes);
    const WorkBuffer<float> vp(longest, pixelBytes);
    const WorkBuffer<float> vm(longest, pixelBytes);
    if (!line || !vp || !vm) {
        return;
    }
    gaussiirContext context = {};
    context.vp = vp.get();
    context.vm = vm.get();
    calculate_gauss_iir_coefficients(&context, gaussiir_deviation(horz));
    for (std::ptrdiff_t x = 0; x < width; ++x) {
        unsigned char* column = image + x * depth;
        for (std::ptrdiff_t y = 0; y < height; ++y) {
            std::memcpy(line.get() + y * depth, column + y * stride, pixelBytes);
        }
        blur_line_scalar(&context, line.get(), line.get(), height, depth);
        for (std::ptrdiff_t y = 0; y < height; ++y) {
            std::memcpy(column + y * stride, line.get() + y * depth, pixelBytes);
        }
    }
    if (vert != horz) {
        calculate_gauss_iir_coefficients(&context, gaussiir_deviation(vert));
    }
    for (std::ptrdiff_t y = 0; y < height; ++y) {
        unsigned char* row = image + y * stride;
        blur_line_scalar(&context, row, row, width, depth);
    }
}
