// SPDX-License-Identifier: Apache-2.0
// Sends every pixel to the nearest color of a palette and adds it to that entry's sums. Internal.
#ifndef KORVANE_APPLICATIONS_GIF_MAKER_PALETTE_REFINEMENT_H_
#define KORVANE_APPLICATIONS_GIF_MAKER_PALETTE_REFINEMENT_H_

#include <cstddef>
#include <cstdint>

#include "applications/gif_maker/cell_pixels.h"

namespace korvane {

constexpr size_t kMaxPaletteColors = 512;

// Channels are 0 ... 255; at least one color.
struct PaletteColors {
    int32_t red[kMaxPaletteColors];
    int32_t green[kMaxPaletteColors];
    int32_t blue[kMaxPaletteColors];
    size_t count;
};

// By palette entry; 64 bits, since a sum of channels passes 32 bits at 8.4 million pixels.
struct PaletteSums {
    int64_t* reds;
    int64_t* greens;
    int64_t* blues;
    int64_t* counts;
};

// Adds each pixel to the entry at the smallest squared distance, the lowest one on ties. `guesses` names for each cell
// an entry that is probably near; a bad guess costs time and changes nothing.
void refine_palette(const CellPixels& pixels, const PaletteColors& palette, const int32_t* guesses,
                    const PaletteSums& sums);

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_GIF_MAKER_PALETTE_REFINEMENT_H_
