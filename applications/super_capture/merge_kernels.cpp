// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/merge_kernels.h"

#include <algorithm>

#include "applications/super_capture/merge_kernels_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "applications/super_capture/merge_kernels.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

constexpr size_t kCacheLineBytes = 64;

// combine(frame, sums...) puts a vector of bytes into four vectors of sums; the twin does what lies before the first
// aligned sum and behind the last whole step.
template <class Combine>
HWY_INLINE void Fold(const uint8_t* frame, int* sums, size_t count, const Combine& combine,
                     void (*twin)(const uint8_t*, int*, size_t)) {
    const SignedQuadTag d;
    const size_t lanes = hn::Lanes(d);
    const size_t before = CountUntilAligned(sums, kCacheLineBytes, count);
    twin(frame, sums, before);
    const size_t done = ForShortSteps(before, count, 4 * lanes, [&](size_t i) KORVANE_INLINE {
        int* to = sums + i;
        auto a = hn::LoadU(d, to);
        auto b = hn::LoadU(d, to + lanes);
        auto c = hn::LoadU(d, to + 2 * lanes);
        auto e = hn::LoadU(d, to + 3 * lanes);
        combine(frame + i, a, b, c, e);
        hn::StoreU(a, d, to);
        hn::StoreU(b, d, to + lanes);
        hn::StoreU(c, d, to + 2 * lanes);
        hn::StoreU(e, d, to + 3 * lanes);
    });
    twin(frame + done, sums + done, count - done);
}

void MergeMax(const uint8_t* frame, int* sums, size_t count) {
    const auto keepLarger = [](const uint8_t* from, SignedQuadVector& a, SignedQuadVector& b, SignedQuadVector& c,
                               SignedQuadVector& e) KORVANE_INLINE {
        SignedQuadVector ofA, ofB, ofC, ofE;
        LoadQuarters(from, ofA, ofB, ofC, ofE);
        a = hn::Max(a, ofA);
        b = hn::Max(b, ofB);
        c = hn::Max(c, ofC);
        e = hn::Max(e, ofE);
    };
    Fold(frame, sums, count, keepLarger, merge_max_scalar);
}

void MergeFirst(const uint8_t* frame, int* sums, size_t count) {
    Fold(frame, sums, count, LoadQuarters, merge_first_scalar);
}

void MergeAdd(const uint8_t* frame, int* sums, size_t count) {
    Fold(frame, sums, count, AddQuarters, merge_add_scalar);
}

// frame[i...] = result(sums + i), a vector of bytes, for the whole pairs of vectors behind `before`. Returns where the
// rest begins.
template <class Result>
HWY_INLINE size_t StoreResults(const int* sums, uint8_t* frame, size_t before, size_t count, const Result& result) {
    const size_t lanes = hn::Lanes(ByteTag());
    return ForWholeSteps(before, count, 2 * lanes, [&](size_t i) KORVANE_INLINE {
        StorePair(result(sums + i), result(sums + i + lanes), frame + i);
    });
}

void MergedLowBytes(const int* sums, uint8_t* frame, size_t count) {
    const size_t before = CountUntilAligned(sums, kCacheLineBytes, count);
    merged_low_bytes_scalar(sums, frame, before);
    const size_t done = StoreResults(sums, frame, before, count, LoadLowBytes);
    merged_low_bytes_scalar(sums + done, frame + done, count - done);
}

// sum / divisor is (sum + 1) * multiplier / 32768, shifted right, for all sums of `divisor` bytes. What is above those
// or below 0 becomes 255 or more, or less than 0.
struct MeanDivision {
    int16_t multiplier;
    int shift;
};

constexpr int kMostFramesByMultiplier = 100;

constexpr MeanDivision mean_division(int divisor) {
    int shift = 0;
    while (2 << shift < divisor) {
        ++shift;
    }
    return {static_cast<int16_t>(((32768 << shift) - 1) / divisor), shift};
}

// Tests the first and the last sum of each quotient, and the largest number of 16 bits.
constexpr bool mean_divisions_are_exact() {
    const auto mean = [](int sum, MeanDivision division) {
        return (std::min(sum + 1, INT16_MAX) * division.multiplier >> 15) >> division.shift;
    };
    for (int divisor = 1; divisor <= kMostFramesByMultiplier; ++divisor) {
        const MeanDivision division = mean_division(divisor);
        for (int quotient = 0; quotient <= 255; ++quotient) {
            const int first = quotient * divisor;
            if (mean(first, division) != quotient || mean(first + divisor - 1, division) != quotient) {
                return false;
            }
        }
        if (mean(INT16_MAX, division) < 255) {
            return false;
        }
    }
    return true;
}
static_assert(mean_divisions_are_exact());

void MergedMean(const int* sums, uint8_t* frame, size_t count, int frames) {
    if (frames < 1 || frames > kMostFramesByMultiplier) {
        merged_mean_scalar(sums, frame, count, frames);
        return;
    }
    const MeanDivision division = mean_division(frames);
    const SignedVector one = hn::Set(SignedTag(), 1);
    const auto means = [&](const int* from) KORVANE_INLINE {
        const SignedQuadTag d;
        const size_t lanes = hn::Lanes(d);
        const auto half = [&](const int* at) KORVANE_INLINE {
            const SignedVector sum = ClampedToLanes(hn::LoadU(d, at), hn::LoadU(d, at + lanes));
            return hn::ShiftRightSame(ScaledLanes(hn::SaturatedAdd(sum, one), division.multiplier), division.shift);
        };
        return ClampedToBytes(half(from), half(from + 2 * lanes));
    };
    const size_t before = CountUntilAligned(sums, kCacheLineBytes, count);
    merged_mean_scalar(sums, frame, before, frames);
    const size_t done = StoreResults(sums, frame, before, count, means);
    merged_mean_scalar(sums + done, frame + done, count - done, frames);
}

// The sum of as many of the bytes as fill whole pairs of vectors, or of every second one of them.
template <bool kEveryOther>
HWY_INLINE uint32_t SumOfBytes(const uint8_t* from, size_t countBytes, size_t& doneBytes) {
    const hn::ScalableTag<uint8_t> d;
    const hn::Repartition<uint64_t, decltype(d)> d64;
    const size_t lanes = hn::Lanes(d);
    const auto evenBytes = hn::BitCast(d, hn::Set(hn::Repartition<uint16_t, decltype(d)>(), 0x00FF));
    auto sum0 = hn::Zero(d64);
    auto sum1 = hn::Zero(d64);
    doneBytes = ForWholeSteps(0, countBytes, 2 * lanes, [&](size_t i) KORVANE_INLINE {
        auto bytes0 = hn::LoadU(d, from + i);
        auto bytes1 = hn::LoadU(d, from + i + lanes);
        if constexpr (kEveryOther) {
            bytes0 = hn::And(bytes0, evenBytes);
            bytes1 = hn::And(bytes1, evenBytes);
        }
        sum0 = hn::Add(sum0, hn::SumsOf8(bytes0));
        sum1 = hn::Add(sum1, hn::SumsOf8(bytes1));
    });
    return static_cast<uint32_t>(hn::GetLane(hn::SumOfLanes(d64, hn::Add(sum0, sum1))));
}

uint32_t LumaSum(const uint8_t* plane, size_t pixels) {
    size_t done = 0;
    const uint32_t sum = SumOfBytes<false>(plane, pixels, done);
    return sum + luma_sum_scalar(plane + done, pixels - done);
}

uint32_t LumaSumYuyv(const uint8_t* yuyv, size_t pixels) {
    size_t doneBytes = 0;
    const uint32_t sum = SumOfBytes<true>(yuyv, 2 * pixels, doneBytes);
    return sum + luma_sum_yuyv_scalar(yuyv + doneBytes, pixels - doneBytes / 2);
}

#else

constexpr auto& MergeMax = merge_max_scalar;
constexpr auto& MergeFirst = merge_first_scalar;
constexpr auto& MergeAdd = merge_add_scalar;
constexpr auto& MergedLowBytes = merged_low_bytes_scalar;
constexpr auto& MergedMean = merged_mean_scalar;
constexpr auto& LumaSum = luma_sum_scalar;
constexpr auto& LumaSumYuyv = luma_sum_yuyv_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(MergeMax);
KORVANE_DISPATCH(MergeFirst);
KORVANE_DISPATCH(MergeAdd);
KORVANE_DISPATCH(MergedLowBytes);
KORVANE_DISPATCH(MergedMean);
KORVANE_DISPATCH(LumaSum);
KORVANE_DISPATCH(LumaSumYuyv);

}  // namespace

void merge_max(const uint8_t* frame, int* sums, size_t count) {
    MergeMax(frame, sums, count);
}

void merge_first(const uint8_t* frame, int* sums, size_t count) {
    MergeFirst(frame, sums, count);
}

void merge_add(const uint8_t* frame, int* sums, size_t count) {
    MergeAdd(frame, sums, count);
}

void merged_low_bytes(const int* sums, uint8_t* frame, size_t count) {
    MergedLowBytes(sums, frame, count);
}

void merged_mean(const int* sums, uint8_t* frame, size_t count, int frames) {
    MergedMean(sums, frame, count, frames);
}

uint32_t luma_sum(const uint8_t* plane, size_t pixels) {
    return LumaSum(plane, pixels);
}

uint32_t luma_sum_yuyv(const uint8_t* yuyv, size_t pixels) {
    return LumaSumYuyv(yuyv, pixels);
}

}  // namespace korvane

#endif
