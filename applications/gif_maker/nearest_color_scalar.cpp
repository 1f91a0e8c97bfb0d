#include "applications/gif_maker/nearest_color_scalar.h"

namespace korvane {

namespace {
constexpr int32_t kFartherThanAny = 100'000'000;

int32_t squared(int32_t value) {
    return value * value;
}
}  // namespace

void nearest_colors_scalar(const PixelPlanes& pixels, const PaletteColors& palette, int32_t* indices) {
    for (size_t i = 0; i < pixels.count; ++i) {
        int32_t bestDistance = kFartherThanAny;
        for (size_t k = 0; k < palette.count; ++k) {
            const int32_t distance = squared(pixels.red[i] - palette.red[k]) +
                                     squared(pixels.green[i] - palette.green[k]) +
                                     squared(pixels.blue[i] - palette.blue[k]);
            if (distance < bestDistance) {
                bestDistance = distance;
                indices[i] = static_cast<int32_t>(k);
            }
        }
    }
}

}  // namespace korvane
