// SPDX-License-Identifier: Apache-2.0
// The test scene: a picture drawn in code, so that demo, tests and benchmarks need no photo.
//
// A house on a meadow in front of hills. A turned or mirrored picture always differs from the original. It has smooth
// gradients (sky, sun), fine texture (grass, shingles), text-like edges (the board), saturated shapes and thin lines.
#ifndef KORVANE_TOOLS_SCENE_H_
#define KORVANE_TOOLS_SCENE_H_

#include <cstdint>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/images/image.h"

namespace korvane {

// An RGB image of the given size; every size shows the whole scene's height, a wider one more of its right side. Equal
// sizes give equal pixels on one machine. An image without planes when it does not fit in memory.
auto_ptr<Image> draw_scene(uint32_t width, uint32_t height);

}  // namespace korvane

#endif  // KORVANE_TOOLS_SCENE_H_
