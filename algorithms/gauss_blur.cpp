// SPDX-License-Identifier: Apache-2.0
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
#include "algorithms/sliding_box-inl.h"
#include "frameworks/simd/kernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// Both passes return false when the twin has to do the work. Radii are 1 or more and within the lines.

// `dst` may be `src`.
template <Division kDivision>
bool BlurRowsAs(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    using Band = RowBand<kDivision, 1>;
    const BoxWindow window(radius, true);
    const WorkBuffer<uint8_t> slots(Band::SlotCount(radius), kSlotBytes);
    if (!slots) {
        return false;
    }
    Band band(window, width, slots.get());
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
bool BlurColumnsAs(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
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

bool BlurRows(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    constexpr size_t kLeastRows = 6;  // fewer leave most of a band's lanes idle
    if (height < kLeastRows || radius > kWideRadius) {
        return false;
    }
    return radius <= kShortRadius    ? BlurRowsAs<Division::kShort>(src, dst, width, height, radius)
           : radius <= kNarrowRadius ? BlurRowsAs<Division::kNarrow>(src, dst, width, height, radius)
                                     : BlurRowsAs<Division::kWideNearest>(src, dst, width, height, radius);
}

bool BlurColumns(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    if (radius > kWideRadius) {
        return false;
    }
    return radius <= kShortRadius    ? BlurColumnsAs<Division::kShort>(src, dst, width, height, radius)
           : radius <= kNarrowRadius ? BlurColumnsAs<Division::kNarrow>(src, dst, width, height, radius)
                                     : BlurColumnsAs<Division::kWideNearest>(src, dst, width, height, radius);
}

void BoxRows(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    if (!BlurRows(src, dst, width, height, radius)) {
        box_rows_scalar(src, dst, width, height, radius);
    }
}

void BoxRowsInPlace(uint8_t* image, uint8_t* spare, size_t width, size_t height, size_t radius) {
    if (!BlurRows(image, image, width, height, radius)) {
        box_rows_in_place_scalar(image, spare, width, height, radius);
    }
}

void BoxColumns(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    if (!BlurColumns(src, dst, width, height, radius)) {
        box_columns_scalar(src, dst, width, height, radius);
    }
}

#else

constexpr auto& BoxRows = box_rows_scalar;
constexpr auto& BoxRowsInPlace = box_rows_in_place_scalar;
constexpr auto& BoxColumns = box_columns_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(BoxRows);
KORVANE_DISPATCH(BoxRowsInPlace);
KORVANE_DISPATCH(BoxColumns);

// The size of a call and its radius, which cannot be wider than the line.
struct BoxPass {
    BoxPass(const uint8_t* src, const uint8_t* dst, int imageWidth, int imageHeight, int wantedRadius, int length)
        : isImage(src != nullptr && dst != nullptr && imageWidth > 0 && imageHeight > 0),
          width(static_cast<size_t>(imageWidth)),
          height(static_cast<size_t>(imageHeight)),
          radius(isImage ? static_cast<size_t>(std::clamp(wantedRadius, 0, (length - 1) / 2)) : 0) {}

    bool isImage;
    size_t width;
    size_t height;
    size_t radius;
};

}  // namespace
}  // namespace korvane

// In both passes `src` is only read; its type is part of the interface.

void box_blurH(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    const korvane::BoxPass pass(src, dst, width, height, radius, width);
    if (pass.radius > 0) {
        korvane::BoxRows(src, dst, pass.width, pass.height, pass.radius);
    } else if (pass.isImage) {
        std::memcpy(dst, src, pass.width * pass.height);
    }
}

void box_blurV(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    const korvane::BoxPass pass(src, dst, width, height, radius, height);
    if (pass.radius > 0) {
        korvane::BoxColumns(src, dst, pass.width, pass.height, pass.radius);
    } else if (pass.isImage) {
        std::memcpy(dst, src, pass.width * pass.height);
    }
}

void box_blur(unsigned char* src, unsigned char* dst, int width, int height, int radius) {
    const korvane::BoxPass pass(src, dst, width, height, radius, width);
    if (pass.radius > 0) {
        korvane::BoxRowsInPlace(src, dst, pass.width, pass.height, pass.radius);
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
