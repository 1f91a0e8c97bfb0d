// SPDX-License-Identifier: Apache-2.0
// The scalar twin of the refinement: every pixel against every color.
#ifndef KORVANE_APPLICATIONS_GIF_MAKER_PALETTE_REFINEMENT_SCALAR_H_
#define KORVANE_APPLICATIONS_GIF_MAKER_PALETTE_REFINEMENT_SCALAR_H_

#include "applications/gif_maker/palette_refinement.h"

namespace korvane {

void refine_palette_scalar(const CellPixels& pixels, const PaletteColors& palette, const int32_t* guesses,
                           const PaletteSums& sums);

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_GIF_MAKER_PALETTE_REFINEMENT_SCALAR_H_
