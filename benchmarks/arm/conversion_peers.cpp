// SPDX-License-Identifier: Apache-2.0
// libyuv. Where it has no function for a byte order, the same work with another one stands in. Its 4:2:0 chroma lies
// over 2 x 2 blocks while most of ours lies along the scan, so results differ in more than rounding.
#include <libyuv.h>

#include "benchmarks/arm/cost.h"

namespace korvane::arm {
namespace {

constexpr int kWidth = Scene::kWidth;
constexpr int kHeight = Scene::kHeight;
constexpr size_t kPixels = Scene::kPixels;

using PackedFunction = int (*)(const uint8_t*, int, uint8_t*, int, int, int);
using Source = std::vector<uint8_t> Scene::*;

// One buffer to one buffer, so many bytes a pixel each.
Peer packed(const char* kernel, const char* name, PackedFunction function, Source source, int bytesIn, int bytesOut,
            double tolerance = -1) {
    return {kernel,
            name,
            [=](Scene& s) {
                function((s.*source).data(), bytesIn * kWidth, s.out.data(), bytesOut * kWidth, kWidth, kHeight);
            },
            tolerance,
            {}};
}

void to_argb(Scene& s) {
    libyuv::RAWToARGB(s.rgb.data(), 3 * kWidth, s.step.data(), 4 * kWidth, kWidth, kHeight);
}

std::vector<Peer> encode_peers() {
    const auto i420 = [](Scene& s) {
        libyuv::RAWToI420(s.rgb.data(), 3 * kWidth, s.out.data(), kWidth, s.outChroma(), kWidth / 2,
                          s.outChroma() + kPixels / 4, kWidth / 2, kWidth, kHeight);
    };
    return {
        packed("rgb2yuyv", "libyuv ARGBToYUY2 alone (4 bytes in)", libyuv::ARGBToYUY2, &Scene::rgba, 4, 2),
        {"rgb2yvyu",
         "libyuv RAWToARGB + ARGBToYUY2 (U, V swapped)",
         [](Scene& s) {
             to_argb(s);
             libyuv::ARGBToYUY2(s.step.data(), 4 * kWidth, s.out.data(), 2 * kWidth, kWidth, kHeight);
         },
         -1,
         {}},
        {"rgb2yuv",
         "libyuv RAWToARGB + ARGBToI444 (planar result)",
         [](Scene& s) {
             to_argb(s);
             libyuv::ARGBToI444(s.step.data(), 4 * kWidth, s.out.data(), kWidth, s.outChroma(), kWidth,
                                s.outChroma() + kPixels, kWidth, kWidth, kHeight);
         },
         -1,
         {}},
        {"rgb2yuv422p",
         "libyuv ARGBToI422 alone (4 bytes in)",
         [](Scene& s) {
             libyuv::ARGBToI422(s.rgba.data(), 4 * kWidth, s.out.data(), kWidth, s.outChroma(), kWidth / 2,
                                s.outChroma() + kPixels / 2, kWidth / 2, kWidth, kHeight);
         },
         -1,
         {}},
        {"rgb2nv21", "libyuv RAWToI420", i420, -1, {}},
        {"rgb2nv12", "libyuv RAWToI420", i420, -1, {}},
        {"rgb2yv12oryu12", "libyuv RAWToI420", i420, -1, {}},
    };
}

std::vector<Peer> decode_peers() {
    return {
        packed("yuyv2rgb", "libyuv YUY2ToARGB (4 bytes out)", libyuv::YUY2ToARGB, &Scene::yuyv, 2, 4),
        {"yvyu2rgb",
         "libyuv YUY2ToARGB + ARGBToRGB24 (U, V swapped)",
         [](Scene& s) {
             libyuv::YUY2ToARGB(s.yuyv.data(), 2 * kWidth, s.step.data(), 4 * kWidth, kWidth, kHeight);
             libyuv::ARGBToRGB24(s.step.data(), 4 * kWidth, s.out.data(), 3 * kWidth, kWidth, kHeight);
         },
         -1,
         {}},
        {"nv212rgb",
         "libyuv NV21ToRAW",
         [](Scene& s) {
             libyuv::NV21ToRAW(s.y(), kWidth, s.chroma(), kWidth, s.out.data(), 3 * kWidth, kWidth, kHeight);
         },
         -1,
         {}},
        {"nv122rgb",
         "libyuv NV12ToARGB (4 bytes out)",
         [](Scene& s) {
             libyuv::NV12ToARGB(s.y(), kWidth, s.chroma(), kWidth, s.out.data(), 4 * kWidth, kWidth, kHeight);
         },
         -1,
         {}},
        {"yuv422p2rgb",
         "libyuv I422ToRAW",
         [](Scene& s) {
             libyuv::I422ToRAW(s.y(), kWidth, s.chroma(), kWidth / 2, s.chroma() + kPixels / 2, kWidth / 2,
                               s.out.data(), 3 * kWidth, kWidth, kHeight);
         },
         3,
         {}},
        {"yv12oryu122rgb",
         "libyuv I420ToRAW",
         [](Scene& s) {
             libyuv::I420ToRAW(s.y(), kWidth, s.chroma(), kWidth / 2, s.chroma() + kPixels / 4, kWidth / 2,
                               s.out.data(), 3 * kWidth, kWidth, kHeight);
         },
         -1,
         {}},
        {"yuv2rgb",
         "libyuv I444ToRAW (planar source)",
         [](Scene& s) {
             libyuv::I444ToRAW(s.yuv.data(), kWidth, s.yuv.data() + kPixels, kWidth, s.yuv.data() + 2 * kPixels, kWidth,
                               s.out.data(), 3 * kWidth, kWidth, kHeight);
         },
         -1,
         {}},
    };
}

}  // namespace

std::vector<Peer> conversion_peers() {
    std::vector<Peer> peers = {
        packed("rgb2gray", "libyuv RAWToJ400", libyuv::RAWToJ400, &Scene::rgb, 3, 1, 3),
        packed("rgba2gray", "libyuv ARGBToJ400", libyuv::ARGBToJ400, &Scene::rgba, 4, 1),
        packed("rgb2rgba", "libyuv RGB24ToARGB", libyuv::RGB24ToARGB, &Scene::rgb, 3, 4, 0),
        packed("rgba2rgb", "libyuv ARGBToRGB24", libyuv::ARGBToRGB24, &Scene::rgba, 4, 3, 0),
        {"alpha_blend",
         "libyuv ARGBBlend",
         [](Scene& s) {
             libyuv::ARGBBlend(s.rgba.data(), 4 * kWidth, s.step.data(), 4 * kWidth, s.out.data(), 4 * kWidth, kWidth,
                               kHeight);
         },
         -1,
         {}},
        {"nv12_to_yv12",
         "libyuv NV12ToI420",
         [](Scene& s) {
             libyuv::NV12ToI420(s.y(), kWidth, s.chroma(), kWidth, s.out.data(), kWidth, s.outChroma() + kPixels / 4,
                                kWidth / 2, s.outChroma(), kWidth / 2, kWidth, kHeight);
         },
         0,
         {}},
    };
    for (const auto& list : {encode_peers(), decode_peers()}) {
        peers.insert(peers.end(), list.begin(), list.end());
    }
    return peers;
}

}  // namespace korvane::arm
