#include "algorithms/stack_blur.h"

#include <hwy/cache_control.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "algorithms/stack_blur_scalar.h"
#include "algorithms/stack_blur_tables.h"

// With P(i) the pixels of a line and S(i) the weighted sum at i, the slope F(i) = S(i + 1) - S(i) is itself a sliding
// sum, and F(i + 1) - F(i) = P(i - r) - 2 * P(i + 1) + P(i + r + 2). So a step is two additions a channel, and the
// pixels behind the centre need keeping only until they leave the window. Lanes are lines: the columns of the image in
// the vertical pass, and in the horizontal one a band of rows that is transposed on its way in and out.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/stack_blur.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that it reads.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

void StackBlur(unsigned char* src, size_t w, size_t h, size_t radius) {
    stack_blur_scalar(src, static_cast<int>(w), static_cast<int>(h), static_cast<int>(radius));
}

#else

namespace hn = hwy::HWY_NAMESPACE;

constexpr size_t kBlockLanes = 4;
// Bands are transposed in blocks of 128 bits, so vectors whose size is known only at run time use their first block.
#if HWY_HAVE_SCALABLE
constexpr size_t kMaxLanes = kBlockLanes;
#else
constexpr size_t kMaxLanes = 16;
#endif
using PixelTag = hn::CappedTag<uint32_t, kMaxLanes>;
using Pixels = hn::Vec<PixelTag>;
constexpr size_t kLanes = hn::MaxLanes(PixelTag());
constexpr size_t kVectorBytes = kLanes * 4;

// One lane of each member is the state of one line; arrays of vectors do not exist on every target.
#define KORVANE_SUMS_PARAMETERS Pixels &sum0, Pixels &sum1, Pixels &sum2, Pixels &slope0, Pixels &slope1, Pixels &slope2
#define KORVANE_SUMS sum0, sum1, sum2, slope0, slope1, slope2

// The multiplier is scaled so that the result stands in the highest byte of the product, for every radius.
HWY_INLINE Pixels Blurred(Pixels sum0, Pixels sum1, Pixels sum2, Pixels multiplier, Pixels centre) {
    const PixelTag d;
    const Pixels byte0 = hn::ShiftRight<24>(hn::Mul(sum0, multiplier));
    const Pixels byte1 = hn::And(hn::ShiftRight<16>(hn::Mul(sum1, multiplier)), hn::Set(d, 0x0000FF00));
    const Pixels byte2 = hn::And(hn::ShiftRight<8>(hn::Mul(sum2, multiplier)), hn::Set(d, 0x00FF0000));
    const Pixels byte3 = hn::And(centre, hn::Set(d, 0xFF000000));
    return hn::Or(hn::Or(byte0, byte1), hn::Or(byte2, byte3));
}

// The three terms fit 16 bits together, so bytes 0 and 2 share one vector of 16-bit lanes.
HWY_INLINE void Advance(Pixels leaving, Pixels next, Pixels entering, KORVANE_SUMS_PARAMETERS) {
    const PixelTag d;
    const hn::RebindToSigned<PixelTag> dSigned;
    const hn::Repartition<uint16_t, PixelTag> dHalf;
    const auto lowByte = hn::Set(dHalf, 0x00FF);
    const auto even = [&](Pixels pixels) HWY_ATTR { return hn::And(hn::BitCast(dHalf, pixels), lowByte); };
    const auto odd = [&](Pixels pixels) HWY_ATTR { return hn::ShiftRight<8>(hn::BitCast(dHalf, pixels)); };
    const auto nextEven = even(next);
    const auto nextOdd = odd(next);
    const auto bend02 =
        hn::BitCast(dSigned, hn::Add(hn::Sub(even(leaving), nextEven), hn::Sub(even(entering), nextEven)));
    const auto bend13 = hn::BitCast(dSigned, hn::Add(hn::Sub(odd(leaving), nextOdd), hn::Sub(odd(entering), nextOdd)));
    sum0 = hn::Add(sum0, slope0);
    sum1 = hn::Add(sum1, slope1);
    sum2 = hn::Add(sum2, slope2);
    slope0 = hn::Add(slope0, hn::BitCast(d, hn::ShiftRight<16>(hn::ShiftLeft<16>(bend02))));
    slope1 = hn::Add(slope1, hn::BitCast(d, hn::ShiftRight<16>(hn::ShiftLeft<16>(bend13))));
    slope2 = hn::Add(slope2, hn::BitCast(d, hn::ShiftRight<16>(bend02)));
}

HWY_INLINE Pixels Byte0(Pixels pixels) {
    return hn::And(pixels, hn::Set(PixelTag(), 0xFF));
}

HWY_INLINE Pixels Byte1(Pixels pixels) {
    return Byte0(hn::ShiftRight<8>(pixels));
}

HWY_INLINE Pixels Byte2(Pixels pixels) {
    return Byte0(hn::ShiftRight<16>(pixels));
}

// The state r + 1 steps before the first pixel, where the window sees nothing but its repetitions.
HWY_INLINE void Start(Pixels first, uint32_t weights, KORVANE_SUMS_PARAMETERS) {
    const PixelTag d;
    const Pixels all = hn::Set(d, weights);
    sum0 = hn::Mul(Byte0(first), all);
    sum1 = hn::Mul(Byte1(first), all);
    sum2 = hn::Mul(Byte2(first), all);
    slope0 = slope1 = slope2 = hn::Zero(d);
}

// A step of which nothing but repetitions of the first pixel leaves or passes the centre.
HWY_INLINE void AdvanceBeforeStart(Pixels first, Pixels entering, KORVANE_SUMS_PARAMETERS) {
    sum0 = hn::Add(sum0, slope0);
    sum1 = hn::Add(sum1, slope1);
    sum2 = hn::Add(sum2, slope2);
    slope0 = hn::Add(slope0, hn::Sub(Byte0(entering), Byte0(first)));
    slope1 = hn::Add(slope1, hn::Sub(Byte1(entering), Byte1(first)));
    slope2 = hn::Add(slope2, hn::Sub(Byte2(entering), Byte2(first)));
}

struct Kernel {
    explicit Kernel(size_t r)
        : radius(r),
          weights(static_cast<uint32_t>((r + 1) * (r + 1))),
          multiplier(uint32_t{stackblur_mul[r]} << (24 - stackblur_shr[r])) {}

    size_t radius;
    uint32_t weights;
    uint32_t multiplier;
};

HWY_INLINE Pixels LoadBytes(const unsigned char* from) {
    const hn::Repartition<uint8_t, PixelTag> dByte;
    return hn::BitCast(PixelTag(), hn::LoadU(dByte, from));
}

HWY_INLINE void StoreBytes(Pixels pixels, unsigned char* to) {
    const hn::Repartition<uint8_t, PixelTag> dByte;
    hn::StoreU(hn::BitCast(dByte, pixels), dByte, to);
}

// ---- Horizontal pass ----

// The rows of one band. A band at the lower edge repeats the last row: its lanes then write equal bytes twice.
struct Band {
    Band(unsigned char* image, size_t w, size_t h, size_t y) {
        for (size_t i = 0; i < kLanes; ++i) {
            rows[i] = image + std::min(y + i, h - 1) * w * 4;
        }
    }
    unsigned char* rows[kLanes];
};

// Four pixels of every fourth row, beginning with row `k`: one block a row.
template <size_t kSize>
HWY_INLINE hn::Vec<hn::CappedTag<uint8_t, kSize> > LoadBlocks(unsigned char* const* rows, size_t offset) {
    const hn::CappedTag<uint8_t, kSize> d;
    if constexpr (kSize == 16) {
        return hn::LoadU(d, rows[0] + offset);
    } else {
        constexpr size_t kHalf = kSize / 2;
        return hn::Combine(d, LoadBlocks<kHalf>(rows + kHalf / 4, offset), LoadBlocks<kHalf>(rows, offset));
    }
}

template <size_t kSize>
HWY_INLINE void StoreBlocks(hn::Vec<hn::CappedTag<uint8_t, kSize> > bytes, unsigned char* const* rows, size_t offset) {
    if constexpr (kSize == 16) {
        hn::StoreU(bytes, hn::CappedTag<uint8_t, kSize>(), rows[0] + offset);
    } else {
        constexpr size_t kHalf = kSize / 2;
        StoreBlocks<kHalf>(hn::LowerHalf(bytes), rows, offset);
        StoreBlocks<kHalf>(hn::UpperHalf(hn::CappedTag<uint8_t, kHalf>(), bytes), rows + kHalf / 4, offset);
    }
}

HWY_INLINE void TransposeInBlocks(Pixels& a, Pixels& b, Pixels& c, Pixels& e) {
    const PixelTag d;
    const hn::Repartition<uint64_t, PixelTag> dWide;
    const auto abLow = hn::BitCast(dWide, hn::InterleaveLower(d, a, b));
    const auto abHigh = hn::BitCast(dWide, hn::InterleaveUpper(d, a, b));
    const auto ceLow = hn::BitCast(dWide, hn::InterleaveLower(d, c, e));
    const auto ceHigh = hn::BitCast(dWide, hn::InterleaveUpper(d, c, e));
    a = hn::BitCast(d, hn::InterleaveLower(dWide, abLow, ceLow));
    b = hn::BitCast(d, hn::InterleaveUpper(dWide, abLow, ceLow));
    c = hn::BitCast(d, hn::InterleaveLower(dWide, abHigh, ceHigh));
    e = hn::BitCast(d, hn::InterleaveUpper(dWide, abHigh, ceHigh));
}

// kLanes columns from pixel `x` of each row, as one vector a column.
HWY_INLINE void LoadColumns(unsigned char* const* rows, size_t x, uint32_t* columns) {
    const PixelTag d;
    for (size_t i = 0; i < kLanes; i += kBlockLanes) {
        const size_t offset = (x + i) * 4;
        Pixels a = hn::BitCast(d, LoadBlocks<kVectorBytes>(rows, offset));
        Pixels b = hn::BitCast(d, LoadBlocks<kVectorBytes>(rows + 1, offset));
        Pixels c = hn::BitCast(d, LoadBlocks<kVectorBytes>(rows + 2, offset));
        Pixels e = hn::BitCast(d, LoadBlocks<kVectorBytes>(rows + 3, offset));
        TransposeInBlocks(a, b, c, e);
        hn::Store(a, d, columns + i * kLanes);
        hn::Store(b, d, columns + (i + 1) * kLanes);
        hn::Store(c, d, columns + (i + 2) * kLanes);
        hn::Store(e, d, columns + (i + 3) * kLanes);
    }
}

HWY_INLINE void StoreColumns(const uint32_t* columns, unsigned char* const* rows, size_t x) {
    const PixelTag d;
    const hn::Repartition<uint8_t, PixelTag> dByte;
    for (size_t i = 0; i < kLanes; i += kBlockLanes) {
        Pixels a = hn::Load(d, columns + i * kLanes);
        Pixels b = hn::Load(d, columns + (i + 1) * kLanes);
        Pixels c = hn::Load(d, columns + (i + 2) * kLanes);
        Pixels e = hn::Load(d, columns + (i + 3) * kLanes);
        TransposeInBlocks(a, b, c, e);
        const size_t offset = (x + i) * 4;
        StoreBlocks<kVectorBytes>(hn::BitCast(dByte, a), rows, offset);
        StoreBlocks<kVectorBytes>(hn::BitCast(dByte, b), rows + 1, offset);
        StoreBlocks<kVectorBytes>(hn::BitCast(dByte, c), rows + 2, offset);
        StoreBlocks<kVectorBytes>(hn::BitCast(dByte, e), rows + 3, offset);
    }
}

// The columns of a band that the window can see, as a ring of vectors. Column j stands in slot j modulo the ring's
// length, and beyond the right edge the last column repeats.
class ColumnRing {
  public:
    ColumnRing(size_t radius, size_t w) : m_Width(w), m_Slots((2 * radius + 2 + 3 * kLanes - 1) / kLanes * kLanes) {}

    size_t slots() const { return m_Slots; }
    size_t loaded() const { return m_Loaded; }
    uint32_t* at(size_t slot) { return m_Columns + slot * kLanes; }

    void clear() { m_Loaded = m_NextSlot = 0; }

    HWY_INLINE void load_next(const Band& band) {
        uint32_t* columns = at(m_NextSlot);
        if (m_Loaded + kLanes <= m_Width) {
            LoadColumns(band.rows, m_Loaded, columns);
        } else {
            load_edge(band, columns);
        }
        m_Loaded += kLanes;
        m_NextSlot = m_NextSlot + kLanes == m_Slots ? 0 : m_NextSlot + kLanes;
    }

  private:
    void load_edge(const Band& band, uint32_t* columns) {
        const size_t inside = m_Loaded < m_Width ? m_Width - m_Loaded : 0;
        for (size_t i = 0; i < kLanes; ++i) {
            const size_t x = i < inside ? m_Loaded + i : m_Width - 1;
            for (size_t row = 0; row < kLanes; ++row) {
                std::memcpy(columns + i * kLanes + row, band.rows[row] + x * 4, 4);
            }
        }
    }

    size_t m_Width;
    size_t m_Slots;
    size_t m_Loaded = 0;
    size_t m_NextSlot = 0;
    HWY_ALIGN uint32_t m_Columns[(2 * kStackBlurMaxRadius + 2 + 3 * kLanes) * kLanes];
};

HWY_INLINE size_t Following(size_t slot, size_t slots) {
    return slot + 1 == slots ? 0 : slot + 1;
}

HWY_NOINLINE void BlurBand(const Band& band, size_t w, const Kernel& kernel, ColumnRing& ring) {
    const PixelTag d;
    const size_t radius = kernel.radius;
    ring.clear();
    while (ring.loaded() < radius + 2) {
        ring.load_next(band);
    }
    const Pixels first = hn::Load(d, ring.at(0));
    for (size_t i = 1; i <= radius; ++i) {
        hn::Store(first, d, ring.at(ring.slots() - i));
    }
    Pixels sum0, sum1, sum2, slope0, slope1, slope2;
    Start(first, kernel.weights, KORVANE_SUMS);
    for (size_t i = 1; i <= radius + 1; ++i) {
        AdvanceBeforeStart(first, hn::Load(d, ring.at(i)), KORVANE_SUMS);
    }
    const Pixels multiplier = hn::Set(d, kernel.multiplier);
    Pixels centre = first;
    size_t leavingSlot = radius == 0 ? 0 : ring.slots() - radius;
    size_t nextSlot = 1;
    size_t enteringSlot = radius + 2;
    HWY_ALIGN uint32_t blurred[kLanes * kLanes];
    for (size_t x = 0; x < w; x += kLanes) {
        while (ring.loaded() < x + kLanes + radius + 2) {
            ring.load_next(band);
        }
        for (size_t i = 0; i < kLanes; ++i) {
            hn::Store(Blurred(sum0, sum1, sum2, multiplier, centre), d, blurred + i * kLanes);
            centre = hn::Load(d, ring.at(nextSlot));
            Advance(hn::Load(d, ring.at(leavingSlot)), centre, hn::Load(d, ring.at(enteringSlot)), KORVANE_SUMS);
            leavingSlot = Following(leavingSlot, ring.slots());
            nextSlot = Following(nextSlot, ring.slots());
            enteringSlot = Following(enteringSlot, ring.slots());
        }
        if (x + kLanes <= w) {
            StoreColumns(blurred, band.rows, x);
            continue;
        }
        for (size_t i = 0; x + i < w; ++i) {
            for (size_t row = 0; row < kLanes; ++row) {
                std::memcpy(band.rows[row] + (x + i) * 4, blurred + i * kLanes + row, 4);
            }
        }
    }
}

HWY_NOINLINE void BlurRows(unsigned char* image, size_t w, size_t h, const Kernel& kernel) {
    ColumnRing ring(kernel.radius, w);
    for (size_t y = 0; y < h; y += kLanes) {
        BlurBand(Band(image, w, h, y), w, kernel, ring);
    }
}

// ---- Vertical pass ----

// A block of columns is walked together: wide enough that a row of it spans whole pages' worth of cache lines, narrow
// enough that its part of the ring and of the rows in the window stay in the caches.
constexpr size_t kMaxBlockBytes = 1024;
constexpr size_t kMaxRingBytes = 128 * 1024;
constexpr size_t kRowsAtOnce = 8;
constexpr size_t kRowsAhead = 8;

struct Column {
    HWY_ALIGN uint32_t state[7][kLanes];
};

struct Columns {
    Column column[kMaxBlockBytes / kVectorBytes];
    HWY_ALIGN unsigned char ring[kMaxRingBytes];
};

struct WholeVector {
    HWY_INLINE Pixels load(const unsigned char* from) const { return LoadBytes(from); }
    HWY_INLINE void store(Pixels pixels, unsigned char* to) const { StoreBytes(pixels, to); }
};

// The last columns of an image whose width is no multiple of the vector's.
struct PartOfVector {
    size_t bytes;

    HWY_INLINE Pixels load(const unsigned char* from) const {
        HWY_ALIGN unsigned char buffer[kVectorBytes] = {};
        std::memcpy(buffer, from, bytes);
        return LoadBytes(buffer);
    }
    HWY_INLINE void store(Pixels pixels, unsigned char* to) const {
        HWY_ALIGN unsigned char buffer[kVectorBytes];
        StoreBytes(pixels, buffer);
        std::memcpy(to, buffer, bytes);
    }
};

HWY_INLINE void LoadState(const Column& column, Pixels& centre, KORVANE_SUMS_PARAMETERS) {
    const PixelTag d;
    sum0 = hn::Load(d, column.state[0]);
    sum1 = hn::Load(d, column.state[1]);
    sum2 = hn::Load(d, column.state[2]);
    slope0 = hn::Load(d, column.state[3]);
    slope1 = hn::Load(d, column.state[4]);
    slope2 = hn::Load(d, column.state[5]);
    centre = hn::Load(d, column.state[6]);
}

HWY_INLINE void StoreState(Column& column, Pixels centre, KORVANE_SUMS_PARAMETERS) {
    const PixelTag d;
    hn::Store(sum0, d, column.state[0]);
    hn::Store(sum1, d, column.state[1]);
    hn::Store(sum2, d, column.state[2]);
    hn::Store(slope0, d, column.state[3]);
    hn::Store(slope1, d, column.state[4]);
    hn::Store(slope2, d, column.state[5]);
    hn::Store(centre, d, column.state[6]);
}

// One block of columns: where it begins in the image, and how its rows follow each other.
struct Block {
    unsigned char* top;
    size_t strideBytes;
    size_t lastRow;
    size_t ringStrideBytes;

    HWY_INLINE unsigned char* row(size_t y, size_t offset) const { return top + y * strideBytes + offset; }
    HWY_INLINE unsigned char* row_or_last(size_t y, size_t offset) const { return row(HWY_MIN(y, lastRow), offset); }
};

template <class Access>
HWY_INLINE void StartColumn(const Access& access, const Block& block, size_t offset, const Kernel& kernel,
                            Columns& columns) {
    const Pixels first = access.load(block.row(0, offset));
    Pixels sum0, sum1, sum2, slope0, slope1, slope2;
    Start(first, kernel.weights, KORVANE_SUMS);
    for (size_t i = 1; i <= kernel.radius + 1; ++i) {
        AdvanceBeforeStart(first, access.load(block.row_or_last(i, offset)), KORVANE_SUMS);
    }
    StoreState(columns.column[offset / kVectorBytes], first, KORVANE_SUMS);
    for (size_t slot = 0; slot <= kernel.radius; ++slot) {
        StoreBytes(first, columns.ring + slot * block.ringStrideBytes + offset);
    }
}

template <class Access>
HWY_INLINE void BlurColumn(const Access& access, const Block& block, size_t offset, size_t y, size_t rows, size_t slot,
                           const Kernel& kernel, Columns& columns) {
    const PixelTag d;
    Column& column = columns.column[offset / kVectorBytes];
    Pixels centre, sum0, sum1, sum2, slope0, slope1, slope2;
    LoadState(column, centre, KORVANE_SUMS);
    const Pixels multiplier = hn::Set(d, kernel.multiplier);
    for (size_t end = y + rows; y < end; ++y) {
        access.store(Blurred(sum0, sum1, sum2, multiplier, centre), block.row(y, offset));
        centre = access.load(block.row_or_last(y + 1, offset));
        const unsigned char* entering = block.row_or_last(y + kernel.radius + 2, offset);
        hwy::Prefetch(block.row_or_last(y + kernel.radius + 2 + kRowsAhead, offset));
        unsigned char* kept = columns.ring + slot * block.ringStrideBytes + offset;
        const Pixels leaving = LoadBytes(kept);
        StoreBytes(centre, kept);
        slot = Following(slot, kernel.radius + 1);
        Advance(leaving, centre, access.load(entering), KORVANE_SUMS);
    }
    StoreState(column, centre, KORVANE_SUMS);
}

HWY_NOINLINE void BlurBlock(const Block& block, size_t bytes, const Kernel& kernel, Columns& columns) {
    const size_t whole = bytes / kVectorBytes * kVectorBytes;
    const PartOfVector part{bytes - whole};
    for (size_t offset = 0; offset < whole; offset += kVectorBytes) {
        StartColumn(WholeVector(), block, offset, kernel, columns);
    }
    if (part.bytes != 0) {
        StartColumn(part, block, whole, kernel, columns);
    }
    const size_t h = block.lastRow + 1;
    size_t slot = 0;
    for (size_t y = 0; y < h; y += kRowsAtOnce) {
        const size_t rows = HWY_MIN(kRowsAtOnce, h - y);
        for (size_t offset = 0; offset < whole; offset += kVectorBytes) {
            BlurColumn(WholeVector(), block, offset, y, rows, slot, kernel, columns);
        }
        if (part.bytes != 0) {
            BlurColumn(part, block, whole, y, rows, slot, kernel, columns);
        }
        slot = (slot + rows) % (kernel.radius + 1);
    }
}

HWY_NOINLINE void BlurColumns(unsigned char* image, size_t w, size_t h, const Kernel& kernel) {
    Columns columns;
    const size_t rowBytes = w * 4;
    const size_t blockBytes =
        kMaxBlockBytes * (kernel.radius + 1) <= kMaxRingBytes ? kMaxBlockBytes : kMaxBlockBytes / 2;
    for (size_t x = 0; x < rowBytes; x += blockBytes) {
        const Block block{image + x, rowBytes, h - 1, blockBytes};
        BlurBlock(block, HWY_MIN(blockBytes, rowBytes - x), kernel, columns);
    }
}

void StackBlur(unsigned char* src, size_t w, size_t h, size_t radius) {
    const Kernel kernel(radius);
    BlurRows(src, w, h, kernel);
    BlurColumns(src, w, h, kernel);
}

#undef KORVANE_SUMS
#undef KORVANE_SUMS_PARAMETERS

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
HWY_EXPORT(StackBlur);
}  // namespace korvane

void stack_blur(unsigned char* src, int w, int h, int radius) {
    radius = std::clamp(radius, 0, kStackBlurMaxRadius);
    if (w < 1 || h < 1 || radius == 0) {
        return;
    }
    HWY_DYNAMIC_DISPATCH(korvane::StackBlur)
    (src, static_cast<size_t>(w), static_cast<size_t>(h), static_cast<size_t>(radius));
}

#endif
