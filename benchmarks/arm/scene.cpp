// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/arm/scene.h"

#include "benchmarks/support/picture.h"
#include "frameworks/images/color_convert.h"

namespace korvane::arm {

Scene::Scene()
    : rgba(bench::rgba_picture(kWidth, kHeight)),
      rgb(3 * kPixels),
      gray(kPixels),
      yuv(3 * kPixels),
      yuyv(2 * kPixels),
      planar(2 * kPixels),
      out(4 * kPixels + 2),
      step(8 * kPixels),
      sums(2 * kPixels) {
    color_convert_rgba2rgb(rgba.data(), rgb.data(), kWidth, kHeight);
    color_convert_rgb2gray(rgb.data(), gray.data(), kWidth, kHeight);
    color_convert_rgb2yuv(rgb.data(), yuv.data(), kWidth, kHeight);
    color_convert_rgb2yuyv(rgb.data(), yuyv.data(), kWidth, kHeight);
    color_convert_rgb2nv21(rgb.data(), y(), chroma(), kWidth, kHeight);
    for (size_t x = 0; x < kWidth; ++x) {
        for (size_t row = 0; row < kHeight; ++row) {
            columns.push_back(gray[row * kWidth + x]);
        }
    }
}

}  // namespace korvane::arm
