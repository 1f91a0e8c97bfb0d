// SPDX-License-Identifier: Apache-2.0
// Pictures to measure on.
#ifndef KORVANE_BENCHMARKS_SUPPORT_PICTURE_H_
#define KORVANE_BENCHMARKS_SUPPORT_PICTURE_H_

#include <vector>

namespace korvane::bench {

// A scene with what a photo has and a test pattern lacks: slow gradients, overlapping forms with hard edges, fine
// texture in places, and sensor noise everywhere. RGBA, opaque, rows packed; equal on every machine.
std::vector<unsigned char> rgba_picture(int width, int height);

}  // namespace korvane::bench

#endif  // KORVANE_BENCHMARKS_SUPPORT_PICTURE_H_
