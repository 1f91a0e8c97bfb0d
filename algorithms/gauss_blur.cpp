#include "algorithms/gauss_blur.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "algorithms/gauss_blur_scalar.h"
#include "algorithms/work_buffer.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/gauss_blur.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include <hwy/highway.h>

#include "algorithms/sliding_box-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

// Both passes return false when the plain form has to do the work. Radii are 1 or more and within the lines.

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

bool BoxRows(const uint8_t*, uint8_t*, size_t, size_t, size_t) {
    return false;
}

bool BoxColumns(const uint8_t*, uint8_t*, size_t, size_t, size_t) {
    return false;
}

#else

template <Division kDivision>
bool BlurRows(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    const BoxWindow window(radius, true);
    const WorkBuffer<uint8_t> slots(RingSlots(radius), kSlotBytes);
    if (!slots) {
        return false;
    }
    RowBand<kDivision, 1> band(window, width, slots.get());
    for (size_t y = 0; y < height; y += band.kRows) {
        for (size_t i = 0; i < band.kRows; ++i) {
            const size_t start = std::min(y + i, height - 1) * width;
            band.in[i] = src + start;
            band.out[i] = dst + start;
        }
        band.Blur();
    }
    return true;
}

template <Division kDivision>
bool BlurColumns(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    const BoxWindow window(radius, true);
    const auto rowAt = [=](size_t y) { return src + y * width; };
    using Sweep = ColumnSweep<kDivision, decltype(rowAt)>;
    const WorkBuffer<typename Sweep::Element> sums(1, Sweep::SumCount(width));
    if (width < Sweep::LeastRowBytes() || !sums) {
        return false;
    }
    Sweep(window, width, height, 0, rowAt, sums.get()).Advance(height, dst, width);
    return true;
}

// `dst` may be `src`.
bool BoxRows(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    constexpr size_t kLeastRows = 6;  // fewer leave most of a band's lanes idle
    if (height < kLeastRows || radius > kWideRadius) {
        return false;
    }
    return radius <= kNarrowRadius ? BlurRows<Division::kNarrow>(src, dst, width, height, radius)
                                   : BlurRows<Division::kWideNearest>(src, dst, width, height, radius);
}

bool BoxColumns(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    if (radius > kWideRadius) {
        return false;
    }
    return radius <= kNarrowRadius ? BlurColumns<Division::kNarrow>(src, dst, width, height, radius)
                                   : BlurColumns<Division::kWideNearest>(src, dst, width, height, radius);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {

HWY_EXPORT(BoxRows);
HWY_EXPORT(BoxColumns);

namespace {

// The window cannot be wider than the line.
size_t radius_within(int radius, int length) {
    return static_cast<size_t>(std::clamp(radius, 0, (length - 1) / 2));
}

bool is_image(const unsigned char* src, const unsigned char* dst, int width, int height) {
    return src != nullptr && dst != nullptr && width > 0 && height > 0;
}

}  // namespace
}  // namespace korvane

// Where a build has one target only, HWY_DYNAMIC_DISPATCH puts that target's namespace in front of the name.
using namespace korvane;

void box_blurH(const unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    if (!korvane::is_image(src, dst, width, height)) {
        return;
    }
    const auto columns = static_cast<size_t>(width);
    const auto rows = static_cast<size_t>(height);
    const size_t inside = korvane::radius_within(radius, width);
    if (inside == 0) {
        std::memcpy(dst, src, columns * rows);
    } else if (!HWY_DYNAMIC_DISPATCH(BoxRows)(src, dst, columns, rows, inside)) {
        box_blurH_scalar(src, dst, width, height, radius);
    }
}

void box_blurV(const unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    if (!korvane::is_image(src, dst, width, height)) {
        return;
    }
    const auto columns = static_cast<size_t>(width);
    const auto rows = static_cast<size_t>(height);
    const size_t inside = korvane::radius_within(radius, height);
    if (inside == 0) {
        std::memcpy(dst, src, columns * rows);
    } else if (!HWY_DYNAMIC_DISPATCH(BoxColumns)(src, dst, columns, rows, inside)) {
        box_blurV_scalar(src, dst, width, height, radius);
    }
}

void box_blur(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    if (!korvane::is_image(src, dst, width, height)) {
        return;
    }
    const auto columns = static_cast<size_t>(width);
    const auto rows = static_cast<size_t>(height);
    const size_t inside = korvane::radius_within(radius, width);
    // The kernel blurs rows in place; the plain form needs the copy.
    if (inside != 0 && !HWY_DYNAMIC_DISPATCH(BoxRows)(src, src, columns, rows, inside)) {
        std::memcpy(dst, src, columns * rows);
        box_blurH_scalar(dst, src, width, height, radius);
    }
    box_blurV(src, dst, width, height, radius);
}

void gauss_blur(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    gauss_blur_coef boxes;
    calculate_gauss_blur_coef(static_cast<float>(radius), 3, &boxes);
    for (int i = 0; i < boxes.coef_n; ++i) {
        box_blur(src, dst, width, height, (boxes.coef_values[i] - 1) / 2);
        std::swap(src, dst);
    }
}

#endif
