// SPDX-License-Identifier: Apache-2.0
#include "algorithms/stack_blur_scalar.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "algorithms/stack_blur_tables.h"

namespace {

// One value for each of the bytes 0, 1 and 2. 32 bits hold sum * mul for every radius.
struct Triple {
    uint32_t c0, c1, c2;

    Triple& operator+=(const Triple& other) {
        c0 += other.c0;
        c1 += other.c1;
        c2 += other.c2;
        return *this;
    }
    Triple& operator-=(const Triple& other) {
        c0 -= other.c0;
        c1 -= other.c1;
        c2 -= other.c2;
        return *this;
    }
    Triple operator*(uint32_t factor) const { return {c0 * factor, c1 * factor, c2 * factor}; }
};

Triple load(const unsigned char* bytes) {
    return {bytes[0], bytes[1], bytes[2]};
}

// `sum` is the weighted sum of the window's pixels, `sumIn` and `sumOut` the plain sums of those whose weight is about
// to grow and of those whose weight is about to shrink. `stack` is a ring of the window's 2 * radius + 1 pixels.
void blur_line(unsigned char* line, size_t length, size_t step, size_t radius, Triple* stack) {
    const uint32_t mul = stackblur_mul[radius];
    const uint32_t shr = stackblur_shr[radius];
    const size_t slots = 2 * radius + 1;
    const auto pixel = [=](size_t i) { return load(line + std::min(i, length - 1) * step); };
    const Triple first = pixel(0);
    const auto growing = static_cast<uint32_t>(radius + 1);
    std::fill_n(stack, growing, first);
    Triple sum = first * (growing * (growing + 1) / 2);
    Triple sumOut = first * growing;
    Triple sumIn{};
    for (size_t i = 1; i <= radius; ++i) {
        stack[radius + i] = pixel(i);
        sum += stack[radius + i] * static_cast<uint32_t>(radius + 1 - i);
        sumIn += stack[radius + i];
    }
    size_t centre = radius;
    size_t oldest = 0;
    for (size_t at = 0; at < length; ++at) {
        unsigned char* here = line + at * step;
        here[0] = static_cast<unsigned char>((sum.c0 * mul) >> shr);
        here[1] = static_cast<unsigned char>((sum.c1 * mul) >> shr);
        here[2] = static_cast<unsigned char>((sum.c2 * mul) >> shr);
        sum -= sumOut;
        sumOut -= stack[oldest];
        stack[oldest] = pixel(at + radius + 1);
        sumIn += stack[oldest];
        sum += sumIn;
        centre = centre + 1 == slots ? 0 : centre + 1;
        oldest = oldest + 1 == slots ? 0 : oldest + 1;
        sumOut += stack[centre];
        sumIn -= stack[centre];
    }
}

}  // namespace

void korvane::stack_blur_scalar(unsigned char* src, size_t w, size_t h, size_t radius) {
    Triple stack[2 * kStackBlurMaxRadius + 1];
    for (size_t y = 0; y < h; ++y) {
        blur_line(src + y * w * 4, w, 4, radius, stack);
    }
    for (size_t x = 0; x < w; ++x) {
        blur_line(src + x * 4, h, w * 4, radius, stack);
    }
}
