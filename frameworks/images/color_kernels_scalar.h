// The plain forms of the colour conversions: the ground truth that the vector kernels reproduce byte for byte, their
// tails, and all there is on processors without a vector unit.
#ifndef KORVANE_FRAMEWORKS_IMAGES_COLOR_KERNELS_SCALAR_H_
#define KORVANE_FRAMEWORKS_IMAGES_COLOR_KERNELS_SCALAR_H_

#include "frameworks/images/color_kernels.h"

namespace korvane {

extern const ColorKernels kColorKernelsScalar;

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_IMAGES_COLOR_KERNELS_SCALAR_H_
