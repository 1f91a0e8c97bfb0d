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
#include <hwy/highway.h>

#include "algorithms/sliding_box-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

void FastBlur(const unsigned int* src, unsigned char* dst, int w, int h, int radius) {
    fast_blur_scalar(src, dst, w, h, radius);
}

#else

// Blurred rows go into a ring just long enough for the window of the columns, which reads them while they are in the
// cache. A band of source rows has been read before the first of them can be overwritten, so dst may be src.
template <Division kDivision>
void BlurThroughRing(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    using Band = RowBand<kDivision, 4>;
    constexpr uint32_t kOpaque = 0xFF000000;

    const BoxWindow window(radius, false);
    const size_t rowBytes = width * 4;
    // Not a power of two apart, or the rows of a column would compete for the same few cache lines.
    const size_t ringStride = (rowBytes / kSlotBytes + 2) * kSlotBytes;
    const size_t ringRows = std::min(height, 2 * radius + 1 + Band::kRows);

    const WorkBuffer<uint8_t> slots(RingSlots(radius), kSlotBytes);
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

// The ring is for images apart, or for one image; only the plain form reads everything before it writes.
bool OverlapPartly(const void* src, const void* dst, size_t bytes) {
    const auto from = reinterpret_cast<uintptr_t>(src);
    const auto to = reinterpret_cast<uintptr_t>(dst);
    return from != to && std::max(from, to) - std::min(from, to) < bytes;
}

void FastBlur(const unsigned int* src, unsigned char* dst, int w, int h, int radius) {
    const auto width = static_cast<size_t>(w);
    const auto height = static_cast<size_t>(h);
    const size_t inside = std::min({static_cast<size_t>(radius), width, height});
    const bool isNarrowImage = width * 4 < hn::Lanes(hn::ScalableTag<uint8_t>());
    if (isNarrowImage || inside > kWideRadius || OverlapPartly(src, dst, width * height * 4)) {
        fast_blur_scalar(src, dst, w, h, radius);
        return;
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(src);
    if (inside <= kNarrowRadius) {
        BlurThroughRing<Division::kNarrow>(bytes, dst, width, height, inside);
    } else {
        BlurThroughRing<Division::kWideDown>(bytes, dst, width, height, inside);
    }
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
HWY_EXPORT(FastBlur);
}  // namespace korvane

// Where a build has one target only, HWY_DYNAMIC_DISPATCH puts that target's namespace in front of the name.
using namespace korvane;

void fast_blur(const unsigned int* src, unsigned char* dst, int w, int h, int radius) {
    if (src != nullptr && dst != nullptr && w > 0 && h > 0 && radius > 0) {
        HWY_DYNAMIC_DISPATCH(FastBlur)(src, dst, w, h, radius);
    }
}

#endif
