// SPDX-License-Identifier: Apache-2.0
// Three channels for every pixel: RGB from and to RGBA and packed YUV.
#include <cstddef>
#include <cstdint>

#include "frameworks/images/color_convert.h"
#include "frameworks/images/color_groups.h"
#include "frameworks/images/color_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frameworks/images/color_rgb.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/images/color_bt601-inl.h"
#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/rgb-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

void Rgb2Rgba(const uint8_t* rgb, uint8_t* rgba, size_t pixels) {
    const size_t done = AddAlpha(rgb, rgba, pixels);
    rgb2rgba_scalar(rgb + 3 * done, rgba + 4 * done, pixels - done);
}

void Rgba2Rgb(const uint8_t* rgba, uint8_t* rgb, size_t pixels) {
    const size_t done = DropAlpha(rgba, rgb, pixels);
    rgba2rgb_scalar(rgba + 4 * done, rgb + 3 * done, pixels - done);
}

void Rgb2Yuv(const uint8_t* rgb, uint8_t* yuv, size_t pixels) {
    const ByteTag d;
    const size_t done = ForWholeSteps(0, pixels, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        LoadEncoded(rgb + 3 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreInterleaved3(JoinedLuma(yEven, yOdd), JoinedChroma(uEven, uOdd), JoinedChroma(vEven, vOdd), d,
                              yuv + 3 * i);
    });
    rgb2yuv_scalar(rgb + 3 * done, yuv + 3 * done, pixels - done);
}

// The channels of half a vector of pixels, not clamped.
HWY_INLINE void DecodeHalf(SignedVector yQuarters, LaneVector u, LaneVector v, SignedVector& r, SignedVector& g,
                           SignedVector& b) {
    const SignedVector luma = ScaledTowardZero(yQuarters, kLumaFromY);
    const SignedVector uEighths = ChromaEighths(u);
    const SignedVector vEighths = ChromaEighths(v);
    r = hn::Add(luma, ScaledTowardZero(vEighths, kRedFromV));
    g = hn::Sub(luma, GreenTerm(uEighths, vEighths));
    b = hn::Add(luma, ScaledTowardZero(uEighths, kBlueFromU));
}

void Yuv2Rgb(const uint8_t* yuv, uint8_t* rgb, size_t pixels) {
    const auto convert = [](const uint8_t* from, uint8_t* to) KORVANE_INLINE {
        ByteVector y, u, v;
        SignedVector r0, g0, b0, r1, g1, b1;
        LoadRgb(from, y, u, v);
        DecodeHalf(CentredFirst<16, 2>(y), FirstBytes(u), FirstBytes(v), r0, g0, b0);
        DecodeHalf(CentredSecond<16, 2>(y), SecondBytes(u), SecondBytes(v), r1, g1, b1);
        StoreClampedRgb(ClampedHalves(r0, r1), ClampedHalves(g0, g1), ClampedHalves(b0, b1), to);
    };
    const size_t done = ForWholeVectors<3, 3, 1>(yuv, rgb, pixels, convert);
    yuv2rgb_scalar(yuv + 3 * done, rgb + 3 * done, pixels - done);
}

#else

constexpr auto& Rgb2Rgba = rgb2rgba_scalar;
constexpr auto& Rgba2Rgb = rgba2rgb_scalar;
constexpr auto& Rgb2Yuv = rgb2yuv_scalar;
constexpr auto& Yuv2Rgb = yuv2rgb_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(Rgb2Rgba);
KORVANE_DISPATCH(Rgba2Rgb);
KORVANE_DISPATCH(Rgb2Yuv);
KORVANE_DISPATCH(Yuv2Rgb);

}  // namespace
}  // namespace korvane

int color_convert_rgb2rgba(const unsigned char* rgb, unsigned char* rgba, int width, int height) {
    return korvane::convert_groups(korvane::kSinglePixels, korvane::Rgb2Rgba, width, height, rgb, rgba);
}

int color_convert_rgba2rgb(const unsigned char* rgba, unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kSinglePixels, korvane::Rgba2Rgb, width, height, rgba, rgb);
}

int color_convert_rgb2yuv(const unsigned char* rgb, unsigned char* yuv, int width, int height) {
    return korvane::convert_groups(korvane::kSinglePixels, korvane::Rgb2Yuv, width, height, rgb, yuv);
}

int color_convert_yuv2rgb(const unsigned char* yuv, unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kSinglePixels, korvane::Yuv2Rgb, width, height, yuv, rgb);
}

#endif
