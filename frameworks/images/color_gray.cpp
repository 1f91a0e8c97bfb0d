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

// The 16-bit weights by halves, 19595 = 76 x 256 + 139 and so on: the high half of the 32-bit sum without leaving 16
// bits. Both sums stay below 2^16 - 255.
HWY_INLINE LaneVector GrayTimes256(LaneVector r, LaneVector g, LaneVector b) {
    const LaneTag d;
    const auto weighted = [&](uint16_t ofR, uint16_t ofG, uint16_t ofB) KORVANE_INLINE {
        return hn::Add(hn::Add(hn::Mul(r, hn::Set(d, ofR)), hn::Mul(g, hn::Set(d, ofG))), hn::Mul(b, hn::Set(d, ofB)));
    };
    return hn::Add(weighted(76, 150, 29), hn::ShiftRight<8>(weighted(139, 70, 47)));
}

HWY_INLINE ByteVector Gray(ByteVector r, ByteVector g, ByteVector b) {
    return JoinedHighBytes(GrayTimes256(EvenBytes(r), EvenBytes(g), EvenBytes(b)),
                           GrayTimes256(OddBytes(r), OddBytes(g), OddBytes(b)));
}

void Rgb2Gray(const uint8_t* rgb, uint8_t* gray, size_t pixels) {
    const ByteTag d;
    const size_t done = ForWholeSteps(0, pixels, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        ByteVector r, g, b;
        LoadRgb(rgb + 3 * i, r, g, b);
        hn::StoreU(Gray(r, g, b), d, gray + i);
    });
    rgb2gray_scalar(rgb + 3 * done, gray + done, pixels - done);
}

void Rgba2Gray(const uint8_t* rgba, uint8_t* gray, size_t pixels) {
    const ByteTag d;
    const size_t done = ForWholeSteps(0, pixels, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        ByteVector r, g, b, a;
        hn::LoadInterleaved4(d, rgba + 4 * i, r, g, b, a);
        // Green and blue are the output's next bytes, which no earlier step has written.
        hn::StoreU(Gray(r, hn::LoadU(d, gray + i + 1), hn::LoadU(d, gray + i + 2)), d, gray + i);
    });
    rgba2gray_scalar(rgba + 4 * done, gray + done, pixels - done);
}

void Gray2Rgb(const uint8_t* gray, uint8_t* rgb, size_t pixels) {
    const ByteTag d;
    const size_t done = ForWholeSteps(0, pixels, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        const ByteVector v = hn::LoadU(d, gray + i);
        hn::StoreInterleaved3(v, v, v, d, rgb + 3 * i);
    });
    gray2rgb_scalar(gray + done, rgb + 3 * done, pixels - done);
}

void Gray2Rgba(const uint8_t* gray, uint8_t* rgba, size_t pixels) {
    const ByteTag d;
    const ByteVector opaque = hn::Set(d, 255);
    const size_t done = ForWholeSteps(0, pixels, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        const ByteVector v = hn::LoadU(d, gray + i);
        hn::StoreInterleaved4(v, v, v, opaque, d, rgba + 4 * i);
    });
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
