// The nearest palette entry of each pixel. Internal.
#ifndef KORVANE_APPLICATIONS_GIF_MAKER_NEAREST_COLOR_H_
#define KORVANE_APPLICATIONS_GIF_MAKER_NEAREST_COLOR_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

constexpr size_t kMaxPaletteColors = 512;

struct PixelPlanes {
    const uint8_t* red;
    const uint8_t* green;
    const uint8_t* blue;
    size_t count;
};

// Channels are 0 ... 255.
struct PaletteColors {
    int32_t red[kMaxPaletteColors];
    int32_t green[kMaxPaletteColors];
    int32_t blue[kMaxPaletteColors];
    size_t count;
};

// indices[i] = the palette entry with the smallest squared distance to pixel i, the lowest one on ties. The palette has
// at least one entry.
void nearest_colors(const PixelPlanes& pixels, const PaletteColors& palette, int32_t* indices);

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_GIF_MAKER_NEAREST_COLOR_H_
