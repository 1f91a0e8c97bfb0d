// SPDX-License-Identifier: Apache-2.0
#include "algorithms/fast_blur.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "algorithms/fast_blur_scalar.h"
#include "algorithms/work_buffer.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/fast_blur.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "algorithms/sliding_box-inl.h"
#include "frameworks/simd/kernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// Blurred rows go into a ring just long enough for the window of the columns, which reads them while they are in the
// cache. A band of source rows has been read before the first of them can be overwritten, so dst may be src.
template <Division kDivision>
void BlurThroughRing(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    using Band = RowBand<kDivision, 4>;
    constexpr uint32_t kOpaque = 0xFF000000;

    const BoxWindow window(radius, false);
    const size_t rowBytes = width * 4;
    // Not a power of two: the rows of a column would compete for the same few cache lines.
    const size_t ringStride = (rowBytes / kSlotBytes + 2) * kSlotBytes;
    const size_t ringRows = std::min(height, 2 * radius + 1 + Band::kRows);

    const WorkBuffer<uint8_t> slots(Band::SlotCount(radius), kSlotBytes);
    const WorkBuffer<uint8_t> ring(ringRows, ringStride);
    const auto rowAt = [&](size_t y) { return ring.get() + y % ringRows * ringStride; };
    using Sweep = ColumnSweep<kDivision, decltype(rowAt)>;
    const WorkBuffer<typename Sweep::Element> sums(1, Sweep::SumCount(rowBytes));
    if (!slots || !ring || !sums) {
        return;
    }
    Band band(window, width, slots.get());
    Sweep sweep(window, rowBytes, height, kOpaque, rowAt, sums.get());
    for (size_t y = 0; y < height; y += Band::kRows) {
        for (size_t i = 0; i < Band::kRows; ++i) {
            const size_t row = std::min(y + i, height - 1);
            band.in[i] = src + row * rowBytes;
            band.out[i] = rowAt(row);
        }
        band.Blur();
        sweep.Advance(std::min(y + Band::kRows, height), dst, rowBytes);
    }
}

// The ring serves two images apart, or one image; only the twin reads all before it writes.
bool OverlapPartly(const void* src, const void* dst, size_t bytes) {
    const auto from = reinterpret_cast<uintptr_t>(src);
    const auto to = reinterpret_cast<uintptr_t>(dst);
    return from != to && std::max(from, to) - std::min(from, to) < bytes;
}

void FastBlur(const uint32_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    const bool isNarrowImage = width * 4 < hn::Lanes(hn::ScalableTag<uint8_t>());
    if (isNarrowImage || radius > kWideRadius || OverlapPartly(src, dst, width * height * 4)) {
        fast_blur_scalar(src, dst, width, height, radius);
        return;
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(src);
    if (radius <= kShortRadius) {
        BlurThroughRing<Division::kShort>(bytes, dst, width, height, radius);
    } else if (radius <= kNarrowRadius) {
        BlurThroughRing<Division::kNarrow>(bytes, dst, width, height, radius);
    } else {
        BlurThroughRing<Division::kWideDown>(bytes, dst, width, height, radius);
    }
}

#else

constexpr auto& FastBlur = fast_blur_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(FastBlur);

}  // namespace
}  // namespace korvane

// `src` is only read; its type is part of the interface.
void fast_blur(unsigned int* src, unsigned char* dst, int w, int h, int radius) {
    if (src != nullptr && dst != nullptr && w > 0 && h > 0 && radius > 0) {
        korvane::FastBlur(src, dst, static_cast<size_t>(w), static_cast<size_t>(h),
                          static_cast<size_t>(std::min({radius, w, h})));
    }
}

#endif
