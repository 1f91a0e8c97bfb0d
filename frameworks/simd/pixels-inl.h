// SPDX-License-Identifier: Apache-2.0
// Pixels of four bytes as 32-bit lanes, and vectors of 32-bit lanes with a number for each pixel: one vector for byte
// 0, one for byte 1 and one for byte 2. For kernel files only: included once for each instruction set.
#if defined(KORVANE_FRAMEWORKS_SIMD_PIXELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_SIMD_PIXELS_INL_H_
#undef KORVANE_FRAMEWORKS_SIMD_PIXELS_INL_H_
#else
#define KORVANE_FRAMEWORKS_SIMD_PIXELS_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

#if HWY_TARGET == HWY_NEON

// NEON shifts and inserts, shifts and adds, and multiplies and subtracts in one instruction each.

// Compilers split a multiplication and subtraction in two when they see a power of two or a chance to regroup.
HWY_INLINE uint16x8_t Unseen(uint16x8_t lanes) {
    __asm__("" : "+w"(lanes));
    return lanes;
}

template <class V>
HWY_INLINE V HighestBytes(V a, V b, V c, V pixels) {
    return V(vsriq_n_u32(vsriq_n_u32(vsriq_n_u32(pixels.raw, c.raw, 8), b.raw, 16), a.raw, 24));
}

template <class V>
HWY_INLINE void AddSecondDifference(V before, V middle, V behind, V& byte0, V& byte1, V& byte2) {
    const auto halves = [](V pixels) KORVANE_INLINE { return vreinterpretq_u16_u32(pixels.raw); };
    const uint16x8_t two = Unseen(vdupq_n_u16(2));
    const uint16x8_t pairs = vmlsq_u16(vaddq_u16(halves(before), halves(behind)), halves(middle), two);
    const uint16x8_t oddSum = vsraq_n_u16(vshrq_n_u16(halves(before), 8), halves(behind), 8);
    const uint16x8_t odd = vmlsq_u16(oddSum, vshrq_n_u16(halves(middle), 8), two);
    // A pair is its even byte and 256 times its odd one. What the 16 bits cannot hold goes away with the odd one.
    const int32x4_t even = vreinterpretq_s32_u16(vmlsq_u16(Unseen(pairs), odd, Unseen(vdupq_n_u16(256))));
    const auto add_high_half = [](V& to, int32x4_t lanes) KORVANE_INLINE {
        to = V(vreinterpretq_u32_s32(vsraq_n_s32(vreinterpretq_s32_u32(to.raw), lanes, 16)));
    };
    add_high_half(byte0, vshlq_n_s32(even, 16));
    add_high_half(byte1, vshlq_n_s32(vreinterpretq_s32_u16(odd), 16));
    add_high_half(byte2, even);
}

#else

// Pixels of the highest bytes of `a`, `b`, `c` and `pixels`.
template <class V>
HWY_INLINE V HighestBytes(V a, V b, V c, V pixels) {
    const hn::DFromV<V> d;
    const V byte0 = hn::ShiftRight<24>(a);
    const V byte1 = hn::And(hn::ShiftRight<16>(b), hn::Set(d, 0x0000FF00));
    const V byte2 = hn::And(hn::ShiftRight<8>(c), hn::Set(d, 0x00FF0000));
    const V byte3 = hn::And(pixels, hn::Set(d, 0xFF000000));
    return hn::Or(hn::Or(byte0, byte1), hn::Or(byte2, byte3));
}

// Adds before - 2 * middle + behind of bytes 0, 1 and 2. It fits 16 bits, so bytes 0 and 2 are computed together.
template <class V>
HWY_INLINE void AddSecondDifference(V before, V middle, V behind, V& byte0, V& byte1, V& byte2) {
    const hn::DFromV<V> d;
    const hn::RebindToSigned<decltype(d)> dSigned;
    const hn::Repartition<uint16_t, decltype(d)> dHalf;
    const auto difference = [&](auto left, auto centre, auto right) KORVANE_INLINE {
        return hn::BitCast(dSigned, hn::Add(hn::Sub(left, centre), hn::Sub(right, centre)));
    };
    const auto even = difference(EvenBytes(dHalf, before), EvenBytes(dHalf, middle), EvenBytes(dHalf, behind));
    const auto odd = difference(OddBytes(dHalf, before), OddBytes(dHalf, middle), OddBytes(dHalf, behind));
    byte0 = hn::Add(byte0, hn::BitCast(d, hn::ShiftRight<16>(hn::ShiftLeft<16>(even))));
    byte1 = hn::Add(byte1, hn::BitCast(d, hn::ShiftRight<16>(hn::ShiftLeft<16>(odd))));
    byte2 = hn::Add(byte2, hn::BitCast(d, hn::ShiftRight<16>(even)));
}

#endif

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
