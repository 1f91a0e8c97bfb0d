// SPDX-License-Identifier: Apache-2.0
// The one picture on which all kernels are counted, in every layout that they read, and the places where they write.
#ifndef KORVANE_BENCHMARKS_ARM_SCENE_H_
#define KORVANE_BENCHMARKS_ARM_SCENE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "algorithms/fast_detection.h"
#include "applications/gif_maker/color_quantizer.h"

namespace korvane::arm {

struct Scene {
    static constexpr int kWidth = 1280;
    static constexpr int kHeight = 720;
    static constexpr size_t kPixels = size_t{kWidth} * kHeight;

    Scene();

    uint8_t* y() { return planar.data(); }
    uint8_t* chroma() { return planar.data() + kPixels; }
    uint8_t* outChroma() { return out.data() + kPixels; }

    // What is read. `planar` is NV21, and good enough for every other planar layout. `column` is the gray picture as
    // columns of numbers.
    std::vector<uint8_t> rgba, rgb, gray, yuv, yuyv, planar;
    std::vector<unsigned> columns;

    // What is written; cleared before every run, but for `step`, which lies between the two steps of a peer.
    std::vector<uint8_t> out;
    std::vector<uint8_t> step;
    std::vector<int> sums;
    std::vector<KeyPoint> corners;
    std::vector<Color> palette;
};

}  // namespace korvane::arm

#endif  // KORVANE_BENCHMARKS_ARM_SCENE_H_
