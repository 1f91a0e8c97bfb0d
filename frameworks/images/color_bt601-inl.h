// SPDX-License-Identifier: Apache-2.0
// RGB to luma and chroma and back, as the color kernels of all layouts share it. For kernel files only: included once
// for each instruction set.
//
// Even and odd pixels are 16-bit lanes of vectors of their own. So a pair of pixels is one lane of each, a quad is two
// neighbouring lanes of each, and the sums over them are vertical. The entries of color_tables.h are computed. For a
// byte i, the truncated product with a coefficient of Y, U or V is the high half of i * m; each m is even, since NEON
// takes half of it. For a signed x = i - offset it is the signed high half of 4x * m or 8x * m, plus 1 below 0. The
// multipliers m were chosen to give the entry of every i.
#if defined(KORVANE_FRAMEWORKS_IMAGES_COLOR_BT601_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_IMAGES_COLOR_BT601_INL_H_
#undef KORVANE_FRAMEWORKS_IMAGES_COLOR_BT601_INL_H_
#else
#define KORVANE_FRAMEWORKS_IMAGES_COLOR_BT601_INL_H_
#endif

#include <hwy/cache_control.h>

#include <cstddef>
#include <cstdint>

#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/rgb-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// ---- RGB to luma and chroma

// What is added at the end, to whole vectors of bytes.
constexpr uint8_t kLumaOffset = 16;
constexpr uint8_t kChromaOffset = 128;

HWY_INLINE LaneVector RawLuma(LaneVector r, LaneVector g, LaneVector b) {
    return hn::Add(hn::Add(ScaledBytes<16842>(r), ScaledBytes<33032>(g)), ScaledBytes<6420>(b));
}

// Chroma around 0, modulo 2^16.
HWY_INLINE LaneVector RawU(LaneVector r, LaneVector g, LaneVector b) {
    return hn::Sub(ScaledBytes<28766>(b), hn::Add(ScaledBytes<9700>(r), ScaledBytes<19070>(g)));
}

HWY_INLINE LaneVector RawV(LaneVector r, LaneVector g, LaneVector b) {
    return hn::Sub(ScaledBytes<28766>(r), hn::Add(ScaledBytes<24118>(g), ScaledBytes<4652>(b)));
}

HWY_INLINE ByteVector JoinedLuma(LaneVector even, LaneVector odd) {
    return hn::Add(JoinedBytes(even, odd), hn::Set(ByteTag(), kLumaOffset));
}

HWY_INLINE ByteVector JoinedChroma(LaneVector even, LaneVector odd) {
    return hn::Add(JoinedLowBytes(even, odd), hn::Set(ByteTag(), kChromaOffset));
}

// What a vector of RGB pixels encodes to, by even and odd pixels and without the offsets.
HWY_INLINE void LoadEncoded(const uint8_t* rgb, LaneVector& yEven, LaneVector& yOdd, LaneVector& uEven,
                            LaneVector& uOdd, LaneVector& vEven, LaneVector& vOdd) {
    ByteVector r, g, b;
    LoadRgb(rgb, r, g, b);
    yEven = RawLuma(EvenBytes(r), EvenBytes(g), EvenBytes(b));
    uEven = RawU(EvenBytes(r), EvenBytes(g), EvenBytes(b));
    vEven = RawV(EvenBytes(r), EvenBytes(g), EvenBytes(b));
    yOdd = RawLuma(OddBytes(r), OddBytes(g), OddBytes(b));
    uOdd = RawU(OddBytes(r), OddBytes(g), OddBytes(b));
    vOdd = RawV(OddBytes(r), OddBytes(g), OddBytes(b));
}

// Asks for a vector of pixels `distanceBytes` further on, which may be past the end of the picture.
HWY_INLINE void PrefetchRgb(const uint8_t* rgb, size_t distanceBytes) {
    constexpr size_t kCacheLineBytes = 64;
    const uintptr_t from = reinterpret_cast<uintptr_t>(rgb) + distanceBytes;
    for (size_t line = 0; line < 3 * hn::Lanes(ByteTag()); line += kCacheLineBytes) {
        hwy::Prefetch(reinterpret_cast<const uint8_t*>(from + line));
    }
}

// Encoders that write several planes ask for pixels this far ahead: with more than two streams the processor foresees
// them less well. It takes a fifth off the time.
constexpr size_t kAheadBytes = 2048;

// ---- Luma and chroma to RGB

// For quarters of the luma and eighths of the chroma. Each gives all 256 entries of its table.
constexpr int16_t kLumaFromY = 19071;
constexpr int16_t kRedFromV = 13075;
constexpr int16_t kGreenFromU = 3204;
constexpr int16_t kGreenFromV = 6658;
constexpr int16_t kBlueFromU = 16531;

HWY_INLINE SignedVector EvenLuma(ByteVector y) {
    return ScaledTowardZero(CentredEven<16, 2>(y), kLumaFromY);
}

HWY_INLINE void LoadLuma(const uint8_t* from, SignedVector& even, SignedVector& odd) {
    LoadCentredPairs<16, 2>(from, even, odd);
    even = ScaledTowardZero(even, kLumaFromY);
    odd = ScaledTowardZero(odd, kLumaFromY);
}

HWY_INLINE SignedVector ChromaEighths(LaneVector chroma) {
    return Centred<128, 3>(chroma);
}

HWY_INLINE SignedVector GreenTerm(SignedVector uEighths, SignedVector vEighths) {
    return hn::Add(ScaledTowardZero(uEighths, kGreenFromU), ScaledTowardZero(vEighths, kGreenFromV));
}

// Stores the pixels with these luma and chroma terms, of which even and odd neighbours share the latter. The green term
// is taken off.
HWY_INLINE void StoreDecodedPairs(SignedVector evenLuma, SignedVector oddLuma, SignedVector red, SignedVector green,
                                  SignedVector blue, uint8_t* rgb) {
    const ByteVector r = ClampedChannel(hn::Add(evenLuma, red), hn::Add(oddLuma, red));
    const ByteVector g = ClampedChannel(hn::Sub(evenLuma, green), hn::Sub(oddLuma, green));
    const ByteVector b = ClampedChannel(hn::Add(evenLuma, blue), hn::Add(oddLuma, blue));
    StoreClampedRgb(r, g, b, rgb);
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
