// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <iterator>

#include "algorithms/gauss_blur.h"

namespace {

// The nearest number that an int32_t holds, 0 for a NaN: what 64-bit ARM converts to.
int32_t to_int(float value) {
    if (std::isnan(value)) {
        return 0;
    }
    return static_cast<int32_t>(std::clamp(static_cast<double>(value), -2147483648.0, 2147483647.0));
}

}  // namespace

void calculate_gauss_blur_coef(float sigma, int n, gauss_blur_coef* coef) {
    if (coef == nullptr) {
        return;
    }
    coef->coef_n = n;
    if (n < 1) {
        return;
    }
    const float variance = 12.0F * sigma * sigma;
    const int32_t floorWidth = to_int(std::floor(std::sqrt(variance / static_cast<float>(n) + 1.0F)));
    const int32_t narrow = std::min(floorWidth % 2 == 0 ? floorWidth - 1 : floorWidth, INT32_MAX - 2);

    // The products of whole numbers are exact in double; only then they become floats.
    const double boxes = n;
    const double width = narrow;
    const float numerator = variance - static_cast<float>(boxes * width * width) -
                            static_cast<float>(4.0 * boxes * width) - static_cast<float>(3.0 * boxes);
    const int32_t narrowBoxes = to_int(std::round(numerator / static_cast<float>(-4.0 * width - 4.0)));

    const int written = std::min(n, static_cast<int>(std::size(coef->coef_values)));
    for (int i = 0; i < written; ++i) {
        coef->coef_values[i] = i < narrowBoxes ? narrow : narrow + 2;
    }
}
