// SPDX-License-Identifier: Apache-2.0
#include "applications/super_capture/merge_kernels.h"

#include "applications/super_capture/merge_kernels_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "applications/super_capture/merge_kernels.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

using SumTag = hn::ScalableTag<int32_t>;

constexpr size_t kCacheLineBytes = 64;

// sums[i] = combine(sums[i], frame[i]); the twin does what lies before the first aligned vector and behind the last.
template <class Combine>
HWY_INLINE void Fold(const uint8_t* frame, int* sums, size_t count, const Combine& combine,
                     void (*twin)(const uint8_t*, int*, size_t)) {
    const SumTag d;
    const hn::Rebind<uint8_t, SumTag> dBytes;
    const size_t before = CountUntilAligned(sums, kCacheLineBytes, count);
    twin(frame, sums, before);
    const size_t done = ForWholeSteps(before, count, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        const auto bytes = hn::PromoteTo(d, hn::LoadU(dBytes, frame + i));
        hn::StoreU(combine(hn::LoadU(d, sums + i), bytes), d, sums + i);
    });
    twin(frame + done, sums + done, count - done);
}

void MergeMax(const uint8_t* frame, int* sums, size_t count) {
    const auto larger = [](auto sum, auto bytes) KORVANE_INLINE { return hn::Max(sum, bytes); };
    Fold(frame, sums, count, larger, merge_max_scalar);
}

void MergeFirst(const uint8_t* frame, int* sums, size_t count) {
    const auto second = [](auto /*sum*/, auto bytes) KORVANE_INLINE { return bytes; };
    Fold(frame, sums, count, second, merge_first_scalar);
}

void MergeAdd(const uint8_t* frame, int* sums, size_t count) {
    const auto total = [](auto sum, auto bytes) KORVANE_INLINE { return hn::Add(sum, bytes); };
    Fold(frame, sums, count, total, merge_add_scalar);
}

void MergedLowBytes(const int* sums, uint8_t* frame, size_t count) {
    const SumTag d;
    const hn::Rebind<uint8_t, SumTag> dBytes;
    const auto mask = hn::Set(d, 0xFF);
    const size_t before = CountUntilAligned(sums, kCacheLineBytes, count);
    merged_low_bytes_scalar(sums, frame, before);
    const size_t done = ForWholeSteps(before, count, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        hn::StoreU(hn::DemoteTo(dBytes, hn::And(hn::LoadU(d, sums + i), mask)), dBytes, frame + i);
    });
    merged_low_bytes_scalar(sums + done, frame + done, count - done);
}

void MergedMean(const int* sums, uint8_t* frame, size_t count, int frames) {
    // Up to here trunc((sum + 0.5) * (1 / frames)) in single precision is the truncated quotient for every sum.
    constexpr int kMostFramesByReciprocal = 2048;
    if (frames < 1 || frames > kMostFramesByReciprocal) {
        merged_mean_scalar(sums, frame, count, frames);
        return;
    }
    const SumTag d;
    const hn::Rebind<float, SumTag> dFloat;
    const hn::Rebind<uint8_t, SumTag> dBytes;
    const auto half = hn::Set(dFloat, 0.5F);
    const auto reciprocal = hn::Set(dFloat, 1.0F / static_cast<float>(frames));
    const size_t before = CountUntilAligned(sums, kCacheLineBytes, count);
    merged_mean_scalar(sums, frame, before, frames);
    const size_t done = ForWholeSteps(before, count, hn::Lanes(d), [&](size_t i) KORVANE_INLINE {
        const auto sum = hn::ConvertTo(dFloat, hn::LoadU(d, sums + i));
        const auto mean = hn::ConvertTo(d, hn::Mul(hn::Add(sum, half), reciprocal));
        hn::StoreU(hn::DemoteTo(dBytes, mean), dBytes, frame + i);
    });
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
