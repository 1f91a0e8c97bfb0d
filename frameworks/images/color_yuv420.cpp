// SPDX-License-Identifier: Apache-2.0
// Chroma for each quad of pixels: YV12, YU12, NV12 and NV21.
#include <cstddef>
#include <cstdint>

#include "frameworks/images/color_convert.h"
#include "frameworks/images/color_groups.h"
#include "frameworks/images/color_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frameworks/images/color_yuv420.cpp"
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

// As many bytes as there are 32-bit lanes.
using QuarterByteTag = hn::Rebind<uint8_t, QuadTag>;

void Rgb2Yv12OrYu12(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t quads) {
    const ByteTag d;
    const size_t done = ForWholeSteps(0, quads, hn::Lanes(QuadTag()), [&](size_t i) KORVANE_INLINE {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        PrefetchRgb(rgb + 12 * i, kAheadBytes);
        LoadEncoded(rgb + 12 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(JoinedLuma(yEven, yOdd), d, y + 4 * i);
        StoreQuarterSums(hn::Add(uEven, uOdd), hn::Add(vEven, vOdd), u + i, v + i);
    });
    rgb2yv12oryu12_scalar(rgb + 12 * done, y + 4 * done, u + done, v + done, quads - done);
}

void Rgb2Nv12(const uint8_t* rgb, uint8_t* y, uint8_t* uv, size_t quads) {
    const ByteTag d;
    const size_t done = ForWholeSteps(0, quads, hn::Lanes(QuadTag()), [&](size_t i) KORVANE_INLINE {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        PrefetchRgb(rgb + 12 * i, kAheadBytes);
        LoadEncoded(rgb + 12 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(JoinedLuma(yEven, yOdd), d, y + 4 * i);
        // V counts the first pixel in place of the second one: in even lanes, V0 + V0; in odd ones, V2 + V3.
        const LaneVector vSums = hn::Add(vEven, hn::OddEven(vOdd, vEven));
        StoreQuarterSumPairs(hn::Add(uEven, uOdd), vSums, uv + 2 * i);
    });
    rgb2nv12_scalar(rgb + 12 * done, y + 4 * done, uv + 2 * done, quads - done);
}

// Two rows at a time are two streams that begin anew with each pair of rows, so that the processor does not foresee the
// next pair: fetching it ahead takes a quarter off the time. Inlined, the caller's loop would take registers from it.
HWY_NOINLINE void Rgb2Nv21Rows(const uint8_t* top, const uint8_t* bottom, uint8_t* yTop, uint8_t* yBottom, uint8_t* vu,
                               size_t pairs) {
    const ByteTag d;
    const size_t toNextPairBytes = 2 * static_cast<size_t>(bottom - top);
    const size_t done = ForWholeSteps(0, pairs, hn::Lanes(LaneTag()), [&](size_t i) KORVANE_INLINE {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        PrefetchRgb(top + 6 * i, toNextPairBytes);
        PrefetchRgb(bottom + 6 * i, toNextPairBytes);
        LoadEncoded(top + 6 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(JoinedLuma(yEven, yOdd), d, yTop + 2 * i);
        // U counts the top left pixel in place of the top right one: halving twice gives what a quarter of the sum
        // does.
        const LaneVector uTop = uEven;
        const LaneVector vTop = hn::Add(vEven, vOdd);
        LoadEncoded(bottom + 6 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(JoinedLuma(yEven, yOdd), d, yBottom + 2 * i);
        const LaneVector u = HalvedSum(uTop, HalvedSum(uEven, uOdd));
        const LaneVector vSum = hn::Add(vTop, hn::Add(vEven, vOdd));
        const LaneVector v = hn::BitCast(LaneTag(), hn::ShiftRight<2>(hn::BitCast(SignedTag(), vSum)));
        hn::StoreU(JoinedChroma(v, u), d, vu + 2 * i);
    });
    rgb2nv21_rows_scalar(top + 6 * done, bottom + 6 * done, yTop + 2 * done, yBottom + 2 * done, vu + 2 * done,
                         pairs - done);
}

// For the two lanes of each quad.
alignas(16) constexpr uint8_t kFirstLane[16] = {0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13};
alignas(16) constexpr uint8_t kSecondLane[16] = {2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15};
alignas(16) constexpr uint8_t kSwapLanes[16] = {2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13};

HWY_INLINE SignedVector InEachQuad(SignedVector lanes, const uint8_t* HWY_RESTRICT table) {
    return hn::BitCast(SignedTag(), Shuffled(hn::BitCast(ByteTag(), lanes), table));
}

// Decodes a vector of luma with one U and V for each 32-bit lane of it, the first of them in the lower half. Red and
// blue, and the two parts of green, share their multiplications.
template <bool kUFirst>
HWY_INLINE void StoreDecodedQuads(const uint8_t* yFrom, LaneVector chroma, uint8_t* rgb) {
    const SignedVector outerMultipliers =
        kUFirst ? AlternatingLanes(kBlueFromU, kRedFromV) : AlternatingLanes(kRedFromV, kBlueFromU);
    const SignedVector greenMultipliers =
        kUFirst ? AlternatingLanes(kGreenFromU, kGreenFromV) : AlternatingLanes(kGreenFromV, kGreenFromU);
    const SignedVector x = ChromaEighths(chroma);
    const SignedVector outer = ScaledTowardZero(x, outerMultipliers);
    const SignedVector part = ScaledTowardZero(x, greenMultipliers);
    const SignedVector green = hn::Add(part, InEachQuad(part, kSwapLanes));
    const SignedVector first = InEachQuad(outer, kFirstLane);
    const SignedVector second = InEachQuad(outer, kSecondLane);
    SignedVector evenLuma, oddLuma;
    LoadLuma(yFrom, evenLuma, oddLuma);
    StoreDecodedPairs(evenLuma, oddLuma, kUFirst ? second : first, green, kUFirst ? first : second, rgb);
}

void Yv12OrYu122Rgb(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, size_t quads) {
    const QuadTag d;
    const QuarterByteTag dQuarter;
    const size_t done = ForWholeSteps(0, quads, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        const QuadVector uQuads = hn::PromoteTo(d, hn::LoadU(dQuarter, u + i));
        const QuadVector vQuads = hn::PromoteTo(d, hn::LoadU(dQuarter, v + i));
        const LaneVector chroma = hn::BitCast(LaneTag(), hn::Or(uQuads, hn::ShiftLeft<16>(vQuads)));
        StoreDecodedQuads<true>(y + 4 * i, chroma, rgb + 12 * i);
    });
    yv12oryu122rgb_scalar(y + 4 * done, u + done, v + done, rgb + 12 * done, quads - done);
}

template <bool kUFirst>
HWY_INLINE size_t DecodeSemiPlanar(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, size_t quads) {
    const hn::Rebind<uint8_t, LaneTag> dHalf;
    return ForWholeSteps(0, quads, hn::Lanes(QuadTag()), [&](size_t i) KORVANE_INLINE {
        StoreDecodedQuads<kUFirst>(y + 4 * i, hn::PromoteTo(LaneTag(), hn::LoadU(dHalf, chroma + 2 * i)), rgb + 12 * i);
    });
}

void Nv122Rgb(const uint8_t* y, const uint8_t* uv, uint8_t* rgb, size_t quads) {
    const size_t done = DecodeSemiPlanar<true>(y, uv, rgb, quads);
    nv122rgb_scalar(y + 4 * done, uv + 2 * done, rgb + 12 * done, quads - done);
}

void Nv212Rgb(const uint8_t* y, const uint8_t* vu, uint8_t* rgb, size_t quads) {
    const size_t done = DecodeSemiPlanar<false>(y, vu, rgb, quads);
    nv212rgb_scalar(y + 4 * done, vu + 2 * done, rgb + 12 * done, quads - done);
}

#else

constexpr auto& Rgb2Yv12OrYu12 = rgb2yv12oryu12_scalar;
constexpr auto& Rgb2Nv12 = rgb2nv12_scalar;
constexpr auto& Rgb2Nv21Rows = rgb2nv21_rows_scalar;
constexpr auto& Yv12OrYu122Rgb = yv12oryu122rgb_scalar;
constexpr auto& Nv122Rgb = nv122rgb_scalar;
constexpr auto& Nv212Rgb = nv212rgb_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(Rgb2Yv12OrYu12);
KORVANE_DISPATCH(Rgb2Nv12);
KORVANE_DISPATCH(Rgb2Nv21Rows);
KORVANE_DISPATCH(Yv12OrYu122Rgb);
KORVANE_DISPATCH(Nv122Rgb);
KORVANE_DISPATCH(Nv212Rgb);

}  // namespace
}  // namespace korvane

int color_convert_rgb2yv12oryu12(const unsigned char* rgb, unsigned char* y, unsigned char* u, unsigned char* v,
                                 int width, int height) {
    return korvane::convert_groups(korvane::kQuadPixels, korvane::Rgb2Yv12OrYu12, width, height, rgb, y, u, v);
}

int color_convert_rgb2nv12(const unsigned char* rgb, unsigned char* y, unsigned char* uv, int width, int height) {
    return korvane::convert_groups(korvane::kQuadPixels, korvane::Rgb2Nv12, width, height, rgb, y, uv);
}

int color_convert_rgb2nv21(const unsigned char* rgb, unsigned char* y, unsigned char* vu, int width, int height) {
    if (rgb == nullptr || y == nullptr || vu == nullptr) {
        return 0;
    }
    if (width < 2 || height < 2) {
        return 1;
    }
    const auto row = static_cast<size_t>(width);
    const size_t pairs = row / 2;
    for (int k = 0; k < height / 2; ++k) {
        korvane::Rgb2Nv21Rows(rgb, rgb + 3 * row, y, y + row, vu, pairs);
        // Not two rows when the width is odd: the second row counts as its whole pairs only.
        rgb += 3 * (row + 2 * pairs);
        y += row + 2 * pairs;
        vu += 2 * pairs;
    }
    return 1;
}

int color_convert_yv12oryu122rgb(const unsigned char* y, const unsigned char* u, const unsigned char* v,
                                 unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kQuadPixels, korvane::Yv12OrYu122Rgb, width, height, y, u, v, rgb);
}

int color_convert_nv122rgb(const unsigned char* y, const unsigned char* uv, unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kQuadPixels, korvane::Nv122Rgb, width, height, y, uv, rgb);
}

int color_convert_nv212rgb(const unsigned char* y, const unsigned char* vu, unsigned char* rgb, int width, int height) {
    return korvane::convert_groups(korvane::kQuadPixels, korvane::Nv212Rgb, width, height, y, vu, rgb);
}

#endif
