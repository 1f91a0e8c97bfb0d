// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "benchmarks/arm/cost.h"
#include "frameworks/images/color_convert.h"
#include "frameworks/images/color_scalar.h"

namespace korvane::arm {
namespace {

constexpr int kWidth = Scene::kWidth;
constexpr int kHeight = Scene::kHeight;
constexpr size_t kPixels = Scene::kPixels;

using Source = std::vector<uint8_t> Scene::*;

// One buffer to one buffer; the twin counts in groups of `group` pixels.
Cost packed(const char* name, Source source, int (*ours)(const unsigned char*, unsigned char*, int, int),
            void (*twin)(const uint8_t*, uint8_t*, size_t), size_t group = 1) {
    return {name,
            [=](Scene& s) { ours((s.*source).data(), s.out.data(), kWidth, kHeight); },
            [=](Scene& s) { twin((s.*source).data(), s.out.data(), kPixels / group); },
            {},
            {}};
}

std::vector<Cost> packed_costs() {
    return {
        packed("yuyv2rgb", &Scene::yuyv, color_convert_yuyv2rgb, yuyv2rgb_scalar, 2),
        packed("yvyu2rgb", &Scene::yuyv, color_convert_yvyu2rgb, yvyu2rgb_scalar, 2),
        packed("yuv2rgb", &Scene::yuv, color_convert_yuv2rgb, yuv2rgb_scalar),
        packed("rgb2yuyv", &Scene::rgb, color_convert_rgb2yuyv, rgb2yuyv_scalar, 2),
        packed("rgb2yvyu", &Scene::rgb, color_convert_rgb2yvyu, rgb2yvyu_scalar, 2),
        packed("rgb2yuv", &Scene::rgb, color_convert_rgb2yuv, rgb2yuv_scalar),
        packed("rgb2gray", &Scene::rgb, color_convert_rgb2gray, rgb2gray_scalar),
        packed("rgba2gray", &Scene::rgba, color_convert_rgba2gray, rgba2gray_scalar),
        packed("gray2rgb", &Scene::gray, color_convert_gray2rgb, gray2rgb_scalar),
        packed("gray2rgba", &Scene::gray, color_convert_gray2rgba, gray2rgba_scalar),
        packed("rgb2rgba", &Scene::rgb, color_convert_rgb2rgba, rgb2rgba_scalar),
        packed("rgba2rgb", &Scene::rgba, color_convert_rgba2rgb, rgba2rgb_scalar),
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
        rgb2nv21_rows_scalar(&s.rgb[3 * at], &s.rgb[3 * below], &s.out[at], &s.out[below], s.outChroma() + at / 2,
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
         [](Scene& s) { rgb2nv12_scalar(s.rgb.data(), s.out.data(), s.outChroma(), kPixels / 4); },
         {},
         {}},
        {"rgb2yv12oryu12",
         [](Scene& s) {
             color_convert_rgb2yv12oryu12(s.rgb.data(), s.out.data(), s.outChroma(), s.outChroma() + kPixels / 4,
                                          kWidth, kHeight);
         },
         [](Scene& s) {
             rgb2yv12oryu12_scalar(s.rgb.data(), s.out.data(), s.outChroma(), s.outChroma() + kPixels / 4, kPixels / 4);
         },
         {},
         {}},
        {"rgb2yuv422p",
         [](Scene& s) {
             color_convert_rgb2yuv422p(s.rgb.data(), s.out.data(), s.outChroma(), s.outChroma() + kPixels / 2, kWidth,
                                       kHeight);
         },
         [](Scene& s) {
             rgb2yuv422p_scalar(s.rgb.data(), s.out.data(), s.outChroma(), s.outChroma() + kPixels / 2, kPixels / 2);
         },
         {},
         {}},
    };
}

std::vector<Cost> decode_costs() {
    return {
        {"nv212rgb",
         [](Scene& s) { color_convert_nv212rgb(s.y(), s.chroma(), s.out.data(), kWidth, kHeight); },
         [](Scene& s) { nv212rgb_scalar(s.y(), s.chroma(), s.out.data(), kPixels / 4); },
         {},
         {}},
        {"nv122rgb",
         [](Scene& s) { color_convert_nv122rgb(s.y(), s.chroma(), s.out.data(), kWidth, kHeight); },
         [](Scene& s) { nv122rgb_scalar(s.y(), s.chroma(), s.out.data(), kPixels / 4); },
         {},
         {}},
        {"yuv422p2rgb",
         [](Scene& s) {
             color_convert_yuv422p2rgb(s.y(), s.chroma(), s.chroma() + kPixels / 2, s.out.data(), kWidth, kHeight);
         },
         [](Scene& s) { yuv422p2rgb_scalar(s.y(), s.chroma(), s.chroma() + kPixels / 2, s.out.data(), kPixels / 2); },
         {},
         {}},
        {"yv12oryu122rgb",
         [](Scene& s) {
             color_convert_yv12oryu122rgb(s.y(), s.chroma(), s.chroma() + kPixels / 4, s.out.data(), kWidth, kHeight);
         },
         [](Scene& s) {
             yv12oryu122rgb_scalar(s.y(), s.chroma(), s.chroma() + kPixels / 4, s.out.data(), kPixels / 4);
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
