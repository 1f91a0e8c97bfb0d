// SPDX-License-Identifier: Apache-2.0
// How kernels walk over counts that are no multiple of a vector. For kernel files only: included once for each
// instruction set.
#if defined(KORVANE_FRAMEWORKS_SIMD_STEPS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_SIMD_STEPS_INL_H_
#undef KORVANE_FRAMEWORKS_SIMD_STEPS_INL_H_
#else
#define KORVANE_FRAMEWORKS_SIMD_STEPS_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "frameworks/simd/kernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// Calls body(i) for i = begin, begin + step and so on, as long as a whole step fits before `end`. Returns where the
// rest begins; the scalar twin does it.
template <class Body>
HWY_INLINE size_t ForWholeSteps(size_t begin, size_t end, size_t step, const Body& body) {
    const size_t rest = begin + (end - begin) / step * step;
    for (size_t i = begin; i != rest; i += step) {
        body(i);
    }
    return rest;
}

// The same for bodies of few instructions: where vectors are short, four steps share those of the loop itself.
template <class Body>
HWY_INLINE size_t ForShortSteps(size_t begin, size_t end, size_t step, const Body& body) {
    constexpr size_t kShortBytes = 16;
    if constexpr (HWY_MAX_BYTES > kShortBytes) {
        return ForWholeSteps(begin, end, step, body);
    }
    return ForWholeSteps(begin, end, 4 * step, [&](size_t i) KORVANE_INLINE {
        body(i);
        body(i + step);
        body(i + 2 * step);
        body(i + 3 * step);
    });
}

// As ForWholeSteps without a rest: the last step ends at `end`, and so may begin within the step before. For bodies
// that give the same when they run twice on an element. The range is empty or holds a whole step.
template <class Body>
HWY_INLINE void ForOverlappingSteps(size_t begin, size_t end, size_t step, const Body& body) {
    for (size_t i = begin; i < end; i += step) {
        body(HWY_MIN(i, end - step));
    }
}

// Calls body(from, to) for every kVectors vectors of `count` elements that take kFromBytes there and kToBytes here.
// Returns how many elements that were. Pointers that move and a number that sinks to 0 are what NEON's loads and stores
// of interleaved vectors take the fewest instructions for.
template <size_t kFromBytes, size_t kToBytes, size_t kVectors, class Body>
HWY_INLINE size_t ForWholeVectors(const uint8_t* from, uint8_t* to, size_t count, const Body& body) {
    const size_t step = kVectors * hn::Lanes(hn::ScalableTag<uint8_t>());
    const size_t rounds = count / step;
    for (size_t left = rounds; left != 0; --left) {
        body(from, to);
        from += kFromBytes * step;
        to += kToBytes * step;
    }
    return rounds * step;
}

// Calls body(tag) with the longest vector of at most kWide, kNarrow or 1 lanes that `count` elements fill.
template <typename T, size_t kWide, size_t kNarrow, class Body>
HWY_INLINE void WithLongestVector(size_t count, const Body& body) {
    // NOLINTNEXTLINE(bugprone-branch-clone): each time with another tag.
    if (count >= hn::Lanes(hn::CappedTag<T, kWide>())) {
        body(hn::CappedTag<T, kWide>());
    } else if (count >= hn::Lanes(hn::CappedTag<T, kNarrow>())) {
        body(hn::CappedTag<T, kNarrow>());
    } else {
        body(hn::CappedTag<T, 1>());
    }
}

// How many of `count` elements lie before the next multiple of `boundaryBytes`. Vectors that lie across two cache lines
// cost loops that run at the speed of memory up to a quarter of their time; the scalar twin does these elements.
template <typename T>
HWY_INLINE size_t CountUntilAligned(const T* from, size_t boundaryBytes, size_t count) {
    const size_t pastBytes = reinterpret_cast<uintptr_t>(from) % boundaryBytes;
    return HWY_MIN(count, (boundaryBytes - pastBytes) % boundaryBytes / sizeof(T));
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
