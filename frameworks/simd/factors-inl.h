// SPDX-License-Identifier: Apache-2.0
// Four factors at hand for vectors of floats or of 32-bit numbers. For kernel files only: included once for each
// instruction set.
#if defined(KORVANE_FRAMEWORKS_SIMD_FACTORS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_SIMD_FACTORS_INL_H_
#undef KORVANE_FRAMEWORKS_SIMD_FACTORS_INL_H_
#else
#define KORVANE_FRAMEWORKS_SIMD_FACTORS_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "frameworks/simd/kernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// 64-bit ARM and AVX-512 have 32 vector registers, the others 16.
constexpr bool kHasManyRegisters = HWY_ARCH_ARM_A64 || hn::MaxLanes(hn::ScalableTag<uint8_t>()) >= 64;

// Where there are few registers, what is here stays in memory: loads run beside the arithmetic, while moves between
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

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
