// SPDX-License-Identifier: Apache-2.0
// Four factors at hand for vectors of floats or of 32-bit numbers, and floats as bytes. For kernel files only: included
// once for each instruction set.
#if defined(KORVANE_FRAMEWORKS_SIMD_FACTORS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_SIMD_FACTORS_INL_H_
#undef KORVANE_FRAMEWORKS_SIMD_FACTORS_INL_H_
#else
#define KORVANE_FRAMEWORKS_SIMD_FACTORS_INL_H_
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

// The sixteen factors of two recursions and what both keep fit the registers of 64-bit ARM, where instructions take no
// operand from memory. Those of x86 do.
constexpr bool kHasManyRegisters = HWY_ARCH_ARM_A64;

// Where registers are few, what is here stays in memory: loads run beside the arithmetic, while moves between
// registers and stack would not.
template <class T>
HWY_INLINE T* KeptAtHand(T* state) {
    if constexpr (!kHasManyRegisters) {
        __asm__("" : "+r"(state) : : "memory");
    }
    return state;
}

#if HWY_TARGET == HWY_NEON

// NEON multiplies by one lane of a vector: four factors take one register.
using FourFactors = hn::Vec<hn::FixedTag<float, 4>>;

HWY_INLINE FourFactors LoadFactors(const float* from) {
    FourFactors factors = hn::LoadU(hn::FixedTag<float, 4>(), from);
    // Compilers that know where the four come from spread them over as many registers.
    __asm__("" : "+w"(factors.raw));
    return factors;
}

template <size_t kIndex, class V>
HWY_INLINE V TimesFactor(V value, FourFactors factors) {
    return V(vmulq_laneq_f32(value.raw, factors.raw, kIndex));
}

using FourNumbers = hn::Vec<hn::FixedTag<int32_t, 4>>;

HWY_INLINE FourNumbers LoadNumbers(const int32_t* from) {
    return hn::LoadU(hn::FixedTag<int32_t, 4>(), from);
}

template <size_t kIndex, class D>
HWY_INLINE hn::Vec<D> NumberInAllLanes(D /*d*/, FourNumbers numbers) {
    return hn::Vec<D>(vdupq_laneq_s32(numbers.raw, kIndex));
}

template <size_t kIndex, class V>
HWY_INLINE V PlusTimesNumber(V sum, V value, FourNumbers numbers) {
    return V(vmlaq_laneq_s32(sum.raw, value.raw, numbers.raw, kIndex));
}

#else

using FourFactors = const float*;

// The factors stay where they are.
HWY_INLINE FourFactors LoadFactors(const float* from) {
    return from;
}

template <size_t kIndex, class V>
HWY_INLINE V TimesFactor(V value, FourFactors factors) {
    return hn::Mul(value, hn::Set(hn::DFromV<V>(), factors[kIndex]));
}

using FourNumbers = const int32_t*;

HWY_INLINE FourNumbers LoadNumbers(const int32_t* from) {
    return from;
}

template <size_t kIndex, class D>
HWY_INLINE hn::Vec<D> NumberInAllLanes(D d, FourNumbers numbers) {
    return hn::Set(d, numbers[kIndex]);
}

template <size_t kIndex, class V>
HWY_INLINE V PlusTimesNumber(V sum, V value, FourNumbers numbers) {
    return hn::Add(sum, hn::Mul(value, NumberInAllLanes<kIndex>(hn::DFromV<V>(), numbers)));
}

#endif

// The floats as bytes: toward zero, what is beyond 0 or 255 becomes that, a NaN becomes 0. A vector alone does not tell
// how many of SVE's lanes `d` counts.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void StoreClampedFloats(V floats, D d, uint8_t* to) {
    const hn::Rebind<uint8_t, decltype(d)> dByte;
    const hn::Rebind<uint32_t, decltype(d)> dUnsigned;
#if HWY_ARCH_X86
    // Of a NaN x86 keeps the second operand; as a whole number it is then below all others, as is what is too low.
    const V notAbove{KORVANE_X86(min_ps)(hn::Set(d, 255.0F).raw, floats.raw)};
    const hn::Rebind<int32_t, decltype(d)> dWhole;
    const hn::Vec<decltype(dWhole)> whole{KORVANE_X86(cvttps_epi32)(notAbove.raw)};
    if constexpr (HWY_MAX_BYTES == 64) {
        const auto notBelow = hn::Max(whole, hn::Zero(dWhole));
        hn::StoreU(hn::U8FromU32(hn::BitCast(dUnsigned, notBelow)), dByte, to);
    } else {
        hn::StoreU(hn::DemoteTo(dByte, hn::DemoteTo(hn::Rebind<int16_t, decltype(d)>(), whole)), dByte, to);
    }
#else
    // A NaN fails the comparison. Added to 2^23, a whole number stands in the lowest bits of the float.
    const V notBelow = hn::IfThenElseZero(hn::Ge(floats, hn::Zero(d)), floats);
    const V whole = hn::Trunc(hn::Min(notBelow, hn::Set(d, 255.0F)));
    hn::StoreU(hn::U8FromU32(hn::BitCast(dUnsigned, hn::Add(whole, hn::Set(d, 8388608.0F)))), dByte, to);
#endif
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
