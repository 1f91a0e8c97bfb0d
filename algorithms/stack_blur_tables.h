// SPDX-License-Identifier: Apache-2.0
// The multipliers and shifts that stand in for the division by the weights' sum in the stack blur.
#ifndef KORVANE_ALGORITHMS_STACK_BLUR_TABLES_H_
#define KORVANE_ALGORITHMS_STACK_BLUR_TABLES_H_

#include <array>
#include <cstdint>

inline constexpr int kStackBlurMaxRadius = 254;

struct StackBlurTables {
    std::array<uint16_t, kStackBlurMaxRadius + 1> mul{};
    std::array<uint8_t, kStackBlurMaxRadius + 1> shr{};
};

// For radius r the weights sum to D = (r + 1)^2. The shift s is the largest with 2^s <= 512 * D, the multiplier is
// 2^s / D rounded up, so sum * mul >> shr is close to sum / D, never above 255, and sum * mul stays below 2^32.
constexpr StackBlurTables make_stack_blur_tables() {
    StackBlurTables tables;
    for (uint32_t radius = 0; radius <= kStackBlurMaxRadius; ++radius) {
        const uint32_t weights = (radius + 1) * (radius + 1);
        uint32_t shift = 9;
        while (uint32_t{2} << shift <= 512 * weights) {
            ++shift;
        }
        tables.mul[radius] = static_cast<uint16_t>(((uint32_t{1} << shift) + weights - 1) / weights);
        tables.shr[radius] = static_cast<uint8_t>(shift);
    }
    return tables;
}

inline constexpr StackBlurTables kStackBlurTables = make_stack_blur_tables();
inline constexpr const std::array<uint16_t, kStackBlurMaxRadius + 1>& stackblur_mul = kStackBlurTables.mul;
inline constexpr const std::array<uint8_t, kStackBlurMaxRadius + 1>& stackblur_shr = kStackBlurTables.shr;

#endif  // KORVANE_ALGORITHMS_STACK_BLUR_TABLES_H_
