// SPDX-License-Identifier: Apache-2.0
// Chroma for each pair of pixels: YUYV, YVYU and YUV422P.
#include <cstddef>
#include <cstdint>

#include "frameworks/images/color_convert.h"
#include "frameworks/images/color_groups.h"
#include "frameworks/images/color_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frameworks/images/color_yuv422.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/images/color_bt601-inl.h"
#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// Luma in the low bytes and the mean of two chroma values in the high ones.
HWY_INLINE LaneVector PackedLanes(LaneVector luma, LaneVector evenChroma, LaneVector oddChroma) {
    const ByteVector bytes = JoinedBytes(luma, HalvedSum(evenChroma, oddChroma));
    return hn::BitCast(LaneTag(), hn::Add(bytes, AlternatingBytes(kLumaOffset, kChromaOffset)));
}

HWY_INLINE void StorePairMeans(LaneVector even, LaneVector odd, uint8_t* to) {
    StoreLowBytes(hn::Add(HalvedSum(even, odd), hn::Set(LaneTag(), kChromaOffset)), to);
}

template <bool kUFirst>
HWY_INLINE size_t EncodePacked(const uint8_t* rgb, uint8_t* packed, size_t pairs) {
    return ForWholeSteps(0, pairs, hn::Lanes(LaneTag()), [&](size_t i) KORVANE_INLINE {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        LoadEncoded(rgb + 6 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        const LaneVector first = PackedLanes(yEven, kUFirst ? uEven : vEven, kUFirst ? uOdd : vOdd);
        const LaneVector second = PackedLanes(yOdd, kUFirst ? vEven : uEven, kUFirst ? vOdd : uOdd);
        StoreLanePairs(first, second, packed + 4 * i);
    });
}

void Rgb2Yuyv(const uint8_t* rgb, uint8_t* yuyv, size_t pairs) {
    const size_t done = EncodePacked<true>(rgb, yuyv, pairs);
    rgb2yuyv_scalar(rgb + 6 * done, yuyv + 4 * done, pairs - done);
}

void Rgb2Yvyu(const uint8_t* rgb, uint8_t* yvyu, size_t pairs) {
    const size_t done = EncodePacked<false>(rgb, yvyu, pairs);
    rgb2yvyu_scalar(rgb + 6 * done, yvyu + 4 * done, pairs - done);
}

void Rgb2Yuv422p(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t pairs) {
    const ByteTag d;
    const size_t done = ForWholeSteps(0, pairs, hn::Lanes(LaneTag()), [&](size_t i) KORVANE_INLINE {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        PrefetchRgb(rgb + 6 * i, kAheadBytes);
        LoadEncoded(rgb + 6 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(JoinedLuma(yEven, yOdd), d, y + 2 * i);
        StorePairMeans(uEven, uOdd, u + i);
        StorePairMeans(vEven, vOdd, v + i);
    });
    rgb2yuv422p_scalar(rgb + 6 * done, y + 2 * done, u + done, v + done, pairs - done);
}

HWY_INLINE void StoreDecodedPairs(SignedVector evenLuma, SignedVector oddLuma, LaneVector uBytes, LaneVector vBytes,
                                  uint8_t* rgb) {
    const SignedVector u = ChromaEighths(uBytes);
    const SignedVector v = ChromaEighths(vBytes);
    StoreDecodedPairs(evenLuma, oddLuma, ScaledTowardZero(v, kRedFromV), GreenTerm(u, v),
                      ScaledTowardZero(u, kBlueFromU), rgb);
}

template <bool kUFirst>
HWY_INLINE size_t DecodePacked(const uint8_t* packed, uint8_t* rgb, size_t pairs) {
    const ByteTag d;
    return ForWholeSteps(0, pairs, hn::Lanes(LaneTag()), [&](size_t i) KORVANE_INLINE {
        LaneVector even, odd;
        LoadLanePairs(packed + 4 * i, even, odd);
        const LaneVector u = hn::ShiftRight<8>(kUFirst ? even : odd);
        const LaneVector v = hn::ShiftRight<8>(kUFirst ? odd : even);
        StoreDecodedPairs(EvenLuma(hn::BitCast(d, even)), EvenLuma(hn::BitCast(d, odd)), u, v, rgb + 6 * i);
    });
}

void Yuyv2Rgb(const uint8_t* yuyv, uint8_t* rgb, size_t pairs) {
    const size_t done = DecodePacked<true>(yuyv, rgb, pairs);
    yuyv2rgb_scalar(yuyv + 4 * done, rgb + 6 * done, pairs - done);
}

void Yvyu2Rgb(const uint8_t* yvyu, uint8_t* rgb, size_t pairs) {
    const size_t done = DecodePacked<false>(yvyu, rgb, pairs);
    yvyu2rgb_scalar(yvyu + 4 * done, rgb + 6 * done, pairs - done);
}

void Yuv422p2Rgb(const uint8_t* yPlane, const uint8_t* uPlane, const uint8_t* vPlane, uint8_t* rgb, size_t pairs) {
    const LaneTag d;
    const hn::Rebind<uint8_t, LaneTag> dHalf;
    const size_t done = ForWholeSteps(0, pairs, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        SignedVector evenLuma, oddLuma;
        LoadLuma(yPlane + 2 * i, evenLuma, oddLuma);
        const LaneVector u = hn::PromoteTo(d, hn::LoadU(dHalf, uPlane + i));
        const LaneVector v = hn::PromoteTo(d, hn::LoadU(dHalf, vPlane + i));
        StoreDecodedPairs(evenLuma, oddLuma, u, v, rgb + 6 * i);
    });
    yuv422p2rgb_scalar(yPlane + 2 * done, uPlane + done, vPlane + done, rgb + 6 * done, pairs - done);
}

#else

constexpr auto& Rgb2Yuyv = rgb2yuyv_scalar;
constexpr auto& Rgb2Yvyu = rgb2yvyu_scalar;
constexpr auto& Rgb2Yuv422p = rgb2yuv422p_scalar;
constexpr auto& Yuyv2Rgb = yuyv2rgb_scalar;
constexpr auto& Yvyu2Rgb = yvyu2rgb_scalar;
constexpr auto& Yuv422p2Rgb = yuv422p2rgb_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(Rgb2Yuyv);
KORVANE_DISPATCH(Rgb2Yvyu);
KORVANE_DISPATCH(Rgb2Yuv422p);
KORVANE_DISPATCH(Yuyv2Rgb);
KORVANE_DISPATCH(Yvyu2Rgb);
KORVANE_DISPATCH(Yuv422p2Rgb);

}  // namespace
}  // namespace korvane

int color_convert_rgb2yuyv(const unsigned char* rgb, unsigned char* yuyv, int width, int height) {
    return korvane::convert_groups(korvane::kPairPixels, korvane::Rgb2Yuyv, width, height, rgb, yuyv);
}

int color_convert_rgb2yvyu(const unsigned char* rgb, unsigned char* yvyu, int width, int height) {
    return korvane::convert_groups(korvane::kPairPixels, korvane::Rgb2Yvyu, width, height, rgb, yvyu);
}

int color_convert_rgb2yuv422p(const unsigned char* rgb, unsigned char* y, unsigned char* u, unsigned char* v, int width,
                              int height) {
    return korvane::convert_groups(korvane::kPairPixels, korvane::Rgb2Yuv422p, width, height, rgb, y, u, v);
}

int color_convert_yuyv2rgb(const unsigned char* yuyv, unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kPairPixels, korvane::Yuyv2Rgb, width, height, yuyv, rgb);
}

int color_convert_yvyu2rgb(const unsigned char* yvyu, unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kPairPixels, korvane::Yvyu2Rgb, width, height, yvyu, rgb);
}

int color_convert_yuv422p2rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                              unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kPairPixels, korvane::Yuv422p2Rgb, width, height, y, u, v, rgb);
}

#endif
