// The plain form of the nearest-colour search: what the fast form must equal.
#ifndef KORVANE_APPLICATIONS_GIF_MAKER_NEAREST_COLOR_SCALAR_H_
#define KORVANE_APPLICATIONS_GIF_MAKER_NEAREST_COLOR_SCALAR_H_

#include <cstdint>

#include "applications/gif_maker/nearest_color.h"

namespace korvane {

void nearest_colors_scalar(const PixelPlanes& pixels, const PaletteColors& palette, int32_t* indices);

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_GIF_MAKER_NEAREST_COLOR_SCALAR_H_
