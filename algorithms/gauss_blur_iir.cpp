// SPDX-License-Identifier: Apache-2.0
#include "algorithms/gauss_blur_iir.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "algorithms/flush_denormals.h"
#include "algorithms/gauss_blur_iir_coefficients.h"
#include "algorithms/gauss_blur_iir_scalar.h"
#include "algorithms/work_buffer.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/gauss_blur_iir.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include <hwy/cache_control.h>

#include "frameworks/simd/factors-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// 16 lines are filtered at once. They are gathered into slots, one for each position along the lines. A slot holds the
// three channels of all lines, without byte 3 of the pixels.
constexpr size_t kLines = 16;
constexpr size_t kChannels = 3;
constexpr size_t kSlotBytes = kLines * kChannels;
constexpr size_t kOrder = 4;
constexpr size_t kLeastLength = 2 * kOrder;  // of a line, for the kernel

// A single recursion would mostly wait for its own last value. Several vectors in both directions keep the processor
// busy; it has to be one where all that the recursions keep then stays in registers.
constexpr size_t kVectors = kHasManyRegisters ? 1 : 3;
using FloatTag = hn::CappedTag<float, kLines>;
using Floats = hn::Vec<FloatTag>;

struct Recursion {
    Recursion(const float* numerators, const float* denominators, const float* edges) {
        for (size_t j = 0; j <= kOrder; ++j) {
            numerator[j] = numerators[j];
            denominator[j] = denominators[j];
            edge[j] = numerators[j] - edges[j];
        }
    }

    float numerator[kOrder + 1];
    float denominator[kOrder + 1];
    float edge[kOrder + 1];  // of a position before the line's start, times the line's first value
};

// Forwards the numerators begin with term 0, backwards with term 1. The denominators begin with term 1.
template <size_t kFirst>
struct Factors {
    HWY_INLINE explicit Factors(const Recursion& recursion)
        : numerators(LoadFactors(recursion.numerator + kFirst)), denominators(LoadFactors(recursion.denominator + 1)) {}

    FourFactors numerators;
    FourFactors denominators;
};

// What a recursion read and gave at its last four steps, by step modulo four, and its line's first value. The compiler
// knows every index, and so keeps in registers what fits.
struct History {
    HWY_ALIGN float read[kOrder][kLines];
    HWY_ALIGN float given[kOrder][kLines];
    HWY_ALIGN float first[kLines];
};

// Term j of a step with kTerms steps before it: from the line's history, or from its edge.
template <size_t kJ, size_t kTerms, size_t kFirst>
HWY_INLINE Floats Term(const Recursion& recursion, const Factors<kFirst>& factors, const History& history,
                       size_t step) {
    const FloatTag d;
    if constexpr (kJ > kTerms) {
        return hn::Mul(hn::Set(d, recursion.edge[kJ]), hn::Load(d, history.first));
    } else {
        const size_t at = (step + kOrder - kJ) % kOrder;
        return hn::Sub(TimesFactor<kJ - kFirst>(hn::Load(d, history.read[at]), factors.numerators),
                       TimesFactor<kJ - 1>(hn::Load(d, history.given[at]), factors.denominators));
    }
}

HWY_INLINE Floats Record(Floats read, Floats given, History& history, size_t step) {
    const FloatTag d;
    hn::Store(read, d, history.read[step % kOrder]);
    hn::Store(given, d, history.given[step % kOrder]);
    return given;
}

// Terms are added in the order of the twin, without those that are always zero: forwards the denominator's part of term
// 0 and the numerator's of term 4, backwards all of term 0.
template <size_t kTerms>
HWY_INLINE Floats Forwards(const Recursion& p, const Factors<0>& factors, Floats read, History& history, size_t step) {
    const FloatTag d;
    Floats sum = TimesFactor<0>(read, factors.numerators);
    sum = hn::Add(sum, Term<1, kTerms>(p, factors, history, step));
    sum = hn::Add(sum, Term<2, kTerms>(p, factors, history, step));
    sum = hn::Add(sum, Term<3, kTerms>(p, factors, history, step));
    if constexpr (kTerms < kOrder) {
        sum = hn::Add(sum, hn::Mul(hn::Set(d, p.edge[kOrder]), hn::Load(d, history.first)));
    } else {
        const Floats oldest = hn::Load(d, history.given[step % kOrder]);
        sum = hn::Sub(sum, TimesFactor<kOrder - 1>(oldest, factors.denominators));
    }
    return Record(read, sum, history, step);
}

template <size_t kTerms>
HWY_INLINE Floats Backwards(const Recursion& m, const Factors<1>& factors, Floats read, History& history, size_t step) {
    Floats sum = Term<1, kTerms>(m, factors, history, step);
    sum = hn::Add(sum, Term<2, kTerms>(m, factors, history, step));
    sum = hn::Add(sum, Term<3, kTerms>(m, factors, history, step));
    sum = hn::Add(sum, Term<4, kTerms>(m, factors, history, step));
    return Record(read, sum, history, step);
}

// After a step with number 0: makes the next step's number 0 as well.
HWY_INLINE void Rotate(History& history) {
    const FloatTag d;
    for (auto* lines : {history.read, history.given}) {
        const Floats newest = hn::Load(d, lines[0]);
        hn::Store(hn::Load(d, lines[1]), d, lines[0]);
        hn::Store(hn::Load(d, lines[2]), d, lines[1]);
        hn::Store(hn::Load(d, lines[3]), d, lines[2]);
        hn::Store(newest, d, lines[3]);
    }
}

// Calls `step(i, number)` for a range with the numbers 0 to 3 in turn. Steps at the end that are not four have the
// number 0, and `rotate` is called after each.
template <class Step, class Rotation>
HWY_INLINE void ForEachStep(size_t begin, size_t end, const Step& step, const Rotation& rotate) {
    size_t i = begin;
    for (; i + kOrder <= end; i += kOrder) {
        step(i, 0);
        step(i + 1, 1);
        step(i + 2, 2);
        step(i + 3, 3);
    }
    for (; i < end; ++i) {
        step(i, 0);
        rotate();
    }
}

template <size_t kTerms>
using Terms = std::integral_constant<size_t, kTerms>;

// Filters kVectors vectors of lines in `length` slots, in place. The two directions run at once, towards each other;
// when they have met, each finds the other's sums in `work`, and the results are complete.
HWY_INLINE void FilterLanes(const Recursion& p, const Recursion& m, uint8_t* slots, float* work, size_t length) {
    const FloatTag d;
    const Factors<0> factorsP(p);
    const Factors<1> factorsM(m);
    const hn::Rebind<int32_t, FloatTag> dInt;
    const hn::Rebind<uint8_t, FloatTag> dByte;
    const size_t lanes = hn::Lanes(d);

    const auto load = [&](size_t i, size_t v) KORVANE_INLINE {
        return hn::ConvertTo(d, hn::PromoteTo(dInt, hn::LoadU(dByte, slots + i * kSlotBytes + v * lanes)));
    };
    const auto store = [&](Floats sum, size_t i, size_t v)
                           KORVANE_INLINE { StoreClampedFloats(sum, d, slots + i * kSlotBytes + v * lanes); };
    const auto workAt = [=](size_t i, size_t v) { return work + (i * kVectors + v) * lanes; };

    History statesP[kVectors] = {};
    History statesM[kVectors] = {};
    History* const historyP = KeptAtHand(statesP);
    History* const historyM = KeptAtHand(statesM);
    for (size_t v = 0; v < kVectors; ++v) {
        hn::Store(load(0, v), d, historyP[v].first);
        hn::Store(load(length - 1, v), d, historyM[v].first);
    }
    const auto apart = [&](auto terms, size_t i, size_t step) KORVANE_INLINE {
        const size_t mirrored = length - 1 - i;
        for (size_t v = 0; v < kVectors; ++v) {
            hn::StoreU(Forwards<terms()>(p, factorsP, load(i, v), historyP[v], step), d, workAt(i, v));
        }
        for (size_t v = 0; v < kVectors; ++v) {
            hn::StoreU(Backwards<terms()>(m, factorsM, load(mirrored, v), historyM[v], step), d, workAt(mirrored, v));
        }
    };
    const auto beyond = [&](size_t i, size_t step) KORVANE_INLINE {
        const size_t mirrored = length - 1 - i;
        for (size_t v = 0; v < kVectors; ++v) {
            const Floats vp = Forwards<kOrder>(p, factorsP, load(i, v), historyP[v], step);
            store(hn::Add(vp, hn::LoadU(d, workAt(i, v))), i, v);
        }
        for (size_t v = 0; v < kVectors; ++v) {
            const Floats vm = Backwards<kOrder>(m, factorsM, load(mirrored, v), historyM[v], step);
            store(hn::Add(hn::LoadU(d, workAt(mirrored, v)), vm), mirrored, v);
        }
    };

    const auto rotate = [&]() KORVANE_INLINE {
        for (size_t v = 0; v < kVectors; ++v) {
            Rotate(historyP[v]);
            Rotate(historyM[v]);
        }
    };

    const size_t half = length / 2;
    apart(Terms<0>(), 0, 0);
    apart(Terms<1>(), 1, 1);
    apart(Terms<2>(), 2, 2);
    apart(Terms<3>(), 3, 3);
    ForEachStep(
        kOrder, half, [&](size_t i, size_t step) KORVANE_INLINE { apart(Terms<kOrder>(), i, step); }, rotate);
    if (length % 2 != 0) {
        for (size_t v = 0; v < kVectors; ++v) {
            const Floats read = load(half, v);
            const Floats vp = Forwards<kOrder>(p, factorsP, read, historyP[v], 0);
            const Floats vm = Backwards<kOrder>(m, factorsM, read, historyM[v], 0);
            store(hn::Add(vp, vm), half, v);
        }
        rotate();
    }
    ForEachStep(length - half, length, beyond, rotate);
}

class Blur {
  public:
    Blur(unsigned char* image, size_t width, size_t height, size_t depth, ptrdiff_t stride)
        : m_Image(image),
          m_Width(width),
          m_Height(height),
          m_Depth(depth),
          m_Stride(stride),
          // Room for a whole tile at a line's end.
          m_Slots(std::max(width, height) + kLines, kSlotBytes),
          m_Work(std::max(width, height), kVectors * hn::Lanes(FloatTag())) {}

    bool HasMemory() const { return m_Slots && m_Work; }

    // A strip of columns at a time. One walk down the rows writes the finished strip and reads the next one, since most
    // of the cost is the first touch of a row.
    void BlurColumns(const gaussiirContext& context) {
        for (size_t x = 0; x < m_Width + kLines; x += kLines) {
            const size_t before = x == 0 ? 0 : x - kLines;
            const size_t count = x < m_Width ? std::min(kLines, m_Width - x) : 0;
            for (size_t y = 0; y < m_Height; ++y) {
                PrefetchPixels(before, std::min(x, m_Width) + count, y + kPrefetchRows);
                if (x != 0) {
                    ScatterPixels(Slot(y), Pixel(before, y), std::min(kLines, m_Width - before));
                }
                if (count != 0) {
                    GatherPixels(Pixel(x, y), Slot(y), count);
                }
            }
            if (count != 0) {
                Filter(context, m_Height);
            }
        }
    }

    // A band of rows at a time, transposed on its way in and out.
    void BlurRows(const gaussiirContext& context) {
        HWY_ALIGN uint8_t tile[kLines * kSlotBytes] = {};
        for (size_t y = 0; y < m_Height; y += kLines) {
            const size_t rows = std::min(kLines, m_Height - y);
            for (size_t x = 0; x < m_Width; x += kLines) {
                const size_t ahead = std::min(kPrefetchColumns, m_Width - 1 - x) * m_Depth;
                for (size_t row = 0; row < rows; ++row) {
                    const unsigned char* pixels = Pixel(x, y + row);
                    hwy::Prefetch(pixels + ahead);
                    GatherPixels(pixels, tile + row * kSlotBytes, m_Width - x);
                }
                TransposeTile(tile, Slot(x));
            }
            Filter(context, m_Width);
            for (size_t x = 0; x < m_Width; x += kLines) {
                TransposeTile(Slot(x), tile);
                for (size_t row = 0; row < rows; ++row) {
                    ScatterPixels(tile + row * kSlotBytes, Pixel(x, y + row), m_Width - x);
                }
            }
        }
    }

  private:
    // How far ahead lines are asked for: there are too many of them, and too far apart, for the processor to foresee.
    static constexpr size_t kPrefetchRows = 64;
    static constexpr size_t kPrefetchColumns = 8 * kLines;

    unsigned char* Pixel(size_t x, size_t y) const {
        return m_Image + static_cast<ptrdiff_t>(y) * m_Stride + static_cast<ptrdiff_t>(x * m_Depth);
    }

    uint8_t* Slot(size_t i) const { return m_Slots.get() + i * kSlotBytes; }

    HWY_INLINE void PrefetchPixels(size_t begin, size_t end, size_t y) const {
        constexpr size_t kCacheLine = 64;
        const unsigned char* row = Pixel(0, std::min(y, m_Height - 1));
        for (size_t at = begin * m_Depth; at < end * m_Depth; at += kCacheLine) {
            hwy::Prefetch(row + at);
        }
    }

    void Filter(const gaussiirContext& context, size_t length) {
        const Recursion p(context.np, context.dp, context.bp);
        const Recursion m(context.nm, context.dm, context.bm);
        for (size_t at = 0; at < kSlotBytes; at += kVectors * hn::Lanes(FloatTag())) {
            FilterLanes(p, m, m_Slots.get() + at, m_Work.get(), length);
        }
    }

    // 16 neighbouring pixels, or as many as there are, into a slot: a third of it for each channel.
    HWY_INLINE void GatherPixels(const uint8_t* pixels, uint8_t* slot, size_t count) const {
        const hn::FixedTag<uint8_t, kLines> d;
        if (count < kLines) {
            for (size_t i = 0; i < count * kChannels; ++i) {
                slot[i % kChannels * kLines + i / kChannels] = pixels[i / kChannels * m_Depth + i % kChannels];
            }
            return;
        }
        hn::Vec<decltype(d)> red, green, blue, rest;
        if (m_Depth == 4) {
            hn::LoadInterleaved4(d, pixels, red, green, blue, rest);
        } else {
            hn::LoadInterleaved3(d, pixels, red, green, blue);
        }
        hn::StoreU(red, d, slot);
        hn::StoreU(green, d, slot + kLines);
        hn::StoreU(blue, d, slot + 2 * kLines);
    }

    HWY_INLINE void ScatterPixels(const uint8_t* slot, uint8_t* pixels, size_t count) const {
        const hn::FixedTag<uint8_t, kLines> d;
        if (count < kLines) {
            for (size_t i = 0; i < count * kChannels; ++i) {
                pixels[i / kChannels * m_Depth + i % kChannels] = slot[i % kChannels * kLines + i / kChannels];
            }
            return;
        }
        const auto red = hn::LoadU(d, slot);
        const auto green = hn::LoadU(d, slot + kLines);
        const auto blue = hn::LoadU(d, slot + 2 * kLines);
        if (m_Depth == 3) {
            hn::StoreInterleaved3(red, green, blue, d, pixels);
            return;
        }
        const hn::Repartition<uint16_t, decltype(d)> dHalf;
        const hn::Repartition<uint32_t, decltype(d)> dPixel;
        const auto rest = hn::Set(dPixel, 0xFF000000);
        const auto store = [&](auto pixel, size_t i) KORVANE_INLINE {
            uint8_t* to = pixels + i * hn::Lanes(d);
            const auto old = hn::BitCast(dPixel, hn::LoadU(d, to));
            hn::StoreU(hn::BitCast(d, hn::OrAnd(hn::BitCast(dPixel, pixel), old, rest)), d, to);
        };
        const auto zero = hn::Zero(d);
        const auto redGreen0 = hn::BitCast(dHalf, hn::InterleaveLower(d, red, green));
        const auto redGreen1 = hn::BitCast(dHalf, hn::InterleaveUpper(d, red, green));
        const auto blue0 = hn::BitCast(dHalf, hn::InterleaveLower(d, blue, zero));
        const auto blue1 = hn::BitCast(dHalf, hn::InterleaveUpper(d, blue, zero));
        store(hn::InterleaveLower(dHalf, redGreen0, blue0), 0);
        store(hn::InterleaveUpper(dHalf, redGreen0, blue0), 1);
        store(hn::InterleaveLower(dHalf, redGreen1, blue1), 2);
        store(hn::InterleaveUpper(dHalf, redGreen1, blue1), 3);
    }

    // 16 slots: positions along the lines become lines.
    static HWY_INLINE void TransposeTile(const uint8_t* from, uint8_t* to) {
        for (size_t at = 0; at < kSlotBytes; at += kLines) {
            TransposeBytes([=](size_t i) { return from + i * kSlotBytes + at; },
                           [=](size_t i) { return to + i * kSlotBytes + at; });
        }
    }

    unsigned char* m_Image;
    size_t m_Width;
    size_t m_Height;
    size_t m_Depth;
    ptrdiff_t m_Stride;
    WorkBuffer<uint8_t> m_Slots;
    WorkBuffer<float> m_Work;
};

void GaussIir(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert) {
    const auto columns = static_cast<size_t>(width);
    const auto rows = static_cast<size_t>(height);
    // Rows that overlap depend on the order in which the pixels are written.
    const bool isOverlapping = std::abs(ptrdiff_t{stride}) < ptrdiff_t{width} * depth;
    if (std::min(columns, rows) < kLeastLength || isOverlapping) {
        gaussiir_scalar(image, width, height, depth, stride, horz, vert);
        return;
    }
    Blur blur(image, columns, rows, static_cast<size_t>(depth), stride);
    if (!blur.HasMemory()) {
        return;
    }
    gaussiirContext context = {};
    calculate_gauss_iir_coefficients(&context, gaussiir_deviation(horz));
    blur.BlurColumns(context);
    if (vert != horz) {
        calculate_gauss_iir_coefficients(&context, gaussiir_deviation(vert));
    }
    blur.BlurRows(context);
}

#else

constexpr auto& GaussIir = gaussiir_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(GaussIir);

}  // namespace
}  // namespace korvane

void gaussiir(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert) {
    const bool isBlurring = horz > 0.0F && vert > 0.0F;  // false for a NaN
    if (image == nullptr || !isBlurring || width < 5 || height < 5 || (depth != 3 && depth != 4)) {
        return;
    }
    const korvane::FlushDenormals mode;
    korvane::GaussIir(image, width, height, depth, stride, horz, vert);
}

#endif
