// SPDX-License-Identifier: Apache-2.0
// The window of the box blurs: its width, and how a sum of the bytes under it is divided.
#ifndef KORVANE_ALGORITHMS_BOX_WINDOW_H_
#define KORVANE_ALGORITHMS_BOX_WINDOW_H_

#include <bit>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace korvane {

// How a sum is divided by the window's width. While sums fit 16 bits the division is a multiply, and a quicker one
// while they fit 15.
enum class Division { kShort, kNarrow, kWideDown, kWideNearest };

constexpr size_t kShortRadius = 63;
constexpr size_t kNarrowRadius = 127;
// Up to here a sum fits a signed 32-bit lane.
constexpr size_t kWideRadius = (INT32_MAX / 255 - 1) / 2;

// sum / divisor is the high half of (sum + bias) * multiplier, shifted right.
struct NarrowDivision {
    uint16_t multiplier;
    uint16_t bias;
    int shift;
};

// For a radius of 1 to kNarrowRadius. The reciprocal has 16 bits; it is exact enough either rounded up or rounded down.
// Up to kShortRadius 15 bits are enough, and the multiplier is even.
constexpr NarrowDivision narrow_division(size_t radius) {
    const auto divisor = static_cast<uint32_t>(2 * radius + 1);
    const int shift = 31 - std::countl_zero(divisor);
    const uint32_t unit = radius <= kShortRadius ? 2 : 1;
    const uint32_t one = (uint32_t{65536} << shift) / unit;
    const uint32_t up = one / divisor + 1;
    if (255 * (up * divisor - one) < up) {
        return {static_cast<uint16_t>(up * unit), 0, shift};
    }
    return {static_cast<uint16_t>((up - 1) * unit), 1, shift};
}

// Tests the first and the last sum of each quotient. Sums end at 255 whole windows plus the radius, which rounding to
// nearest adds.
constexpr bool narrow_divisions_are_exact() {
    for (size_t radius = 1; radius <= kNarrowRadius; ++radius) {
        const auto divisor = static_cast<uint32_t>(2 * radius + 1);
        const NarrowDivision division = narrow_division(radius);
        for (uint32_t quotient = 0; quotient <= 255; ++quotient) {
            const uint32_t first = quotient * divisor;
            const uint32_t last = quotient == 255 ? first + static_cast<uint32_t>(radius) : first + divisor - 1;
            const uint32_t most = radius <= kShortRadius ? 32767 : 65535;
            for (const uint32_t sum : {first, last}) {
                const uint32_t biased = sum + division.bias;
                if (biased > most || (biased * division.multiplier) >> 16 >> division.shift != quotient) {
                    return false;
                }
            }
        }
    }
    return true;
}
static_assert(narrow_divisions_are_exact());

struct BoxWindow {
    size_t radius;
    uint16_t multiplier = 0;  // kShort and kNarrow only, as the next two
    int shift = 0;
    uint16_t start = 0;  // what a sum holds before the first pixel is added: biases of the division
    int32_t divisor;
    float reciprocal;

    // Means rounded down, or to nearest.
    BoxWindow(size_t windowRadius, bool toNearest)
        : radius(windowRadius),
          divisor(static_cast<int32_t>(2 * windowRadius + 1)),
          reciprocal(1.0F / static_cast<float>(divisor)) {
        if (radius >= 1 && radius <= kNarrowRadius) {
            const NarrowDivision division = narrow_division(radius);
            multiplier = division.multiplier;
            shift = division.shift;
            start = static_cast<uint16_t>(division.bias + (toNearest ? radius : 0));
        }
    }
};

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_BOX_WINDOW_H_
