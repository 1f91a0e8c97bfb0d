// SPDX-License-Identifier: Apache-2.0
// Sliding box sums along rows and down columns, the common part of the box blurs. For kernel files only: included once
// for each instruction set.
//
// Both directions are one loop over lines of bytes. A vector holds neighbouring bytes of a line; one line enters the
// window and another leaves it. Down the columns the lines are the image's rows. Along the rows they are slots: 64
// bytes with the pixels of one column from a band of rows. Bands are transposed into a ring of slots, which holds the
// window, and out of it again.
#if defined(KORVANE_ALGORITHMS_SLIDING_BOX_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_ALGORITHMS_SLIDING_BOX_INL_H_
#undef KORVANE_ALGORITHMS_SLIDING_BOX_INL_H_
#else
#define KORVANE_ALGORITHMS_SLIDING_BOX_INL_H_
#endif

#include <hwy/cache_control.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "algorithms/box_window.h"
#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"
#include "frameworks/simd/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

constexpr size_t kSlotBytes = 64;
constexpr size_t kPrefetchBytes = 256;

// The lines that one run of steps reads and writes: anywhere, or slots that follow each other.
template <size_t kSteps>
struct BoxSteps {
    const uint8_t* entering(size_t k) const { return enteringLines[k]; }
    const uint8_t* leaving(size_t k) const { return leavingLines[k]; }
    uint8_t* out(size_t k) const { return outLines[k]; }

    const uint8_t* enteringLines[kSteps];
    const uint8_t* leavingLines[kSteps];
    uint8_t* outLines[kSteps];
};

struct SlotSteps {
    const uint8_t* entering(size_t k) const { return enteringSlots + k * kSlotBytes; }
    const uint8_t* leaving(size_t k) const { return leavingSlots + k * kSlotBytes; }
    uint8_t* out(size_t k) const { return outSlots + k * kSlotBytes; }

    const uint8_t* enteringSlots;
    const uint8_t* leavingSlots;
    uint8_t* outSlots;
};

// Calls step(k) for each step, four in a round.
template <class Step>
HWY_INLINE void ForEachStep(size_t steps, const Step& step) {
    const size_t whole = steps - steps % 4;
    for (size_t k = 0; k < whole; k += 4) {
        step(k);
        step(k + 1);
        step(k + 2);
        step(k + 3);
    }
    for (size_t k = whole; k < steps; ++k) {
        step(k);
    }
}

// Sums of one vector of bytes: 16 bits wide, in the order of SplitBytes, or 32 bits wide, every fourth byte in turn. In
// memory they take one element for each byte.
template <Division kDivision>
struct NarrowBoxSums {
    using Element = uint16_t;

    template <class D>
    static HWY_INLINE void Start(D /*dByte*/, const BoxWindow& window, Element* sums) {
        const hn::Repartition<uint16_t, D> d;
        hn::StoreU(hn::Set(d, window.start), d, sums);
        hn::StoreU(hn::Set(d, window.start), d, sums + hn::Lanes(d));
    }

    template <class D>
    static HWY_INLINE void Add(D dByte, const uint8_t* line, size_t weight, Element* sums) {
        const hn::Repartition<uint16_t, D> d;
        const auto bytes = hn::LoadU(dByte, line);
        const auto factor = hn::Set(d, static_cast<uint16_t>(weight));
        hn::Vec<decltype(d)> a, b;
        SplitBytes(d, bytes, a, b);
        hn::StoreU(hn::Add(hn::LoadU(d, sums), hn::Mul(a, factor)), d, sums);
        hn::StoreU(hn::Add(hn::LoadU(d, sums + hn::Lanes(d)), hn::Mul(b, factor)), d, sums + hn::Lanes(d));
    }

    template <class D, class Lines>
    static HWY_INLINE void Run(D dByte, const BoxWindow& window, uint32_t always, const Lines& lines, size_t steps,
                               size_t offset, Element* sums) {
        const hn::Repartition<uint16_t, D> d;
        const hn::Repartition<uint32_t, D> dPixel;
        const auto multiplier = hn::Set(d, window.multiplier);
        const int shift = window.shift;
        const auto alwaysSet = hn::BitCast(dByte, hn::Set(dPixel, always));
        auto a = hn::LoadU(d, sums);
        auto b = hn::LoadU(d, sums + hn::Lanes(d));
        ForEachStep(steps, [&](size_t k) KORVANE_INLINE {
            const auto mean = UnsplitBytes(hn::ShiftRightSame(Scaled(a, multiplier), shift),
                                           hn::ShiftRightSame(Scaled(b, multiplier), shift));
            const auto entering = hn::LoadU(dByte, lines.entering(k) + offset);
            const auto leaving = hn::LoadU(dByte, lines.leaving(k) + offset);
            AddDifference(d, entering, leaving, a, b);
            hn::StoreU(hn::Or(mean, alwaysSet), dByte, lines.out(k) + offset);
        });
        hn::StoreU(a, d, sums);
        hn::StoreU(b, d, sums + hn::Lanes(d));
    }

  private:
    template <class V>
    static HWY_INLINE V Scaled(V sums, V multiplier) {
        return kDivision == Division::kShort ? HighHalf(sums, multiplier) : hn::MulHigh(sums, multiplier);
    }
};

template <Division kDivision>
struct WideBoxSums {
    using Element = int32_t;

    template <class D>
    static HWY_INLINE void Start(D /*dByte*/, const BoxWindow& /*window*/, Element* sums) {
        const hn::Repartition<int32_t, D> d;
        for (size_t i = 0; i < 4; ++i) {
            hn::StoreU(hn::Zero(d), d, sums + i * hn::Lanes(d));
        }
    }

    template <class D>
    static HWY_INLINE void Add(D dByte, const uint8_t* line, size_t weight, Element* sums) {
        const hn::Repartition<uint32_t, D> dPixel;
        const auto pixels = hn::BitCast(dPixel, hn::LoadU(dByte, line));
        AddByte<0>(dPixel, pixels, weight, sums);
        AddByte<1>(dPixel, pixels, weight, sums);
        AddByte<2>(dPixel, pixels, weight, sums);
        AddByte<3>(dPixel, pixels, weight, sums);
    }

    template <class D, class Lines>
    static HWY_INLINE void Run(D dByte, const BoxWindow& window, uint32_t always, const Lines& lines, size_t steps,
                               size_t offset, Element* sums) {
        const hn::Repartition<uint32_t, D> dPixel;
        const hn::Repartition<int32_t, D> d;
        const size_t lanes = hn::Lanes(d);
        auto sum0 = hn::LoadU(d, sums);
        auto sum1 = hn::LoadU(d, sums + lanes);
        auto sum2 = hn::LoadU(d, sums + 2 * lanes);
        auto sum3 = hn::LoadU(d, sums + 3 * lanes);
        for (size_t k = 0; k < steps; ++k) {
            const auto lower = hn::Or(Mean(d, window, sum0), hn::ShiftLeft<8>(Mean(d, window, sum1)));
            const auto upper = hn::Or(Mean(d, window, sum2), hn::ShiftLeft<8>(Mean(d, window, sum3)));
            const auto means = hn::BitCast(dPixel, hn::Or(lower, hn::ShiftLeft<16>(upper)));
            const auto entering = hn::BitCast(dPixel, hn::LoadU(dByte, lines.entering(k) + offset));
            const auto leaving = hn::BitCast(dPixel, hn::LoadU(dByte, lines.leaving(k) + offset));
            sum0 = hn::Add(sum0, hn::Sub(Byte<0>(dPixel, entering), Byte<0>(dPixel, leaving)));
            sum1 = hn::Add(sum1, hn::Sub(Byte<1>(dPixel, entering), Byte<1>(dPixel, leaving)));
            sum2 = hn::Add(sum2, hn::Sub(Byte<2>(dPixel, entering), Byte<2>(dPixel, leaving)));
            sum3 = hn::Add(sum3, hn::Sub(Byte<3>(dPixel, entering), Byte<3>(dPixel, leaving)));
            hn::StoreU(hn::BitCast(dByte, hn::Or(means, hn::Set(dPixel, always))), dByte, lines.out(k) + offset);
        }
        hn::StoreU(sum0, d, sums);
        hn::StoreU(sum1, d, sums + lanes);
        hn::StoreU(sum2, d, sums + 2 * lanes);
        hn::StoreU(sum3, d, sums + 3 * lanes);
    }

  private:
    template <int kByte, class D, class V>
    static HWY_INLINE hn::Vec<hn::RebindToSigned<D>> Byte(D dPixel, V pixels) {
        const hn::RebindToSigned<D> d;
        return hn::BitCast(d, hn::And(hn::ShiftRight<kByte * 8>(pixels), hn::Set(dPixel, 0xFF)));
    }

    template <int kByte, class D, class V>
    static HWY_INLINE void AddByte(D dPixel, V pixels, size_t weight, Element* sums) {
        const hn::RebindToSigned<D> d;
        Element* here = sums + kByte * hn::Lanes(d);
        const auto product = hn::Mul(Byte<kByte>(dPixel, pixels), hn::Set(d, static_cast<int32_t>(weight)));
        hn::StoreU(hn::Add(hn::LoadU(d, here), product), d, here);
    }

    // Rounded to nearest, the float quotient is the definition. Rounded down, it is off by one at most, and the
    // remainder corrects it.
    template <class D, class V>
    static HWY_INLINE V Mean(D d, const BoxWindow& window, V sum) {
        const hn::Rebind<float, D> dFloat;
        const auto quotient = hn::Mul(hn::ConvertTo(dFloat, sum), hn::Set(dFloat, window.reciprocal));
        const V whole = hn::ConvertTo(d, quotient);
        if constexpr (kDivision == Division::kWideNearest) {
            const auto rest = hn::Sub(quotient, hn::ConvertTo(dFloat, whole));
            const auto isUp = hn::RebindMask(d, hn::Ge(rest, hn::Set(dFloat, 0.5F)));
            return hn::Sub(whole, hn::VecFromMask(d, isUp));
        } else {
            const V divisor = hn::Set(d, window.divisor);
            const V rest = hn::Sub(sum, hn::Mul(whole, divisor));
            const V tooLarge = hn::VecFromMask(d, hn::Lt(rest, hn::Zero(d)));
            const V tooSmall = hn::VecFromMask(d, hn::Gt(rest, hn::Set(d, window.divisor - 1)));
            return hn::Sub(hn::Add(whole, tooLarge), tooSmall);
        }
    }
};

template <Division kDivision>
using BoxSums = std::conditional_t<kDivision == Division::kShort || kDivision == Division::kNarrow,
                                   NarrowBoxSums<kDivision>, WideBoxSums<kDivision>>;

// How many slots a ring must have for the window of a radius: a power of two, so that a mask finds a column's slot.
HWY_INLINE size_t RingSlots(size_t radius) {
    size_t slots = 256;
    while (slots < 2 * radius + 3 * kSlotBytes) {
        slots *= 2;
    }
    return slots;
}

// Blurs a band of kSlotBytes / kPixelBytes rows along the rows. `out` may be `in`. `ring` has SlotCount() slots: the
// first kTileColumns stand behind the last one once more, so that as many follow each other from any slot on.
template <Division kDivision, size_t kPixelBytes>
class RowBand {
  public:
    static constexpr size_t kRows = kSlotBytes / kPixelBytes;
    static constexpr size_t kTileColumns = kSlotBytes / kPixelBytes;

    const uint8_t* in[kRows];
    uint8_t* out[kRows];

    RowBand(const BoxWindow& window, size_t width, uint8_t* ring)
        : m_Window(window), m_Width(width), m_Ring(ring), m_Mask(RingSlots(window.radius) - 1) {}

    static size_t SlotCount(size_t radius) { return RingSlots(radius) + kTileColumns; }

    void Blur() {
        const hn::CappedTag<uint8_t, kSlotBytes> d;
        // A copy, which stored bytes cannot change for the compiler.
        const BoxWindow window = m_Window;
        const size_t radius = window.radius;
        const size_t last = m_Width - 1;
        HWY_ALIGN typename Sums::Element sums[kSlotBytes];
        m_Filled = 0;
        FillUpTo(radius + 1);
        for (size_t at = 0; at < kSlotBytes; at += hn::Lanes(d)) {
            Sums::Start(d, window, sums + at);
            Sums::Add(d, Slot(0) + at, radius + 1, sums + at);
            for (size_t i = 1; i <= radius; ++i) {
                Sums::Add(d, Slot(std::min(i, last)) + at, 1, sums + at);
            }
        }
        HWY_ALIGN uint8_t blurred[kTileColumns * kSlotBytes];
        for (size_t start = 0; start < m_Width; start += kTileColumns) {
            FillUpTo(start + kTileColumns + radius + 1);
            const size_t columns = std::min(kTileColumns, m_Width - start);
            if (start >= radius && start + kTileColumns + radius <= last) {
                const SlotSteps lines{Slot(start + radius + 1), Slot(start - radius), blurred};
                for (size_t at = 0; at < kSlotBytes; at += hn::Lanes(d)) {
                    Sums::Run(d, window, 0, lines, kTileColumns, at, sums + at);
                }
            } else {
                BoxSteps<kTileColumns> lines;
                for (size_t k = 0; k < columns; ++k) {
                    const size_t x = start + k;
                    lines.enteringLines[k] = Slot(std::min(x + radius + 1, last));
                    lines.leavingLines[k] = Slot(x - std::min(x, radius));
                    lines.outLines[k] = blurred + k * kSlotBytes;
                }
                for (size_t at = 0; at < kSlotBytes; at += hn::Lanes(d)) {
                    Sums::Run(d, window, 0, lines, columns, at, sums + at);
                }
            }
            Empty(blurred, start);
        }
    }

  private:
    using Sums = BoxSums<kDivision>;

    uint8_t* Slot(size_t x) const { return m_Ring + (x & m_Mask) * kSlotBytes; }

    // The last tile of a row is incomplete. And 64 rows that lie a power of two apart compete for the same few lines of
    // the cache, so a line must be read whole at its first touch.
    bool NeedsCopy(size_t x) const {
        constexpr size_t kCompeting = 1024;
        const bool isCompeting = kRows == 64 && static_cast<size_t>(in[1] - in[0]) % kCompeting == 0;
        return isCompeting || m_Width - x < kTileColumns;
    }

    void FillUpTo(size_t end) {
        HWY_ALIGN uint8_t tile[kRows * kSlotBytes];
        for (; m_Filled < std::min(end, m_Width); m_Filled += kTileColumns) {
            const size_t x = m_Filled;
            // The processor's own prefetchers do not follow so many rows at once.
            const size_t ahead = std::min(x * kPixelBytes + kPrefetchBytes, (m_Width - 1) * kPixelBytes);
            const uint8_t* from[kRows];
            for (size_t row = 0; row < kRows; ++row) {
                hwy::Prefetch(in[row] + ahead);
                from[row] = in[row] + x * kPixelBytes;
            }
            if (NeedsCopy(x)) {
                for (size_t row = 0; row < kRows; ++row) {
                    CopyTileRow(from[row], tile + row * kSlotBytes, m_Width - x);
                    from[row] = tile + row * kSlotBytes;
                }
            }
            uint8_t* const slots = Slot(x);
            TransposeTile([&](size_t row) { return from[row]; }, [&](size_t i) { return slots + i * kSlotBytes; });
            if (slots == m_Ring) {
                std::memcpy(m_Ring + (m_Mask + 1) * kSlotBytes, m_Ring, kTileColumns * kSlotBytes);
            }
        }
    }

    void Empty(const uint8_t* blurred, size_t x) const {
        HWY_ALIGN uint8_t tile[kRows * kSlotBytes];
        const bool viaTile = NeedsCopy(x);
        uint8_t* to[kRows];
        for (size_t row = 0; row < kRows; ++row) {
            to[row] = viaTile ? tile + row * kSlotBytes : out[row] + x * kPixelBytes;
        }
        TransposeTile([&](size_t i) { return blurred + i * kSlotBytes; }, [&](size_t row) { return to[row]; });
        for (size_t row = 0; viaTile && row < kRows; ++row) {
            CopyTileRow(to[row], out[row] + x * kPixelBytes, m_Width - x);
        }
    }

    static HWY_INLINE void CopyTileRow(const uint8_t* from, uint8_t* to, size_t pixels) {
        if (pixels >= kTileColumns) {
            std::memcpy(to, from, kSlotBytes);
        } else {
            std::memcpy(to, from, pixels * kPixelBytes);
        }
    }

    // A tile is as many pixels high as it is wide.
    template <typename From, typename To>
    static HWY_INLINE void TransposeTile(const From& from, const To& to) {
        constexpr size_t kEdge = kPixelBytes == 1 ? 16 : 4;
        for (size_t line = 0; line < kRows; line += kEdge) {
            for (size_t at = 0; at < kTileColumns; at += kEdge) {
                const auto source = [&](size_t i) { return from(line + i) + at * kPixelBytes; };
                const auto target = [&](size_t i) { return to(at + i) + line * kPixelBytes; };
                if constexpr (kPixelBytes == 1) {
                    TransposeBytes(source, target);
                } else {
                    TransposePixels(source, target);
                }
            }
        }
    }

    const BoxWindow& m_Window;
    size_t m_Width;
    uint8_t* m_Ring;
    size_t m_Mask;
    size_t m_Filled = 0;
};

// Blurs down the columns, some rows at a time, of an image whose rows need not all be there at once.
template <Division kDivision, typename RowAt>
class ColumnSweep {
  public:
    using Element = typename BoxSums<kDivision>::Element;

    static size_t LeastRowBytes() { return hn::Lanes(hn::ScalableTag<uint8_t>()); }
    static size_t SumCount(size_t rowBytes) { return rowBytes + LeastRowBytes(); }

    // `rowAt(y)` is the address of a row; rows have LeastRowBytes() or more, `sums` SumCount() elements. `always` is
    // set in every four bytes of the result.
    ColumnSweep(const BoxWindow& window, size_t rowBytes, size_t height, uint32_t always, const RowAt& rowAt,
                Element* sums)
        : m_Window(window), m_RowBytes(rowBytes), m_Height(height), m_Always(always), m_RowAt(rowAt), m_Sums(sums) {}

    // Writes all the rows that can be when the first `ready` rows can be read, and returns how many are done by then.
    size_t Advance(size_t ready, uint8_t* dst, size_t dstStride) {
        const size_t last = m_Height - 1;
        const size_t radius = m_Window.radius;
        if (ready <= std::min(radius + 1, last)) {
            return 0;
        }
        if (m_Done == 0) {
            Start();
        }
        const size_t end = ready > last ? m_Height : ready - radius - 1;
        for (; m_Done + kSteps <= end; m_Done += kSteps) {
            Sweep(kSteps, dst + m_Done * dstStride, dstStride);
        }
        if (m_Done < end) {
            Sweep(end - m_Done, dst + m_Done * dstStride, dstStride);
            m_Done = end;
        }
        return m_Done;
    }

  private:
    static constexpr size_t kSteps = 4;

    HWY_INLINE void Sweep(size_t steps, uint8_t* dst, size_t dstStride) {
        const size_t last = m_Height - 1;
        // Copies, which stored bytes cannot change for the compiler.
        const BoxWindow window = m_Window;
        const uint32_t always = m_Always;
        BoxSteps<kSteps> lines;
        for (size_t k = 0; k < steps; ++k) {
            const size_t y = m_Done + k;
            lines.enteringLines[k] = m_RowAt(std::min(y + window.radius + 1, last));
            lines.leavingLines[k] = m_RowAt(y - std::min(y, window.radius));
            lines.outLines[k] = dst + k * dstStride;
        }
        const hn::ScalableTag<uint8_t> d;
        ForEachVector([&](size_t at, Element* sums)
                          KORVANE_INLINE { BoxSums<kDivision>::Run(d, window, always, lines, steps, at, sums); });
    }

    void Start() {
        const hn::ScalableTag<uint8_t> d;
        const uint8_t* first = m_RowAt(0);
        ForEachVector([&](size_t at, Element* sums) KORVANE_INLINE {
            BoxSums<kDivision>::Start(d, m_Window, sums);
            BoxSums<kDivision>::Add(d, first + at, m_Window.radius + 1, sums);
        });
        // A window that reaches below the image counts nothing there.
        for (size_t i = 1; i <= std::min(m_Window.radius, m_Height - 1); ++i) {
            const uint8_t* row = m_RowAt(i);
            ForEachVector([&](size_t at, Element* sums)
                              KORVANE_INLINE { BoxSums<kDivision>::Add(d, row + at, 1, sums); });
        }
    }

    // The last vector ends with the row. Bytes that are in two vectors have two sums.
    template <typename Body>
    HWY_INLINE void ForEachVector(const Body& body) {
        const size_t step = LeastRowBytes();
        const size_t rowBytes = m_RowBytes;
        Element* const sums = m_Sums;
        const size_t done = ForWholeSteps(0, rowBytes, step, [&](size_t at) KORVANE_INLINE { body(at, sums + at); });
        if (done < rowBytes) {
            body(rowBytes - step, sums + done);
        }
    }

    const BoxWindow& m_Window;
    size_t m_RowBytes;
    size_t m_Height;
    uint32_t m_Always;
    const RowAt& m_RowAt;
    Element* m_Sums;
    size_t m_Done = 0;
};

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
