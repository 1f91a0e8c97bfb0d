// SPDX-License-Identifier: Apache-2.0
// Gray from RGB and back.
#include <cstddef>
#include <cstdint>

#include "frameworks/images/color_convert.h"
#include "frameworks/images/color_groups.h"
#include "frameworks/images/color_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frameworks/images/color_gray.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/rgb-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

HWY_INLINE ByteVector Gray(ByteVector r, ByteVector g, ByteVector b) {
    return WeightedSum<19595, 38470, 7471>(r, g, b);
}

HWY_INLINE ByteVector GrayOfRgb(const uint8_t* rgb) {
    ByteVector r, g, b;
    LoadRgb(rgb, r, g, b);
    return Gray(r, g, b);
}

// Green and blue are the output's next bytes, which must not have been written yet.
HWY_INLINE ByteVector GrayOfRgba(const uint8_t* rgba, const uint8_t* gray) {
    const ByteTag d;
    ByteVector r, g, b, a;
    hn::LoadInterleaved4(d, rgba, r, g, b, a);
    return Gray(r, hn::LoadU(d, gray + 1), hn::LoadU(d, gray + 2));
}

void Rgb2Gray(const uint8_t* rgb, uint8_t* gray, size_t pixels) {
    const size_t lanes = hn::Lanes(ByteTag());
    const auto convert = [&](const uint8_t* from, uint8_t* to)
                             KORVANE_INLINE { StorePair(GrayOfRgb(from), GrayOfRgb(from + 3 * lanes), to); };
    const size_t done = ForWholeVectors<3, 1, 2>(rgb, gray, pixels, convert);
    rgb2gray_scalar(rgb + 3 * done, gray + done, pixels - done);
}

void Rgba2Gray(const uint8_t* rgba, uint8_t* gray, size_t pixels) {
    const size_t lanes = hn::Lanes(ByteTag());
    const auto convertPair = [&](const uint8_t* from, uint8_t* to) KORVANE_INLINE {
        StorePair(GrayOfRgba(from, to), GrayOfRgba(from + 4 * lanes, to + lanes), to);
    };
    const auto convert = [&](const uint8_t* from, uint8_t* to) KORVANE_INLINE {
        convertPair(from, to);
        convertPair(from + 8 * lanes, to + 2 * lanes);
    };
    const size_t done = ForWholeVectors<4, 1, 4>(rgba, gray, pixels, convert);
    rgba2gray_scalar(rgba + 4 * done, gray + done, pixels - done);
}

void Gray2Rgb(const uint8_t* gray, uint8_t* rgb, size_t pixels) {
    const ByteTag d;
    const size_t lanes = hn::Lanes(d);
    const auto convert = [&](const uint8_t* from, uint8_t* to) KORVANE_INLINE {
        const ByteVector v0 = hn::LoadU(d, from);
        const ByteVector v1 = hn::LoadU(d, from + lanes);
        hn::StoreInterleaved3(v0, v0, v0, d, to);
        hn::StoreInterleaved3(v1, v1, v1, d, to + 3 * lanes);
    };
    const size_t done = ForWholeVectors<1, 3, 2>(gray, rgb, pixels, convert);
    gray2rgb_scalar(gray + done, rgb + 3 * done, pixels - done);
}

void Gray2Rgba(const uint8_t* gray, uint8_t* rgba, size_t pixels) {
    const ByteTag d;
    const ByteVector opaque = hn::Set(d, 255);
    const auto convert = [&](const uint8_t* from, uint8_t* to) KORVANE_INLINE {
        const ByteVector v = hn::LoadU(d, from);
        hn::StoreInterleaved4(v, v, v, opaque, d, to);
    };
    const size_t done = ForWholeVectors<1, 4, 1>(gray, rgba, pixels, convert);
    gray2rgba_scalar(gray + done, rgba + 4 * done, pixels - done);
}

#else

constexpr auto& Rgb2Gray = rgb2gray_scalar;
constexpr auto& Rgba2Gray = rgba2gray_scalar;
constexpr auto& Gray2Rgb = gray2rgb_scalar;
constexpr auto& Gray2Rgba = gray2rgba_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(Rgb2Gray);
KORVANE_DISPATCH(Rgba2Gray);
KORVANE_DISPATCH(Gray2Rgb);
KORVANE_DISPATCH(Gray2Rgba);

}  // namespace
}  // namespace korvane

int color_convert_rgb2gray(const unsigned char* rgb, unsigned char* gray, int width, int height) {
    return korvane::convert_groups(korvane::kSinglePixels, korvane::Rgb2Gray, width, height, rgb, gray);
}

int color_convert_rgba2gray(const unsigned char* rgba, unsigned char* gray, int width, int height) {
    return korvane::convert_groups(korvane::kSinglePixels, korvane::Rgba2Gray, width, height, rgba, gray);
}

int color_convert_gray2rgb(const unsigned char* gray, unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kSinglePixels, korvane::Gray2Rgb, width, height, gray, rgb);
}

int color_convert_gray2rgba(const unsigned char* gray, unsigned char* rgba, int width, int height) {
    return korvane::convert_groups(korvane::kSinglePixels, korvane::Gray2Rgba, width, height, gray, rgba);
}

#endif
