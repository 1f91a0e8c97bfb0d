#include "applications/gif_maker/nearest_color.h"

#include "applications/gif_maker/nearest_color_scalar.h"

namespace korvane {

void nearest_colors(const PixelPlanes& pixels, const PaletteColors& palette, int32_t* indices) {
    nearest_colors_scalar(pixels, palette, indices);
}

}  // namespace korvane
