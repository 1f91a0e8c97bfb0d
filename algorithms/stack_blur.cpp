// SPDX-License-Identifier: Apache-2.0
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
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/pixels-inl.h"
#include "frameworks/simd/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

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

// One lane of each is the state of one line. Not a struct: SVE has no vectors in structs or arrays.
#define KORVANE_SUMS_PARAMETERS Pixels &sum0, Pixels &sum1, Pixels &sum2, Pixels &slope0, Pixels &slope1, Pixels &slope2
#define KORVANE_SUMS sum0, sum1, sum2, slope0, slope1, slope2

// The multiplier is scaled so that the result stands in the highest byte of the product, for every radius.
HWY_INLINE Pixels Blurred(Pixels sum0, Pixels sum1, Pixels sum2, Pixels multiplier, Pixels centre) {
    return HighestBytes(hn::Mul(sum0, multiplier), hn::Mul(sum1, multiplier), hn::Mul(sum2, multiplier), centre);
}

HWY_INLINE void Advance(Pixels leaving, Pixels next, Pixels entering, KORVANE_SUMS_PARAMETERS) {
    sum0 = hn::Add(sum0, slope0);
    sum1 = hn::Add(sum1, slope1);
    sum2 = hn::Add(sum2, slope2);
    AddSecondDifference(leaving, next, entering, slope0, slope1, slope2);
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

// The state r + 1 steps before the first pixel, where the window sees only repetitions of that pixel.
HWY_INLINE void Start(Pixels first, uint32_t weights, KORVANE_SUMS_PARAMETERS) {
    const PixelTag d;
    const Pixels all = hn::Set(d, weights);
    sum0 = hn::Mul(Byte0(first), all);
    sum1 = hn::Mul(Byte1(first), all);
    sum2 = hn::Mul(Byte2(first), all);
    slope0 = slope1 = slope2 = hn::Zero(d);
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

// kLanes columns from pixel `x` on, as one vector a column. Each row is touched once and as a whole: where rows lie a
// power of two apart, their cache lines drive each other out at once.
HWY_INLINE void LoadColumns(const Band& band, size_t x, uint32_t* columns) {
    const PixelTag d;
    HWY_ALIGN uint32_t tile[kLanes * kLanes];
    for (size_t i = 0; i < kLanes; i += kBlockLanes) {
        Pixels a = LoadBytes(band.rows[i] + x * 4);
        Pixels b = LoadBytes(band.rows[i + 1] + x * 4);
        Pixels c = LoadBytes(band.rows[i + 2] + x * 4);
        Pixels e = LoadBytes(band.rows[i + 3] + x * 4);
        TransposeInBlocks(d, a, b, c, e);
        hn::Store(a, d, tile + i * kLanes);
        hn::Store(b, d, tile + (i + 1) * kLanes);
        hn::Store(c, d, tile + (i + 2) * kLanes);
        hn::Store(e, d, tile + (i + 3) * kLanes);
    }
    TransposeBlocks(d, tile, columns);
}

HWY_INLINE void StoreColumns(const uint32_t* columns, const Band& band, size_t x) {
    const PixelTag d;
    HWY_ALIGN uint32_t tile[kLanes * kLanes];
    TransposeBlocks(d, columns, tile);
    for (size_t i = 0; i < kLanes; i += kBlockLanes) {
        Pixels a = hn::Load(d, tile + i * kLanes);
        Pixels b = hn::Load(d, tile + (i + 1) * kLanes);
        Pixels c = hn::Load(d, tile + (i + 2) * kLanes);
        Pixels e = hn::Load(d, tile + (i + 3) * kLanes);
        TransposeInBlocks(d, a, b, c, e);
        StoreBytes(a, band.rows[i] + x * 4);
        StoreBytes(b, band.rows[i + 1] + x * 4);
        StoreBytes(c, band.rows[i + 2] + x * 4);
        StoreBytes(e, band.rows[i + 3] + x * 4);
    }
}

// The columns of a band that the window can see, as a ring of vectors. Column j stands in slot j modulo the ring's
// length. The first `lead` columns are repetitions of the first pixel: they change no result and align the others with
// the cache lines. Beyond the right edge the last pixel repeats.
//
// Stored pixels are bytes, and so, for the compiler, may lie in any object whose address is known elsewhere. BlurBand
// therefore works on copies of its own, and the functions that are not part of it take the band by value.
class ColumnRing {
  public:
    ColumnRing(size_t radius, size_t lead, size_t w, uint32_t* columns)
        : m_Lead(lead), m_Width(w), m_Slots((2 * radius + 2 + 3 * kLanes - 1) / kLanes * kLanes), m_Columns(columns) {}

    size_t slots() const { return m_Slots; }
    size_t loaded() const { return m_Loaded; }
    uint32_t* at(size_t slot) { return m_Columns + slot * kLanes; }

    // Whether the next kLanes columns, and those from column `first` on, all stand in the image.
    bool next_is_whole() const { return is_whole(m_Loaded); }
    bool is_whole(size_t first) const { return first >= m_Lead && first + kLanes <= m_Lead + m_Width; }

    HWY_INLINE void load_whole(const Band& band) {
        LoadColumns(band, m_Loaded - m_Lead, at(m_NextSlot));
        advance();
    }

    HWY_INLINE void load_next(const Band& band) {
        if (next_is_whole()) {
            LoadColumns(band, m_Loaded - m_Lead, at(m_NextSlot));
        } else if (m_Loaded < m_Lead + m_Width) {
            load_edge(band, m_Loaded, m_Lead, m_Width, at(m_NextSlot));
        } else {
            repeat(at((m_NextSlot == 0 ? m_Slots : m_NextSlot) - 1), at(m_NextSlot));
        }
        advance();
    }

    HWY_INLINE void store_whole(const uint32_t* columns, size_t first, const Band& band) const {
        StoreColumns(columns, band, first - m_Lead);
    }

    HWY_INLINE void store(const uint32_t* columns, size_t first, const Band& band) const {
        if (is_whole(first)) {
            store_whole(columns, first, band);
        } else {
            store_edge(columns, first, m_Lead, m_Width, band);
        }
    }

    // kLanes slots further. The first kLanes slots stand behind the last one once more, so that as many can be read
    // from any slot on.
    HWY_INLINE size_t following(size_t slot) const {
        const size_t next = slot + kLanes;
        return next >= m_Slots ? next - m_Slots : next;
    }

  private:
    HWY_INLINE void advance() {
        if (m_NextSlot == 0) {
            const PixelTag d;
            for (size_t i = 0; i < kLanes; ++i) {
                hn::Store(hn::Load(d, at(i)), d, at(m_Slots + i));
            }
        }
        m_Loaded += kLanes;
        m_NextSlot = following(m_NextSlot);
    }

    static void repeat(const uint32_t* column, uint32_t* columns) {
        const PixelTag d;
        const Pixels last = hn::Load(d, column);
        for (size_t i = 0; i < kLanes; ++i) {
            hn::Store(last, d, columns + i * kLanes);
        }
    }

    static HWY_NOINLINE void load_edge(Band band, size_t first, size_t lead, size_t width, uint32_t* columns) {
        for (size_t i = 0; i < kLanes; ++i) {
            const size_t x = std::clamp(first + i, lead, lead + width - 1) - lead;
            for (size_t row = 0; row < kLanes; ++row) {
                std::memcpy(columns + i * kLanes + row, band.rows[row] + x * 4, 4);
            }
        }
    }

    static HWY_NOINLINE void store_edge(const uint32_t* columns, size_t first, size_t lead, size_t width, Band band) {
        const size_t end = std::min(first + kLanes, lead + width);
        for (size_t at = std::max(first, lead); at < end; ++at) {
            for (size_t row = 0; row < kLanes; ++row) {
                std::memcpy(band.rows[row] + (at - lead) * 4, columns + (at - first) * kLanes + row, 4);
            }
        }
    }

    size_t m_Lead;
    size_t m_Width;
    size_t m_Slots;
    size_t m_Loaded = 0;
    size_t m_NextSlot = 0;
    uint32_t* m_Columns;
};

// As many lanes as the ring of any radius has.
constexpr size_t kRingLanes = (2 * kStackBlurMaxRadius + 2 + 4 * kLanes) * kLanes;

HWY_NOINLINE void BlurBand(const Band& rows, size_t lead, size_t w, const Kernel& kernel, uint32_t* ringColumns) {
    const PixelTag d;
    const Band band = rows;
    const size_t radius = kernel.radius;
    ColumnRing ring(radius, lead, w, ringColumns);
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
        Advance(first, first, hn::Load(d, ring.at(i)), KORVANE_SUMS);
    }
    const Pixels multiplier = hn::Set(d, kernel.multiplier);
    Pixels centre = first;
    size_t leavingSlot = ring.slots() - radius;
    size_t nextSlot = 1;
    size_t enteringSlot = radius + 2;
    HWY_ALIGN uint32_t blurred[kLanes * kLanes];
    const auto step = [&]() KORVANE_INLINE {
        const uint32_t* leaving = ring.at(leavingSlot);
        const uint32_t* next = ring.at(nextSlot);
        const uint32_t* entering = ring.at(enteringSlot);
        for (size_t i = 0; i < kLanes * kLanes; i += kLanes) {
            hn::Store(Blurred(sum0, sum1, sum2, multiplier, centre), d, blurred + i);
            centre = hn::Load(d, next + i);
            Advance(hn::Load(d, leaving + i), centre, hn::Load(d, entering + i), KORVANE_SUMS);
        }
        leavingSlot = ring.following(leavingSlot);
        nextSlot = ring.following(nextSlot);
        enteringSlot = ring.following(enteringSlot);
    };
    // The loop inside calls no function, so that the sums stay in registers.
    for (size_t x = 0; x < lead + w; x += kLanes) {
        for (; ring.next_is_whole() && ring.is_whole(x); x += kLanes) {
            ring.load_whole(band);
            step();
            ring.store_whole(blurred, x, band);
        }
        ring.load_next(band);
        step();
        ring.store(blurred, x, band);
    }
}

// How many bytes `image` lies behind the boundary of a vector. 0 where pixels lie across such boundaries, since
// alignment does not help there.
HWY_INLINE size_t BytesBehindBoundary(const unsigned char* image) {
    const size_t behind = reinterpret_cast<uintptr_t>(image) % kVectorBytes;
    return behind % 4 == 0 ? behind : 0;
}

HWY_NOINLINE void BlurRows(unsigned char* image, size_t w, size_t h, const Kernel& kernel) {
    const size_t lead = w * 4 % kVectorBytes == 0 ? BytesBehindBoundary(image) / 4 : 0;
    HWY_ALIGN uint32_t ring[kRingLanes];
    for (size_t y = 0; y < h; y += kLanes) {
        BlurBand(Band(image, w, h, y), lead, w, kernel, ring);
    }
}

// ---- Vertical pass ----

// A block of columns is walked together: wide enough to use many cache lines of each page that it enters, narrow enough
// that its ring and its rows in the window stay in the second-level cache.
constexpr size_t kMaxBlockBytes = 1024;
constexpr size_t kMaxRingBytes = size_t{128} * 1024;
static_assert(kMaxBlockBytes / 2 * (kStackBlurMaxRadius + 1) <= kMaxRingBytes);
constexpr size_t kRowsAtOnce = 4;
constexpr size_t kRowsAhead = 4;

struct Column {
    HWY_ALIGN uint32_t state[7][kLanes];
};

// The working memory of a block. The ring keeps the rows behind the centre, which are overwritten in the image; the
// others are read from the image.
struct Columns {
    Column column[kMaxBlockBytes / kVectorBytes];
    HWY_ALIGN unsigned char ring[kMaxRingBytes];
};

struct WholeVector {
    HWY_INLINE Pixels load(const unsigned char* from) const { return LoadBytes(from); }
    HWY_INLINE void store(Pixels pixels, unsigned char* to) const { StoreBytes(pixels, to); }
};

// The columns on either side of an image that do not fill a vector: nothing beside them may be touched.
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
        Advance(first, first, access.load(block.row_or_last(i, offset)), KORVANE_SUMS);
    }
    StoreState(columns.column[offset / kVectorBytes], first, KORVANE_SUMS);
    for (size_t slot = 0; slot <= kernel.radius; ++slot) {
        StoreBytes(first, columns.ring + slot * block.ringStrideBytes + offset);
    }
}

// Where kRows steps of a block read and write, at its first column.
template <size_t kRows>
struct Rows {
    HWY_INLINE Rows(const Block& block, size_t y, size_t slot, size_t radius, unsigned char* ring) {
        for (size_t i = 0; i < kRows; ++i) {
            const size_t enteringRow = y + i + radius + 2;
            blurred[i] = block.row(y + i, 0);
            next[i] = block.row_or_last(y + i + 1, 0);
            entering[i] = block.row_or_last(enteringRow, 0);
            ahead[i] = block.row_or_last(enteringRow + kRowsAhead, 0);
            kept[i] = ring + slot * block.ringStrideBytes;
            slot = slot == radius ? 0 : slot + 1;
        }
    }

    unsigned char* blurred[kRows];
    const unsigned char* next[kRows];
    const unsigned char* entering[kRows];
    const unsigned char* ahead[kRows];
    unsigned char* kept[kRows];
};

// All rows are read before the first is written: processors make a load wait for an earlier store when their addresses
// differ by a multiple of 4096, as those of neighbouring rows may.
template <size_t kRows, class Access>
HWY_INLINE void BlurColumn(const Access& access, const Rows<kRows>& rows, size_t offset, Pixels multiplier,
                           Columns& columns) {
    const PixelTag d;
    Column& column = columns.column[offset / kVectorBytes];
    Pixels centre, sum0, sum1, sum2, slope0, slope1, slope2;
    LoadState(column, centre, KORVANE_SUMS);
    HWY_ALIGN uint32_t blurred[kRows][kLanes];
    for (size_t i = 0; i < kRows; ++i) {
        hn::Store(Blurred(sum0, sum1, sum2, multiplier, centre), d, blurred[i]);
        centre = access.load(rows.next[i] + offset);
        hwy::Prefetch(rows.ahead[i] + offset);
        const Pixels leaving = LoadBytes(rows.kept[i] + offset);
        StoreBytes(centre, rows.kept[i] + offset);
        Advance(leaving, centre, access.load(rows.entering[i] + offset), KORVANE_SUMS);
    }
    for (size_t i = 0; i < kRows; ++i) {
        access.store(hn::Load(d, blurred[i]), rows.blurred[i] + offset);
    }
    StoreState(column, centre, KORVANE_SUMS);
}

template <size_t kRows>
HWY_INLINE void BlurRowsOfBlock(const Block& block, size_t bytes, size_t y, size_t slot, const Kernel& kernel,
                                Columns& columns) {
    const Rows<kRows> rows(block, y, slot, kernel.radius, columns.ring);
    const Pixels multiplier = hn::Set(PixelTag(), kernel.multiplier);
    size_t offset = 0;
    for (; offset + kVectorBytes <= bytes; offset += kVectorBytes) {
        BlurColumn(WholeVector(), rows, offset, multiplier, columns);
    }
    if (offset < bytes) {
        BlurColumn(PartOfVector{bytes - offset}, rows, offset, multiplier, columns);
    }
}

HWY_NOINLINE void BlurBlock(const Block& block, size_t bytes, const Kernel& kernel, Columns& columns) {
    size_t offset = 0;
    for (; offset + kVectorBytes <= bytes; offset += kVectorBytes) {
        StartColumn(WholeVector(), block, offset, kernel, columns);
    }
    if (offset < bytes) {
        StartColumn(PartOfVector{bytes - offset}, block, offset, kernel, columns);
    }
    const size_t slots = kernel.radius + 1;
    size_t y = 0;
    for (; y + kRowsAtOnce <= block.lastRow + 1; y += kRowsAtOnce) {
        BlurRowsOfBlock<kRowsAtOnce>(block, bytes, y, y % slots, kernel, columns);
    }
    for (; y <= block.lastRow; ++y) {
        BlurRowsOfBlock<1>(block, bytes, y, y % slots, kernel, columns);
    }
}

HWY_NOINLINE void BlurColumns(unsigned char* image, size_t w, size_t h, const Kernel& kernel) {
    Columns columns;
    const size_t rowBytes = w * 4;
    const bool fits = kMaxBlockBytes * (kernel.radius + 1) <= kMaxRingBytes;
    const size_t blockBytes = fits ? kMaxBlockBytes : kMaxBlockBytes / 2;
    // The first block ends at the boundary of a vector, so that all others are aligned.
    const size_t behind = BytesBehindBoundary(image);
    size_t bytes = behind == 0 ? blockBytes : kVectorBytes - behind;
    for (size_t x = 0; x < rowBytes; x += bytes, bytes = blockBytes) {
        const Block block{image + x, rowBytes, h - 1, blockBytes};
        BlurBlock(block, HWY_MIN(bytes, rowBytes - x), kernel, columns);
    }
}

void StackBlur(unsigned char* src, size_t w, size_t h, size_t radius) {
    const Kernel kernel(radius);
    BlurRows(src, w, h, kernel);
    BlurColumns(src, w, h, kernel);
}

#undef KORVANE_SUMS
#undef KORVANE_SUMS_PARAMETERS

#else

constexpr auto& StackBlur = stack_blur_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(StackBlur);

}  // namespace
}  // namespace korvane

void stack_blur(unsigned char* src, int w, int h, int radius) {
    const int clamped = std::clamp(radius, 0, kStackBlurMaxRadius);
    if (w > 0 && h > 0 && clamped > 0) {
        korvane::StackBlur(src, static_cast<size_t>(w), static_cast<size_t>(h), static_cast<size_t>(clamped));
    }
}

#endif
