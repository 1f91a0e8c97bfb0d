#include "applications/super_capture/merge_kernels.h"

#include "applications/super_capture/merge_kernels_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "applications/super_capture/merge_kernels.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that it reads.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

void MergeMax(const uint8_t* frame, int* sums, size_t count) {
    merge_max_scalar(frame, sums, count);
}

void MergeFirst(const uint8_t* frame, int* sums, size_t count) {
    merge_first_scalar(frame, sums, count);
}

void MergeAdd(const uint8_t* frame, int* sums, size_t count) {
    merge_add_scalar(frame, sums, count);
}

void MergedLowBytes(const int* sums, uint8_t* frame, size_t count) {
    merged_low_bytes_scalar(sums, frame, count);
}

void MergedMean(const int* sums, uint8_t* frame, size_t count, int frames) {
    merged_mean_scalar(sums, frame, count, frames);
}

uint32_t LumaSum(const uint8_t* plane, size_t pixels) {
    return luma_sum_scalar(plane, pixels);
}

uint32_t LumaSumYuyv(const uint8_t* yuyv, size_t pixels) {
    return luma_sum_yuyv_scalar(yuyv, pixels);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using SumTag = hn::ScalableTag<int32_t>;

// How many sums stand before a cache line's start. These loops run at the speed of memory, which vectors that straddle
// cache lines cut by a quarter, so the plain form does the first few.
HWY_INLINE size_t CountUntilAligned(const int* sums, size_t count) {
    constexpr size_t kCacheLine = 64;
    const size_t past = reinterpret_cast<uintptr_t>(sums) % kCacheLine;
    return HWY_MIN(count, (kCacheLine - past) % kCacheLine / sizeof(int));
}

// sums[i] = combine(sums[i], frame[i]), by `plain` up to the first aligned vector and behind the last whole one.
template <class Combine>
HWY_INLINE void Fold(const uint8_t* frame, int* sums, size_t count, const Combine& combine,
                     void (*plain)(const uint8_t*, int*, size_t)) {
    const SumTag d;
    const hn::Rebind<uint8_t, SumTag> dBytes;
    const size_t lanes = hn::Lanes(d);
    size_t i = CountUntilAligned(sums, count);
    plain(frame, sums, i);
    for (; i + lanes <= count; i += lanes) {
        const auto bytes = hn::PromoteTo(d, hn::LoadU(dBytes, frame + i));
        hn::StoreU(combine(hn::LoadU(d, sums + i), bytes), d, sums + i);
    }
    plain(frame + i, sums + i, count - i);
}

void MergeMax(const uint8_t* frame, int* sums, size_t count) {
    const auto larger = [](auto sum, auto bytes) HWY_ATTR { return hn::Max(sum, bytes); };
    Fold(frame, sums, count, larger, merge_max_scalar);
}

void MergeFirst(const uint8_t* frame, int* sums, size_t count) {
    const auto second = [](auto /*sum*/, auto bytes) HWY_ATTR { return bytes; };
    Fold(frame, sums, count, second, merge_first_scalar);
}

void MergeAdd(const uint8_t* frame, int* sums, size_t count) {
    const auto total = [](auto sum, auto bytes) HWY_ATTR { return hn::Add(sum, bytes); };
    Fold(frame, sums, count, total, merge_add_scalar);
}

void MergedLowBytes(const int* sums, uint8_t* frame, size_t count) {
    const SumTag d;
    const hn::Rebind<uint8_t, SumTag> dBytes;
    const size_t lanes = hn::Lanes(d);
    const auto mask = hn::Set(d, 0xFF);
    size_t i = CountUntilAligned(sums, count);
    merged_low_bytes_scalar(sums, frame, i);
    for (; i + lanes <= count; i += lanes) {
        hn::StoreU(hn::DemoteTo(dBytes, hn::And(hn::LoadU(d, sums + i), mask)), dBytes, frame + i);
    }
    merged_low_bytes_scalar(sums + i, frame + i, count - i);
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
    const size_t lanes = hn::Lanes(d);
    const auto half = hn::Set(dFloat, 0.5F);
    const auto reciprocal = hn::Set(dFloat, 1.0F / static_cast<float>(frames));
    size_t i = CountUntilAligned(sums, count);
    merged_mean_scalar(sums, frame, i, frames);
    for (; i + lanes <= count; i += lanes) {
        const auto sum = hn::ConvertTo(dFloat, hn::LoadU(d, sums + i));
        const auto mean = hn::ConvertTo(d, hn::Mul(hn::Add(sum, half), reciprocal));
        hn::StoreU(hn::DemoteTo(dBytes, mean), dBytes, frame + i);
    }
    merged_mean_scalar(sums + i, frame + i, count - i, frames);
}

uint32_t LumaSum(const uint8_t* plane, size_t pixels) {
    const hn::ScalableTag<uint8_t> d;
    const hn::Repartition<uint64_t, decltype(d)> d64;
    const size_t lanes = hn::Lanes(d);
    auto sum0 = hn::Zero(d64);
    auto sum1 = hn::Zero(d64);
    size_t i = 0;
    for (; i + 2 * lanes <= pixels; i += 2 * lanes) {
        sum0 = hn::Add(sum0, hn::SumsOf8(hn::LoadU(d, plane + i)));
        sum1 = hn::Add(sum1, hn::SumsOf8(hn::LoadU(d, plane + i + lanes)));
    }
    const uint64_t sum = hn::GetLane(hn::SumOfLanes(d64, hn::Add(sum0, sum1)));
    return static_cast<uint32_t>(sum) + luma_sum_scalar(plane + i, pixels - i);
}

uint32_t LumaSumYuyv(const uint8_t* yuyv, size_t pixels) {
    const hn::ScalableTag<uint8_t> d;
    const hn::Repartition<uint16_t, decltype(d)> dPixels;
    const hn::Repartition<uint64_t, decltype(d)> d64;
    const size_t pixelsPerVector = hn::Lanes(dPixels);
    const auto lumaMask = hn::BitCast(d, hn::Set(dPixels, uint16_t{0x00FF}));
    auto sum0 = hn::Zero(d64);
    auto sum1 = hn::Zero(d64);
    size_t i = 0;
    for (; i + 2 * pixelsPerVector <= pixels; i += 2 * pixelsPerVector) {
        sum0 = hn::Add(sum0, hn::SumsOf8(hn::And(hn::LoadU(d, yuyv + 2 * i), lumaMask)));
        sum1 = hn::Add(sum1, hn::SumsOf8(hn::And(hn::LoadU(d, yuyv + 2 * (i + pixelsPerVector)), lumaMask)));
    }
    const uint64_t sum = hn::GetLane(hn::SumOfLanes(d64, hn::Add(sum0, sum1)));
    return static_cast<uint32_t>(sum) + luma_sum_yuyv_scalar(yuyv + 2 * i, pixels - i);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace korvane {

HWY_EXPORT(MergeMax);
HWY_EXPORT(MergeFirst);
HWY_EXPORT(MergeAdd);
HWY_EXPORT(MergedLowBytes);
HWY_EXPORT(MergedMean);
HWY_EXPORT(LumaSum);
HWY_EXPORT(LumaSumYuyv);

void merge_max(const uint8_t* frame, int* sums, size_t count) {
    HWY_DYNAMIC_DISPATCH(MergeMax)(frame, sums, count);
}

void merge_first(const uint8_t* frame, int* sums, size_t count) {
    HWY_DYNAMIC_DISPATCH(MergeFirst)(frame, sums, count);
}

void merge_add(const uint8_t* frame, int* sums, size_t count) {
    HWY_DYNAMIC_DISPATCH(MergeAdd)(frame, sums, count);
}

void merged_low_bytes(const int* sums, uint8_t* frame, size_t count) {
    HWY_DYNAMIC_DISPATCH(MergedLowBytes)(sums, frame, count);
}

void merged_mean(const int* sums, uint8_t* frame, size_t count, int frames) {
    HWY_DYNAMIC_DISPATCH(MergedMean)(sums, frame, count, frames);
}

uint32_t luma_sum(const uint8_t* plane, size_t pixels) {
    return HWY_DYNAMIC_DISPATCH(LumaSum)(plane, pixels);
}

uint32_t luma_sum_yuyv(const uint8_t* yuyv, size_t pixels) {
    return HWY_DYNAMIC_DISPATCH(LumaSumYuyv)(yuyv, pixels);
}

int mean_luma(uint32_t sum, uint32_t area) {
    if (area == 0) {
        return 0;
    }
    // In 64 bits, where -2^31 / -1 has an answer.
    return static_cast<int>(int64_t{static_cast<int32_t>(sum)} / int64_t{static_cast<int32_t>(area)});
}

}  // namespace korvane
#endif
