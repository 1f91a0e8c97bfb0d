// SPDX-License-Identifier: Apache-2.0
#include "applications/blur/blur_render.h"

#include <cstdint>

#include "algorithms/alpha_blend.h"
#include "algorithms/stack_blur.h"

namespace korvane {

void blur_and_dim(unsigned char* pixels, int width, int height, int radius, int color, int weight) {
    // Both sizes are tested: two negative ones have a positive product.
    if (pixels == nullptr || width < 1 || height < 1) {
        return;
    }
    stack_blur(pixels, width, height, radius);
    const auto count = static_cast<int>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height));
    alpha_blend_neon(pixels, count, (color >> 16) & 255, (color >> 8) & 255, color & 255, weight);
}

}  // namespace korvane
