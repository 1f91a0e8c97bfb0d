// SPDX-License-Identifier: Apache-2.0
// Vectors of RGB pixels to and from memory, one vector a channel. For kernel files only: included once for each
// instruction set.
#if defined(KORVANE_FRAMEWORKS_SIMD_RGB_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_SIMD_RGB_INL_H_
#undef KORVANE_FRAMEWORKS_SIMD_RGB_INL_H_
#else
#define KORVANE_FRAMEWORKS_SIMD_RGB_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// Each form below brings the same three functions. LoadRgb reads a vector of pixels. ClampedChannel makes bytes of one
// channel's 16-bit values, in the order in which StoreClampedRgb takes them.

#if HWY_TARGET == HWY_AVX3_DL

// Any byte of two vectors goes anywhere in one instruction, and any byte of a third in another.
struct ThreeVectorTable {
    uint8_t fromFirstTwo[64];
    uint8_t fromThird[64];
    uint64_t isFromThird;
};

struct RgbTables {
    ThreeVectorTable toChannel[3];
    ThreeVectorTable toBytes[3];  // from channels as ClampedChannel gives them
};

constexpr RgbTables make_rgb_tables() {
    RgbTables tables{};
    const auto set = [](ThreeVectorTable& table, size_t to, size_t from) {
        if (from < 128) {
            table.fromFirstTwo[to] = static_cast<uint8_t>(from);
        } else {
            table.fromThird[to] = static_cast<uint8_t>(from - 128);
            table.isFromThird |= uint64_t{1} << to;
        }
    };
    for (size_t k = 0; k < 3; ++k) {
        for (size_t j = 0; j < 64; ++j) {
            set(tables.toChannel[k], j, 3 * j + k);
            const size_t channel = (64 * k + j) % 3;
            const size_t pixel = (64 * k + j) / 3;
            set(tables.toBytes[k], j, 64 * channel + pixel / 16 * 16 + pixel % 2 * 8 + pixel % 16 / 2);
        }
    }
    return tables;
}

alignas(64) constexpr RgbTables kRgbTables = make_rgb_tables();

HWY_INLINE ByteVector FromThree(const ThreeVectorTable& table, ByteVector a, ByteVector b, ByteVector c) {
    const ByteTag d;
    const __m512i two = _mm512_permutex2var_epi8(a.raw, hn::LoadU(d, table.fromFirstTwo).raw, b.raw);
    return ByteVector{_mm512_mask_permutexvar_epi8(two, table.isFromThird, hn::LoadU(d, table.fromThird).raw, c.raw)};
}

HWY_INLINE void LoadRgb(const uint8_t* rgb, ByteVector& r, ByteVector& g, ByteVector& b) {
    const ByteTag d;
    const ByteVector bytes0 = hn::LoadU(d, rgb);
    const ByteVector bytes1 = hn::LoadU(d, rgb + 64);
    const ByteVector bytes2 = hn::LoadU(d, rgb + 128);
    r = FromThree(kRgbTables.toChannel[0], bytes0, bytes1, bytes2);
    g = FromThree(kRgbTables.toChannel[1], bytes0, bytes1, bytes2);
    b = FromThree(kRgbTables.toChannel[2], bytes0, bytes1, bytes2);
}

HWY_INLINE ByteVector ClampedChannel(SignedVector evenPixels, SignedVector oddPixels) {
    return ClampedBlocks(evenPixels, oddPixels);
}

HWY_INLINE void StoreClampedRgb(ByteVector r, ByteVector g, ByteVector b, uint8_t* rgb) {
    for (size_t k = 0; k < 3; ++k) {
        hn::StoreU(FromThree(kRgbTables.toBytes[k], r, g, b), ByteTag(), rgb + 64 * k);
    }
}

#elif HWY_ARCH_X86

// There are no instructions here that interleave by three. The 48 bytes of 16 pixels are three blocks, in which byte j
// of block k belongs to channel (k + j) mod 3. So for each j, each channel has one block: blending by j mod 3 parts the
// blocks into channels or joins channels to blocks, and one shuffle a channel orders its bytes. That shuffle also puts
// even and odd pixels together again, which ClampedBlocks leaves apart.
struct RgbTables {
    uint8_t remainder[2][16];  // 255 where j mod 3 is 0, and where it is 1
    uint8_t toPixels[3][16];
    uint8_t fromClamped[3][16];
};

constexpr RgbTables make_rgb_tables() {
    RgbTables tables{};
    for (size_t j = 0; j < 16; ++j) {
        for (size_t remainder = 0; remainder < 2; ++remainder) {
            tables.remainder[remainder][j] = j % 3 == remainder ? 255 : 0;
        }
        for (size_t channel = 0; channel < 3; ++channel) {
            const size_t block = (channel + 15 - j) % 3;
            const size_t pixel = (16 * block + j) / 3;
            tables.toPixels[channel][pixel] = static_cast<uint8_t>(j);
            tables.fromClamped[channel][j] = static_cast<uint8_t>(pixel % 2 * 8 + pixel / 2);
        }
    }
    return tables;
}

HWY_ALIGN constexpr RgbTables kRgbTables = make_rgb_tables();

// The bytes of `zero` where j mod 3 is 0, of `one` where it is 1 and of `two` where it is 2.
HWY_INLINE ByteVector ByRemainder(ByteVector zero, ByteVector one, ByteVector two) {
    const ByteTag d;
    return hn::IfVecThenElse(hn::LoadDup128(d, kRgbTables.remainder[0]), zero,
                             hn::IfVecThenElse(hn::LoadDup128(d, kRgbTables.remainder[1]), one, two));
}

// Blocks lie in memory as a0 b0 c0 a1 b1 c1 and so on.
template <class D, class V>
HWY_INLINE void LoadBlocksInTurn(D d, const uint8_t* from, V& a, V& b, V& c) {
    constexpr size_t kBytes = hn::MaxLanes(D());
    if constexpr (kBytes == 16) {
        a = hn::LoadU(d, from);
        b = hn::LoadU(d, from + 16);
        c = hn::LoadU(d, from + 32);
    } else {
        const hn::Half<D> dHalf;
        hn::Vec<hn::Half<D> > a0, b0, c0, a1, b1, c1;
        LoadBlocksInTurn(dHalf, from, a0, b0, c0);
        LoadBlocksInTurn(dHalf, from + 3 * kBytes / 2, a1, b1, c1);
        a = hn::Combine(d, a1, a0);
        b = hn::Combine(d, b1, b0);
        c = hn::Combine(d, c1, c0);
    }
}

template <class D, class V>
HWY_INLINE void StoreBlocksInTurn(D d, V a, V b, V c, uint8_t* to) {
    constexpr size_t kBytes = hn::MaxLanes(D());
    if constexpr (kBytes == 16) {
        hn::StoreU(a, d, to);
        hn::StoreU(b, d, to + 16);
        hn::StoreU(c, d, to + 32);
    } else if constexpr (kBytes == 32) {
        hn::StoreU(hn::ConcatLowerLower(d, b, a), d, to);
        hn::StoreU(hn::ConcatUpperLower(d, a, c), d, to + 32);
        hn::StoreU(hn::ConcatUpperUpper(d, c, b), d, to + 64);
    } else {
        const hn::Half<D> dHalf;
        StoreBlocksInTurn(dHalf, hn::LowerHalf(dHalf, a), hn::LowerHalf(dHalf, b), hn::LowerHalf(dHalf, c), to);
        StoreBlocksInTurn(dHalf, hn::UpperHalf(dHalf, a), hn::UpperHalf(dHalf, b), hn::UpperHalf(dHalf, c),
                          to + 3 * kBytes / 2);
    }
}

HWY_INLINE void LoadRgb(const uint8_t* rgb, ByteVector& r, ByteVector& g, ByteVector& b) {
    ByteVector block0, block1, block2;
    LoadBlocksInTurn(ByteTag(), rgb, block0, block1, block2);
    r = Shuffled(ByRemainder(block0, block2, block1), kRgbTables.toPixels[0]);
    g = Shuffled(ByRemainder(block1, block0, block2), kRgbTables.toPixels[1]);
    b = Shuffled(ByRemainder(block2, block1, block0), kRgbTables.toPixels[2]);
}

HWY_INLINE ByteVector ClampedChannel(SignedVector evenPixels, SignedVector oddPixels) {
    return ClampedBlocks(evenPixels, oddPixels);
}

HWY_INLINE void StoreClampedRgb(ByteVector r, ByteVector g, ByteVector b, uint8_t* rgb) {
    r = Shuffled(r, kRgbTables.fromClamped[0]);
    g = Shuffled(g, kRgbTables.fromClamped[1]);
    b = Shuffled(b, kRgbTables.fromClamped[2]);
    StoreBlocksInTurn(ByteTag(), ByRemainder(r, g, b), ByRemainder(g, b, r), ByRemainder(b, r, g), rgb);
}

#else

HWY_INLINE void LoadRgb(const uint8_t* rgb, ByteVector& r, ByteVector& g, ByteVector& b) {
    hn::LoadInterleaved3(ByteTag(), rgb, r, g, b);
}

HWY_INLINE ByteVector ClampedChannel(SignedVector evenPixels, SignedVector oddPixels) {
    return ClampedBytes(evenPixels, oddPixels);
}

HWY_INLINE void StoreClampedRgb(ByteVector r, ByteVector g, ByteVector b, uint8_t* rgb) {
    hn::StoreInterleaved3(r, g, b, ByteTag(), rgb);
}

#endif

// As ClampedChannel, from the lanes that FirstBytes and SecondBytes make.
#if HWY_TARGET == HWY_NEON

HWY_INLINE ByteVector ClampedHalves(SignedVector first, SignedVector second) {
    return ClampedToBytes(first, second);
}

#else

HWY_INLINE ByteVector ClampedHalves(SignedVector first, SignedVector second) {
    return ClampedChannel(first, second);
}

#endif

// Both functions below convert as many of `pixels` pixels as whole vectors allow, and return how many.

#if HWY_ARCH_X86

// A block of four packed pixels has three 32-bit lanes, and four when alpha is there.
alignas(64) constexpr uint32_t kSpreadLanes[16] = {0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0};
alignas(64) constexpr uint32_t kPackedLanes[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
alignas(16) constexpr uint8_t kSpreadBytes[16] = {0, 1, 2, 0x80, 3, 4, 5, 0x80, 6, 7, 8, 0x80, 9, 10, 11, 0x80};
alignas(16) constexpr uint8_t kPackedBytes[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};

HWY_INLINE size_t AddAlpha(const uint8_t* rgb, uint8_t* rgba, size_t pixels) {
    const ByteTag d;
    const QuadTag dQuad;
    const auto lanes = hn::SetTableIndices(dQuad, kSpreadLanes);
    const ByteVector opaque = hn::BitCast(d, hn::Set(dQuad, 0xFF000000));
    const size_t step = hn::Lanes(dQuad);
    size_t i = 0;
    // A step reads a whole vector and needs three quarters of it.
    for (; 3 * (pixels - i) >= 4 * step; i += step) {
        const auto spread = hn::TableLookupLanes(hn::BitCast(dQuad, hn::LoadU(d, rgb + 3 * i)), lanes);
        const ByteVector colors = hn::TableLookupBytesOr0(hn::BitCast(d, spread), hn::LoadDup128(d, kSpreadBytes));
        hn::StoreU(hn::Or(colors, opaque), d, rgba + 4 * i);
    }
    return i;
}

HWY_INLINE size_t DropAlpha(const uint8_t* rgba, uint8_t* rgb, size_t pixels) {
    const ByteTag d;
    const QuadTag dQuad;
    const size_t step = hn::Lanes(dQuad);
    // Shorter vectors have fewer lanes than the table names; those lanes do not count, but must exist.
    const QuadVector inVector = hn::Set(dQuad, static_cast<uint32_t>(step - 1));
    const auto lanes = hn::IndicesFromVec(dQuad, hn::And(hn::LoadU(dQuad, kPackedLanes), inVector));
    size_t i = 0;
    // A step writes a whole vector; the next step overwrites the last quarter.
    for (; 3 * (pixels - i) >= 4 * step; i += step) {
        const ByteVector packed = Shuffled(hn::LoadU(d, rgba + 4 * i), kPackedBytes);
        hn::StoreU(hn::BitCast(d, hn::TableLookupLanes(hn::BitCast(dQuad, packed), lanes)), d, rgb + 3 * i);
    }
    return i;
}

#else

HWY_INLINE size_t AddAlpha(const uint8_t* rgb, uint8_t* rgba, size_t pixels) {
    const ByteTag d;
    const ByteVector opaque = hn::Set(d, 255);
    return ForWholeVectors<3, 4, 1>(rgb, rgba, pixels, [&](const uint8_t* from, uint8_t* to) KORVANE_INLINE {
        ByteVector r, g, b;
        hn::LoadInterleaved3(d, from, r, g, b);
        hn::StoreInterleaved4(r, g, b, opaque, d, to);
    });
}

HWY_INLINE size_t DropAlpha(const uint8_t* rgba, uint8_t* rgb, size_t pixels) {
    const ByteTag d;
    return ForWholeVectors<4, 3, 1>(rgba, rgb, pixels, [&](const uint8_t* from, uint8_t* to) KORVANE_INLINE {
        ByteVector r, g, b, a;
        hn::LoadInterleaved4(d, from, r, g, b, a);
        hn::StoreInterleaved3(r, g, b, d, to);
    });
}

#endif

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
