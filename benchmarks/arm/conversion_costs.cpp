// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "benchmarks/arm/cost.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/color_kernels_scalar.h"

namespace korvane::arm {
namespace {

constexpr int kWidth = Scene::kWidth;
constexpr int kHeight = Scene::kHeight;
constexpr size_t kPixels = Scene::kPixels;

const ColorKernels& kTwins = kColorKernelsScalar;

using Source = std::vector<uint8_t> Scene::*;

// One buffer to one buffer; the twin counts in groups of `group` pixels.
Cost packed(const char* name, Source source, int (*ours)(const unsigned char*, unsigned char*, int, int),
            ColorKernels::Packed ColorKernels::*twin, size_t group = 1) {
    return {name,
            [=](Scene& s) { ours((s.*source).data(), s.out.data(), kWidth, kHeight); },
            [=](Scene& s) { (kTwins.*twin)((s.*source).data(), s.out.data(), kPixels / group); },
            {},
            {}};
}

std::vector<Cost> packed_costs() {
    return {
        packed("yuyv2rgb", &Scene::yuyv, color_convert_yuyv2rgb, &ColorKernels::yuyv2rgb, 2),
        packed("yvyu2rgb", &Scene::yuyv, color_convert_yvyu2rgb, &ColorKernels::yvyu2rgb, 2),
        packed("yuv2rgb", &Scene::yuv, color_convert_yuv2rgb, &ColorKernels::yuv2rgb),
        packed("rgb2yuyv", &Scene::rgb, color_convert_rgb2yuyv, &ColorKernels::rgb2yuyv, 2),
        packed("rgb2yvyu", &Scene::rgb, color_convert_rgb2yvyu, &ColorKernels::rgb2yvyu, 2),
        packed("rgb2yuv", &Scene::rgb, color_convert_rgb2yuv, &ColorKernels::rgb2yuv),
        packed("rgb2gray", &Scene::rgb, color_convert_rgb2gray, &ColorKernels::rgb2gray),
        packed("rgba2gray", &Scene::rgba, color_convert_rgba2gray, &ColorKernels::rgba2gray),
        packed("gray2rgb", &Scene::gray, color_convert_gray2rgb, &ColorKernels::gray2rgb),
        packed("gray2rgba", &Scene::gray, color_convert_gray2rgba, &ColorKernels::gray2rgba),
        packed("rgb2rgba", &Scene::rgb, color_convert_rgb2rgba, &ColorKernels::rgb2rgba),
        packed("rgba2rgb", &Scene::rgba, color_convert_rgba2rgb, &ColorKernels::rgba2rgb),
        {"yuv2gray",
         [](Scene& s) { color_convert_yuv2gray(s.planar.data(), s.out.data(), kWidth, kHeight); },
         [](Scene& s) { std::memcpy(s.out.data(), s.planar.data(), kPixels); },
         {},
         {}},
    };
}

void nv21_twin(Scene& s) {
    for (size_t row = 0; row < kHeight; row += 2) {
        const size_t at = row * kWidth;
        const size_t below = at + kWidth;
        kTwins.rgb2nv21_rows(&s.rgb[3 * at], &s.rgb[3 * below], &s.out[at], &s.out[below], s.outChroma() + at / 2,
                             kWidth / 2);
    }
}

std::vector<Cost> encode_costs() {
    return {
        {"rgb2nv21",
         [](Scene& s) { color_convert_rgb2nv21(s.rgb.data(), s.out.data(), s.outChroma(), kWidth, kHeight); },
         nv21_twin,
         {},
         {}},
        {"rgb2nv12",
         [](Scene& s) { color_convert_rgb2nv12(s.rgb.data(), s.out.data(), s.outChroma(), kWidth, kHeight); },
         [](Scene& s) { kTwins.rgb2nv12(s.rgb.data(), s.out.data(), s.outChroma(), kPixels / 4); },
         {},
         {}},
        {"rgb2yv12oryu12",
         [](Scene& s) {
             color_convert_rgb2yv12oryu12(s.rgb.data(), s.out.data(), s.outChroma(), s.outChroma() + kPixels / 4,
                                          kWidth, kHeight);
         },
         [](Scene& s) {
             kTwins.rgb2yv12oryu12(s.rgb.data(), s.out.data(), s.outChroma(), s.outChroma() + kPixels / 4, kPixels / 4);
         },
         {},
         {}},
        {"rgb2yuv422p",
         [](Scene& s) {
             color_convert_rgb2yuv422p(s.rgb.data(), s.out.data(), s.outChroma(), s.outChroma() + kPixels / 2, kWidth,
                                       kHeight);
         },
         [](Scene& s) {
             kTwins.rgb2yuv422p(s.rgb.data(), s.out.data(), s.outChroma(), s.outChroma() + kPixels / 2, kPixels / 2);
         },
         {},
         {}},
    };
}

std::vector<Cost> decode_costs() {
    return {
        {"nv212rgb",
         [](Scene& s) { color_convert_nv212rgb(s.y(), s.chroma(), s.out.data(), kWidth, kHeight); },
         [](Scene& s) { kTwins.nv212rgb(s.y(), s.chroma(), s.out.data(), kPixels / 4); },
         {},
         {}},
        {"nv122rgb",
         [](Scene& s) { color_convert_nv122rgb(s.y(), s.chroma(), s.out.data(), kWidth, kHeight); },
         [](Scene& s) { kTwins.nv122rgb(s.y(), s.chroma(), s.out.data(), kPixels / 4); },
         {},
         {}},
        {"yuv422p2rgb",
         [](Scene& s) {
             color_convert_yuv422p2rgb(s.y(), s.chroma(), s.chroma() + kPixels / 2, s.out.data(), kWidth, kHeight);
         },
         [](Scene& s) { kTwins.yuv422p2rgb(s.y(), s.chroma(), s.chroma() + kPixels / 2, s.out.data(), kPixels / 2); },
         {},
         {}},
        {"yv12oryu122rgb",
         [](Scene& s) {
             color_convert_yv12oryu122rgb(s.y(), s.chroma(), s.chroma() + kPixels / 4, s.out.data(), kWidth, kHeight);
         },
         [](Scene& s) {
             kTwins.yv12oryu122rgb(s.y(), s.chroma(), s.chroma() + kPixels / 4, s.out.data(), kPixels / 4);
         },
         {},
         {}},
    };
}

}  // namespace

std::vector<Cost> conversion_costs() {
    std::vector<Cost> costs;
    for (const auto& list : {packed_costs(), encode_costs(), decode_costs()}) {
        costs.insert(costs.end(), list.begin(), list.end());
    }
    return costs;
}

}  // namespace korvane::arm
