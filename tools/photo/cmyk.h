// SPDX-License-Identifier: Apache-2.0
#ifndef KORVANE_TOOLS_PHOTO_CMYK_H_
#define KORVANE_TOOLS_PHOTO_CMYK_H_

#include "tools/photo/photo.h"

namespace korvane {

// Makes an sRGB photo out of one whose four bytes a pixel are ink: through its colour profile when it has a CMYK one,
// else by the plain formula. Inverted bytes have 255 for no ink. The profile is used up.
void convert_cmyk(Photo& photo, bool isInverted);

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_CMYK_H_
