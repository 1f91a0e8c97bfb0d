// SPDX-License-Identifier: Apache-2.0
// The test scenes: pictures drawn in code, so that demo and tests need no photo.
//
// A house on a meadow in front of hills: smooth gradients (sky, sun), fine texture (grass, shingles), text-like edges
// (the board), saturated shapes (the kite) and thin lines (the fence). And a portrait: skin, hair and wool in front of
// lights out of focus. A turned or mirrored picture always differs from the original.
#ifndef KORVANE_TOOLS_SCENE_H_
#define KORVANE_TOOLS_SCENE_H_

#include <cstdint>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/images/image.h"

namespace korvane {

enum class SceneSubject { kHouse, kPortrait };

// An RGB image of the given size. Every size shows the whole scene's height; a wider one shows more of the house's
// right side, or of both sides of the portrait. Equal sizes give equal pixels on one machine. An image without planes
// when it does not fit in memory.
auto_ptr<Image> draw_scene(uint32_t width, uint32_t height, SceneSubject subject = SceneSubject::kHouse);

}  // namespace korvane

#endif  // KORVANE_TOOLS_SCENE_H_
