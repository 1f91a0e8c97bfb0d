// SPDX-License-Identifier: Apache-2.0
// What every kernel file includes behind <hwy/foreach_target.h>: Highway as `hn`, the one switch between vectors and
// the scalar twin, and the dispatch. docs/kernels.md shows how the parts go together.
#if defined(KORVANE_FRAMEWORKS_SIMD_KERNEL_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_SIMD_KERNEL_INL_H_
#undef KORVANE_FRAMEWORKS_SIMD_KERNEL_INL_H_
#else
#define KORVANE_FRAMEWORKS_SIMD_KERNEL_INL_H_
#endif

#include <hwy/highway.h>

#ifndef KORVANE_HAS_VECTORS

// 1 where the target that is being compiled has vectors, 0 where a kernel is its scalar twin.
#define KORVANE_HAS_VECTORS (HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128)

// On every lambda that holds vector code and runs in a loop: compilers may only inline it where it has the target's
// attributes, and without inlining its vectors go through memory.
#define KORVANE_INLINE HWY_ATTR __attribute__((always_inline))

// Makes Kernel(arguments...) run the form of the kernel for this processor. Stands under HWY_ONCE, in the anonymous
// namespace of korvane. A name cannot stand in parentheses where it is declared.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define KORVANE_DISPATCH(Kernel) \
    HWY_EXPORT(Kernel);          \
    constexpr auto Kernel = [](auto&&... arguments) { return HWY_DYNAMIC_DISPATCH(Kernel)(arguments...); }
// NOLINTEND(bugprone-macro-parentheses)

#endif

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
