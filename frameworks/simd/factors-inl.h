// SPDX-License-Identifier: Apache-2.0
// Four factors at hand for vectors of floats. For kernel files only: included once for each instruction set.
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

#endif

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
