// SPDX-License-Identifier: Apache-2.0
#include "applications/gif_maker/palette_refinement_scalar.h"

namespace korvane {

namespace {

constexpr int32_t kFartherThanAny = 100'000'000;

int32_t squared(int32_t value) {
    return value * value;
}

size_t nearest(int32_t red, int32_t green, int32_t blue, const PaletteColors& palette) {
    size_t best = 0;
    int32_t bestDistance = kFartherThanAny;
    for (size_t k = 0; k < palette.count; ++k) {
        const int32_t distance =
            squared(red - palette.red[k]) + squared(green - palette.green[k]) + squared(blue - palette.blue[k]);
        if (distance < bestDistance) {
            bestDistance = distance;
            best = k;
        }
    }
    return best;
}

}  // namespace

void refine_palette_scalar(const CellPixels& pixels, const PaletteColors& palette, const int32_t* /*guesses*/,
                           const PaletteSums& sums) {
    for (size_t cell = 0; cell < kHistogramCells; ++cell) {
        const CellBase base =
            cell_base(cell / kCellsPerAxis / kCellsPerAxis, cell / kCellsPerAxis % kCellsPerAxis, cell % kCellsPerAxis);
        for (size_t i = pixels.begin(cell); i < pixels.begin(cell + 1); ++i) {
            const uint16_t low = pixels.low()[i];
            const int32_t red = base.red + LowBits::red(low);
            const int32_t green = base.green + LowBits::green(low);
            const int32_t blue = base.blue + LowBits::blue(low);
            const size_t entry = nearest(red, green, blue, palette);
            sums.reds[entry] += red;
            sums.greens[entry] += green;
            sums.blues[entry] += blue;
            sums.counts[entry] += 1;
        }
    }
}

}  // namespace korvane
