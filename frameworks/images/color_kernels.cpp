// Bytes are worked on as 16-bit lanes of even and of odd pixels: a pair is then one lane of each, a quad two
// neighbouring lanes of each, and sums over them are vertical. The table entries are computed: for a byte i, the
// truncated product with a coefficient of Y, U or V is the high half of i * m; for a signed x = i - offset it is the
// signed high half of 4x * m or 8x * m, plus 1 below 0. The multipliers m were chosen to give the entry of every i.
#include "frameworks/images/color_kernels.h"

#include <hwy/cache_control.h>

#include "frameworks/images/color_kernels_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "frameworks/images/color_kernels.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that it reads.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

const ColorKernels* Kernels() {
    return &kColorKernelsScalar;
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using ByteTag = hn::ScalableTag<uint8_t>;
using LaneTag = hn::Repartition<uint16_t, ByteTag>;
using SignedTag = hn::RebindToSigned<LaneTag>;
using QuadTag = hn::Repartition<uint32_t, ByteTag>;
using SignedQuadTag = hn::RebindToSigned<QuadTag>;
// As many bytes as there are 16-bit lanes, and as there are 32-bit lanes.
using HalfByteTag = hn::Rebind<uint8_t, LaneTag>;
using QuarterByteTag = hn::Rebind<uint8_t, QuadTag>;
using ByteVector = hn::Vec<ByteTag>;
using LaneVector = hn::Vec<LaneTag>;
using SignedVector = hn::Vec<SignedTag>;
using QuadVector = hn::Vec<QuadTag>;

HWY_INLINE LaneVector Even(ByteVector bytes) {
    const LaneTag d;
    return hn::And(hn::BitCast(d, bytes), hn::Set(d, 0x00FF));
}

HWY_INLINE LaneVector Odd(ByteVector bytes) {
    return hn::ShiftRight<8>(hn::BitCast(LaneTag(), bytes));
}

// Lanes hold values up to 255.
HWY_INLINE ByteVector Joined(LaneVector even, LaneVector odd) {
    return hn::BitCast(ByteTag(), hn::Or(even, hn::ShiftLeft<8>(odd)));
}

// Each 16-byte block by the table.
HWY_INLINE ByteVector Shuffled(ByteVector bytes, const uint8_t* HWY_RESTRICT table) {
    return hn::TableLookupBytes(bytes, hn::LoadDup128(ByteTag(), table));
}

HWY_INLINE void LoadWords(const uint8_t* from, LaneVector& even, LaneVector& odd) {
    // LoadInterleaved takes any alignment, whatever its pointer type says.
    hn::LoadInterleaved2(LaneTag(), reinterpret_cast<const uint16_t*>(from), even, odd);
}

HWY_INLINE void StoreWords(LaneVector even, LaneVector odd, uint8_t* to) {
    hn::StoreInterleaved2(even, odd, LaneTag(), reinterpret_cast<uint16_t*>(to));
}

// The low bytes of the lanes.
HWY_INLINE void StoreLowBytes(LaneVector lanes, uint8_t* to) {
    const HalfByteTag d;
    hn::StoreU(hn::DemoteTo(d, hn::BitCast(SignedTag(), lanes)), d, to);
}

// ---- Three interleaved channels

#if HWY_ARCH_X86

// Even and odd pixels, clamped to bytes, for StoreClamped.
HWY_INLINE ByteVector Clamped(SignedVector even, SignedVector odd) {
#if HWY_MAX_BYTES == 64
    return ByteVector{_mm512_packus_epi16(even.raw, odd.raw)};
#elif HWY_MAX_BYTES == 32
    return ByteVector{_mm256_packus_epi16(even.raw, odd.raw)};
#else
    return ByteVector{_mm_packus_epi16(even.raw, odd.raw)};
#endif
}

#endif

#if HWY_TARGET == HWY_AVX3_DL

// Any byte of two vectors goes anywhere in one instruction, and any byte of a third in another.
struct ThreeVectorTable {
    uint8_t fromFirstTwo[64];
    uint8_t fromThird[64];
    uint64_t isFromThird;
};

// To a vector for each channel, and from vectors as Clamped leaves them to bytes in memory order.
struct ThreeChannelTables {
    ThreeVectorTable toChannel[3];
    ThreeVectorTable toBytes[3];
};

constexpr ThreeChannelTables make_three_channel_tables() {
    ThreeChannelTables tables{};
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

alignas(64) constexpr ThreeChannelTables kThreeChannels = make_three_channel_tables();

HWY_INLINE ByteVector FromThree(const ThreeVectorTable& table, ByteVector a, ByteVector b, ByteVector c) {
    const ByteTag d;
    const __m512i two = _mm512_permutex2var_epi8(a.raw, hn::LoadU(d, table.fromFirstTwo).raw, b.raw);
    return ByteVector{_mm512_mask_permutexvar_epi8(two, table.isFromThird, hn::LoadU(d, table.fromThird).raw, c.raw)};
}

HWY_INLINE void LoadPixels(const uint8_t* rgb, ByteVector& r, ByteVector& g, ByteVector& b) {
    const ByteTag d;
    const ByteVector bytes0 = hn::LoadU(d, rgb);
    const ByteVector bytes1 = hn::LoadU(d, rgb + 64);
    const ByteVector bytes2 = hn::LoadU(d, rgb + 128);
    r = FromThree(kThreeChannels.toChannel[0], bytes0, bytes1, bytes2);
    g = FromThree(kThreeChannels.toChannel[1], bytes0, bytes1, bytes2);
    b = FromThree(kThreeChannels.toChannel[2], bytes0, bytes1, bytes2);
}

HWY_INLINE void StoreClamped(ByteVector r, ByteVector g, ByteVector b, uint8_t* rgb) {
    for (size_t k = 0; k < 3; ++k) {
        hn::StoreU(FromThree(kThreeChannels.toBytes[k], r, g, b), ByteTag(), rgb + 64 * k);
    }
}

#elif HWY_ARCH_X86

// Without instructions that interleave by three, the 48 bytes of 16 pixels are three blocks in which byte j of block k
// belongs to channel (k + j) mod 3. For each j, each channel has one block: blending by j mod 3 parts the blocks into
// channels or joins channels to blocks, and one shuffle a channel orders its bytes. Packing leaves the even pixels of a
// block in front of the odd ones, which the shuffle undoes in passing.
struct ThreeChannelTables {
    uint8_t remainder[2][16];  // 255 where j mod 3 is 0, and where it is 1
    uint8_t toPixels[3][16];
    uint8_t fromPacked[3][16];
};

constexpr ThreeChannelTables make_three_channel_tables() {
    ThreeChannelTables tables{};
    for (size_t j = 0; j < 16; ++j) {
        for (size_t remainder = 0; remainder < 2; ++remainder) {
            tables.remainder[remainder][j] = j % 3 == remainder ? 255 : 0;
        }
        for (size_t channel = 0; channel < 3; ++channel) {
            const size_t block = (channel + 15 - j) % 3;
            const size_t pixel = (16 * block + j) / 3;
            tables.toPixels[channel][pixel] = static_cast<uint8_t>(j);
            tables.fromPacked[channel][j] = static_cast<uint8_t>(pixel % 2 * 8 + pixel / 2);
        }
    }
    return tables;
}

HWY_ALIGN constexpr ThreeChannelTables kThreeChannels = make_three_channel_tables();

// The bytes of `zero` where j mod 3 is 0, of `one` where it is 1 and of `two` where it is 2.
HWY_INLINE ByteVector ByRemainder(ByteVector zero, ByteVector one, ByteVector two) {
    const ByteTag d;
    return hn::IfVecThenElse(hn::LoadDup128(d, kThreeChannels.remainder[0]), zero,
                             hn::IfVecThenElse(hn::LoadDup128(d, kThreeChannels.remainder[1]), one, two));
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

HWY_INLINE void LoadPixels(const uint8_t* rgb, ByteVector& r, ByteVector& g, ByteVector& b) {
    ByteVector block0, block1, block2;
    LoadBlocksInTurn(ByteTag(), rgb, block0, block1, block2);
    r = Shuffled(ByRemainder(block0, block2, block1), kThreeChannels.toPixels[0]);
    g = Shuffled(ByRemainder(block1, block0, block2), kThreeChannels.toPixels[1]);
    b = Shuffled(ByRemainder(block2, block1, block0), kThreeChannels.toPixels[2]);
}

HWY_INLINE void StoreClamped(ByteVector r, ByteVector g, ByteVector b, uint8_t* rgb) {
    r = Shuffled(r, kThreeChannels.fromPacked[0]);
    g = Shuffled(g, kThreeChannels.fromPacked[1]);
    b = Shuffled(b, kThreeChannels.fromPacked[2]);
    StoreBlocksInTurn(ByteTag(), ByRemainder(r, g, b), ByRemainder(g, b, r), ByRemainder(b, r, g), rgb);
}

#else

HWY_INLINE ByteVector Clamped(SignedVector even, SignedVector odd) {
    const SignedTag d;
    const LaneTag dLanes;
    const SignedVector most = hn::Set(d, 255);
    even = hn::Min(hn::Max(even, hn::Zero(d)), most);
    odd = hn::Min(hn::Max(odd, hn::Zero(d)), most);
    return Joined(hn::BitCast(dLanes, even), hn::BitCast(dLanes, odd));
}

HWY_INLINE void LoadPixels(const uint8_t* rgb, ByteVector& r, ByteVector& g, ByteVector& b) {
    hn::LoadInterleaved3(ByteTag(), rgb, r, g, b);
}

HWY_INLINE void StoreClamped(ByteVector r, ByteVector g, ByteVector b, uint8_t* rgb) {
    hn::StoreInterleaved3(r, g, b, ByteTag(), rgb);
}

#endif

// ---- RGB to luma and chroma

template <uint16_t kMultiplier>
HWY_INLINE LaneVector Scaled(LaneVector bytes) {
    return hn::MulHigh(bytes, hn::Set(LaneTag(), kMultiplier));
}

HWY_INLINE LaneVector Luma(LaneVector r, LaneVector g, LaneVector b) {
    const LaneVector sum = hn::Add(hn::Add(Scaled<16842>(r), Scaled<33031>(g)), Scaled<6420>(b));
    return hn::Add(sum, hn::Set(LaneTag(), 16));
}

// Chroma around 0, modulo 2^16.
HWY_INLINE LaneVector RawU(LaneVector r, LaneVector g, LaneVector b) {
    return hn::Sub(Scaled<28765>(b), hn::Add(Scaled<9700>(r), Scaled<19070>(g)));
}

HWY_INLINE LaneVector RawV(LaneVector r, LaneVector g, LaneVector b) {
    return hn::Sub(Scaled<28765>(r), hn::Add(Scaled<24118>(g), Scaled<4651>(b)));
}

// What a vector of RGB pixels encodes to, by even and odd pixels.
HWY_INLINE void LoadEncoded(const uint8_t* rgb, LaneVector& yEven, LaneVector& yOdd, LaneVector& uEven,
                            LaneVector& uOdd, LaneVector& vEven, LaneVector& vOdd) {
    ByteVector r, g, b;
    LoadPixels(rgb, r, g, b);
    yEven = Luma(Even(r), Even(g), Even(b));
    uEven = RawU(Even(r), Even(g), Even(b));
    vEven = RawV(Even(r), Even(g), Even(b));
    yOdd = Luma(Odd(r), Odd(g), Odd(b));
    uOdd = RawU(Odd(r), Odd(g), Odd(b));
    vOdd = RawV(Odd(r), Odd(g), Odd(b));
}

HWY_INLINE LaneVector PairMean(LaneVector even, LaneVector odd) {
    return hn::ShiftRight<1>(hn::Add(hn::Add(even, odd), hn::Set(LaneTag(), 256)));
}

// The mean of four samples whose sums by two lie in neighbouring lanes, in the low byte of each 32-bit lane.
HWY_INLINE QuadVector QuadMean(LaneVector pairSums) {
    const QuadTag d;
    // The bias keeps each half positive, so that none borrows from the other.
    const QuadVector biased = hn::BitCast(d, hn::Add(pairSums, hn::Set(LaneTag(), 256)));
    const QuadVector sum = hn::Add(hn::And(biased, hn::Set(d, 0xFFFF)), hn::ShiftRight<16>(biased));
    return hn::ShiftRight<2>(sum);
}

constexpr size_t kCacheLineBytes = 64;

// A vector of pixels `distance` bytes further on, which may be past the end of the picture.
HWY_INLINE void PrefetchPixels(const uint8_t* rgb, size_t distance) {
    const uintptr_t from = reinterpret_cast<uintptr_t>(rgb) + distance;
    for (size_t line = 0; line < 3 * hn::Lanes(ByteTag()); line += kCacheLineBytes) {
        hwy::Prefetch(reinterpret_cast<const uint8_t*>(from + line));
    }
}

// The encoders that write several planes ask for pixels this far ahead, as the processor does not do so well by itself
// with more streams than one or two: a fifth off the time.
constexpr size_t kAheadBytes = 2048;

template <bool kUFirst>
HWY_INLINE void EncodePackedPairs(const uint8_t* rgb, uint8_t* packed, size_t pairs, ColorKernels::Packed tail) {
    const size_t step = hn::Lanes(LaneTag());
    size_t i = 0;
    for (; i + step <= pairs; i += step) {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        LoadEncoded(rgb + 6 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        const LaneVector u = hn::ShiftLeft<8>(PairMean(uEven, uOdd));
        const LaneVector v = hn::ShiftLeft<8>(PairMean(vEven, vOdd));
        StoreWords(hn::Or(yEven, kUFirst ? u : v), hn::Or(yOdd, kUFirst ? v : u), packed + 4 * i);
    }
    tail(rgb + 6 * i, packed + 4 * i, pairs - i);
}

void Rgb2Yuyv(const uint8_t* rgb, uint8_t* yuyv, size_t pairs) {
    EncodePackedPairs<true>(rgb, yuyv, pairs, kColorKernelsScalar.rgb2yuyv);
}

void Rgb2Yvyu(const uint8_t* rgb, uint8_t* yvyu, size_t pairs) {
    EncodePackedPairs<false>(rgb, yvyu, pairs, kColorKernelsScalar.rgb2yvyu);
}

void Rgb2Yuv422p(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t pairs) {
    const ByteTag d;
    const size_t step = hn::Lanes(LaneTag());
    size_t i = 0;
    for (; i + step <= pairs; i += step) {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        PrefetchPixels(rgb + 6 * i, kAheadBytes);
        LoadEncoded(rgb + 6 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(Joined(yEven, yOdd), d, y + 2 * i);
        StoreLowBytes(PairMean(uEven, uOdd), u + i);
        StoreLowBytes(PairMean(vEven, vOdd), v + i);
    }
    kColorKernelsScalar.rgb2yuv422p(rgb + 6 * i, y + 2 * i, u + i, v + i, pairs - i);
}

void Rgb2Yv12OrYu12(const uint8_t* rgb, uint8_t* y, uint8_t* u, uint8_t* v, size_t quads) {
    const ByteTag d;
    const QuarterByteTag dQuarter;
    const SignedQuadTag dSigned;
    const size_t step = hn::Lanes(QuadTag());
    size_t i = 0;
    for (; i + step <= quads; i += step) {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        PrefetchPixels(rgb + 12 * i, kAheadBytes);
        LoadEncoded(rgb + 12 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(Joined(yEven, yOdd), d, y + 4 * i);
        hn::StoreU(hn::DemoteTo(dQuarter, hn::BitCast(dSigned, QuadMean(hn::Add(uEven, uOdd)))), dQuarter, u + i);
        hn::StoreU(hn::DemoteTo(dQuarter, hn::BitCast(dSigned, QuadMean(hn::Add(vEven, vOdd)))), dQuarter, v + i);
    }
    kColorKernelsScalar.rgb2yv12oryu12(rgb + 12 * i, y + 4 * i, u + i, v + i, quads - i);
}

void Rgb2Nv12(const uint8_t* rgb, uint8_t* y, uint8_t* uv, size_t quads) {
    const ByteTag d;
    const hn::Rebind<uint16_t, QuadTag> dHalf;
    const hn::Repartition<uint8_t, decltype(dHalf)> dHalfBytes;
    const size_t step = hn::Lanes(QuadTag());
    size_t i = 0;
    for (; i + step <= quads; i += step) {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        PrefetchPixels(rgb + 12 * i, kAheadBytes);
        LoadEncoded(rgb + 12 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(Joined(yEven, yOdd), d, y + 4 * i);
        // V counts the first pixel in place of the second one: in even lanes, V0 + V0; in odd ones, V2 + V3.
        const LaneVector vSums = hn::Add(vEven, hn::OddEven(vOdd, vEven));
        const QuadVector chroma = hn::Or(QuadMean(hn::Add(uEven, uOdd)), hn::ShiftLeft<8>(QuadMean(vSums)));
        const auto pairs = hn::DemoteTo(dHalf, hn::BitCast(SignedQuadTag(), chroma));
        hn::StoreU(hn::BitCast(dHalfBytes, pairs), dHalfBytes, uv + 2 * i);
    }
    kColorKernelsScalar.rgb2nv12(rgb + 12 * i, y + 4 * i, uv + 2 * i, quads - i);
}

// Two rows at a time are two streams that begin anew with each pair, so that the processor does not foresee the next
// pair: fetching it ahead takes a quarter off the time.
void Rgb2Nv21Rows(const uint8_t* top, const uint8_t* bottom, uint8_t* yTop, uint8_t* yBottom, uint8_t* vu,
                  size_t pairs) {
    const ByteTag d;
    const LaneVector rounding = hn::Set(LaneTag(), 512);
    const size_t toNextPair = 2 * static_cast<size_t>(bottom - top);
    const size_t step = hn::Lanes(LaneTag());
    size_t i = 0;
    for (; i + step <= pairs; i += step) {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        PrefetchPixels(top + 6 * i, toNextPair);
        PrefetchPixels(bottom + 6 * i, toNextPair);
        LoadEncoded(top + 6 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(Joined(yEven, yOdd), d, yTop + 2 * i);
        // U counts the top left pixel in place of the top right one.
        const LaneVector uTop = hn::Add(uEven, uEven);
        const LaneVector vTop = hn::Add(vEven, vOdd);
        LoadEncoded(bottom + 6 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        hn::StoreU(Joined(yEven, yOdd), d, yBottom + 2 * i);
        const LaneVector uSum = hn::Add(hn::Add(uTop, rounding), hn::Add(uEven, uOdd));
        const LaneVector vSum = hn::Add(hn::Add(vTop, rounding), hn::Add(vEven, vOdd));
        hn::StoreU(Joined(hn::ShiftRight<2>(vSum), hn::ShiftRight<2>(uSum)), d, vu + 2 * i);
    }
    kColorKernelsScalar.rgb2nv21_rows(top + 6 * i, bottom + 6 * i, yTop + 2 * i, yBottom + 2 * i, vu + 2 * i,
                                      pairs - i);
}

void Rgb2Yuv(const uint8_t* rgb, uint8_t* yuv, size_t pixels) {
    const ByteTag d;
    const LaneVector middle = hn::Set(LaneTag(), 128);
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pixels; i += step) {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
        LoadEncoded(rgb + 3 * i, yEven, yOdd, uEven, uOdd, vEven, vOdd);
        const ByteVector u = Joined(hn::Add(uEven, middle), hn::Add(uOdd, middle));
        const ByteVector v = Joined(hn::Add(vEven, middle), hn::Add(vOdd, middle));
        hn::StoreInterleaved3(Joined(yEven, yOdd), u, v, d, yuv + 3 * i);
    }
    kColorKernelsScalar.rgb2yuv(rgb + 3 * i, yuv + 3 * i, pixels - i);
}

// ---- Luma and chroma to RGB

// x * multiplier / 65536, truncated toward zero.
HWY_INLINE SignedVector Truncated(SignedVector x, SignedVector multipliers) {
    return hn::Sub(hn::MulHigh(x, multipliers), hn::ShiftRight<15>(x));
}

HWY_INLINE SignedVector Truncated(SignedVector x, int16_t multiplier) {
    return Truncated(x, hn::Set(SignedTag(), multiplier));
}

// For quarters of the luma and eighths of the chroma. Each gives all 256 entries of its table.
constexpr int16_t kLumaFromY = 19071;
constexpr int16_t kRedFromV = 13075;
constexpr int16_t kGreenFromU = 3204;
constexpr int16_t kGreenFromV = 6658;
constexpr int16_t kBlueFromU = 16531;

// (byte - offset) * 2^shift
template <int kOffset, int kShift>
HWY_INLINE SignedVector Centred(LaneVector bytes) {
    const SignedTag d;
    return hn::Sub(hn::BitCast(d, hn::ShiftLeft<kShift>(bytes)), hn::Set(d, kOffset << kShift));
}

// Four times what the even and what the odd bytes lie above 16.
#if HWY_ARCH_X86

// The other byte of each pair becomes an 8, so that one instruction gives 4 * byte - 8 * 8.
HWY_INLINE SignedVector PairProducts(ByteVector bytes, SignedVector factors) {
#if HWY_MAX_BYTES == 64
    return SignedVector{_mm512_maddubs_epi16(bytes.raw, factors.raw)};
#elif HWY_MAX_BYTES == 32
    return SignedVector{_mm256_maddubs_epi16(bytes.raw, factors.raw)};
#else
    return SignedVector{_mm_maddubs_epi16(bytes.raw, factors.raw)};
#endif
}

HWY_INLINE SignedVector EvenQuarters(ByteVector y) {
    const LaneTag d;
    const LaneVector pairs = hn::OrAnd(hn::Set(d, 0x0800), hn::BitCast(d, y), hn::Set(d, 0x00FF));
    return PairProducts(hn::BitCast(ByteTag(), pairs), hn::Set(SignedTag(), -8 * 256 + 4));
}

HWY_INLINE SignedVector OddQuarters(ByteVector y) {
    const LaneTag d;
    const LaneVector pairs = hn::OrAnd(hn::Set(d, 0x0008), hn::BitCast(d, y), hn::Set(d, 0xFF00));
    return PairProducts(hn::BitCast(ByteTag(), pairs), hn::Set(SignedTag(), 4 * 256 + 0xF8));
}

#else

HWY_INLINE SignedVector EvenQuarters(ByteVector y) {
    return Centred<16, 2>(Even(y));
}

HWY_INLINE SignedVector OddQuarters(ByteVector y) {
    return Centred<16, 2>(Odd(y));
}

#endif

HWY_INLINE SignedVector EvenLuma(ByteVector y) {
    return Truncated(EvenQuarters(y), kLumaFromY);
}

HWY_INLINE SignedVector OddLuma(ByteVector y) {
    return Truncated(OddQuarters(y), kLumaFromY);
}

HWY_INLINE SignedVector ChromaEighths(LaneVector chroma) {
    return Centred<128, 3>(chroma);
}

// Stores the pixels with these luma and chroma terms; the green term is taken off.
HWY_INLINE void StoreDecoded(SignedVector evenLuma, SignedVector evenRed, SignedVector evenGreen, SignedVector evenBlue,
                             SignedVector oddLuma, SignedVector oddRed, SignedVector oddGreen, SignedVector oddBlue,
                             uint8_t* rgb) {
    const auto r = Clamped(hn::Add(evenLuma, evenRed), hn::Add(oddLuma, oddRed));
    const auto g = Clamped(hn::Sub(evenLuma, evenGreen), hn::Sub(oddLuma, oddGreen));
    const auto b = Clamped(hn::Add(evenLuma, evenBlue), hn::Add(oddLuma, oddBlue));
    StoreClamped(r, g, b, rgb);
}

// The same where even and odd neighbours share their chroma.
HWY_INLINE void StoreDecodedPairs(SignedVector evenLuma, SignedVector oddLuma, SignedVector red, SignedVector green,
                                  SignedVector blue, uint8_t* rgb) {
    StoreDecoded(evenLuma, red, green, blue, oddLuma, red, green, blue, rgb);
}

HWY_INLINE void StoreDecodedPairs(SignedVector evenLuma, SignedVector oddLuma, LaneVector uBytes, LaneVector vBytes,
                                  uint8_t* rgb) {
    const SignedVector u = ChromaEighths(uBytes);
    const SignedVector v = ChromaEighths(vBytes);
    const SignedVector green = hn::Add(Truncated(u, kGreenFromU), Truncated(v, kGreenFromV));
    StoreDecodedPairs(evenLuma, oddLuma, Truncated(v, kRedFromV), green, Truncated(u, kBlueFromU), rgb);
}

template <bool kUFirst>
HWY_INLINE void DecodePackedPairs(const uint8_t* packed, uint8_t* rgb, size_t pairs, ColorKernels::Packed tail) {
    const size_t step = hn::Lanes(LaneTag());
    size_t i = 0;
    for (; i + step <= pairs; i += step) {
        LaneVector even, odd;
        LoadWords(packed + 4 * i, even, odd);
        const LaneVector u = hn::ShiftRight<8>(kUFirst ? even : odd);
        const LaneVector v = hn::ShiftRight<8>(kUFirst ? odd : even);
        StoreDecodedPairs(EvenLuma(hn::BitCast(ByteTag(), even)), EvenLuma(hn::BitCast(ByteTag(), odd)), u, v,
                          rgb + 6 * i);
    }
    tail(packed + 4 * i, rgb + 6 * i, pairs - i);
}

void Yuyv2Rgb(const uint8_t* yuyv, uint8_t* rgb, size_t pairs) {
    DecodePackedPairs<true>(yuyv, rgb, pairs, kColorKernelsScalar.yuyv2rgb);
}

void Yvyu2Rgb(const uint8_t* yvyu, uint8_t* rgb, size_t pairs) {
    DecodePackedPairs<false>(yvyu, rgb, pairs, kColorKernelsScalar.yvyu2rgb);
}

void Yuv422p2Rgb(const uint8_t* yPlane, const uint8_t* uPlane, const uint8_t* vPlane, uint8_t* rgb, size_t pairs) {
    const LaneTag d;
    const HalfByteTag dHalf;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pairs; i += step) {
        const ByteVector y = hn::LoadU(ByteTag(), yPlane + 2 * i);
        const LaneVector u = hn::PromoteTo(d, hn::LoadU(dHalf, uPlane + i));
        const LaneVector v = hn::PromoteTo(d, hn::LoadU(dHalf, vPlane + i));
        StoreDecodedPairs(EvenLuma(y), OddLuma(y), u, v, rgb + 6 * i);
    }
    kColorKernelsScalar.yuv422p2rgb(yPlane + 2 * i, uPlane + i, vPlane + i, rgb + 6 * i, pairs - i);
}

// One value in even lanes and another in odd ones.
HWY_INLINE SignedVector Alternating(int16_t even, int16_t odd) {
    const uint32_t both = static_cast<uint16_t>(even) | static_cast<uint32_t>(static_cast<uint16_t>(odd)) << 16;
    return hn::BitCast(SignedTag(), hn::Set(QuadTag(), both));
}

// For the two lanes of each quad.
alignas(16) constexpr uint8_t kFirstLane[16] = {0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13};
alignas(16) constexpr uint8_t kSecondLane[16] = {2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15};
alignas(16) constexpr uint8_t kSwapLanes[16] = {2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13};

HWY_INLINE SignedVector InEachQuad(SignedVector lanes, const uint8_t* HWY_RESTRICT table) {
    return hn::BitCast(SignedTag(), Shuffled(hn::BitCast(ByteTag(), lanes), table));
}

// Decodes a vector of luma with one U and V for each 32-bit lane of it, the first of them in the lower half. Red and
// blue, and the two parts of green, share their multiplications.
template <bool kUFirst>
HWY_INLINE void StoreDecodedQuads(const uint8_t* yFrom, LaneVector chroma, uint8_t* rgb) {
    const SignedVector outerMultipliers =
        kUFirst ? Alternating(kBlueFromU, kRedFromV) : Alternating(kRedFromV, kBlueFromU);
    const SignedVector greenMultipliers =
        kUFirst ? Alternating(kGreenFromU, kGreenFromV) : Alternating(kGreenFromV, kGreenFromU);
    const SignedVector x = ChromaEighths(chroma);
    const SignedVector outer = Truncated(x, outerMultipliers);
    const SignedVector part = Truncated(x, greenMultipliers);
    const SignedVector green = hn::Add(part, InEachQuad(part, kSwapLanes));
    const SignedVector first = InEachQuad(outer, kFirstLane);
    const SignedVector second = InEachQuad(outer, kSecondLane);
    const ByteVector y = hn::LoadU(ByteTag(), yFrom);
    StoreDecodedPairs(EvenLuma(y), OddLuma(y), kUFirst ? second : first, green, kUFirst ? first : second, rgb);
}

void Yv12OrYu122Rgb(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* rgb, size_t quads) {
    const QuadTag d;
    const QuarterByteTag dQuarter;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= quads; i += step) {
        const QuadVector uQuads = hn::PromoteTo(d, hn::LoadU(dQuarter, u + i));
        const QuadVector vQuads = hn::PromoteTo(d, hn::LoadU(dQuarter, v + i));
        const LaneVector chroma = hn::BitCast(LaneTag(), hn::Or(uQuads, hn::ShiftLeft<16>(vQuads)));
        StoreDecodedQuads<true>(y + 4 * i, chroma, rgb + 12 * i);
    }
    kColorKernelsScalar.yv12oryu122rgb(y + 4 * i, u + i, v + i, rgb + 12 * i, quads - i);
}

template <bool kUFirst>
HWY_INLINE void DecodeSemiPlanar(const uint8_t* y, const uint8_t* chroma, uint8_t* rgb, size_t quads,
                                 ColorKernels::FromTwo tail) {
    const HalfByteTag dHalf;
    const size_t step = hn::Lanes(QuadTag());
    size_t i = 0;
    for (; i + step <= quads; i += step) {
        StoreDecodedQuads<kUFirst>(y + 4 * i, hn::PromoteTo(LaneTag(), hn::LoadU(dHalf, chroma + 2 * i)), rgb + 12 * i);
    }
    tail(y + 4 * i, chroma + 2 * i, rgb + 12 * i, quads - i);
}

void Nv122Rgb(const uint8_t* y, const uint8_t* uv, uint8_t* rgb, size_t quads) {
    DecodeSemiPlanar<true>(y, uv, rgb, quads, kColorKernelsScalar.nv122rgb);
}

void Nv212Rgb(const uint8_t* y, const uint8_t* vu, uint8_t* rgb, size_t quads) {
    DecodeSemiPlanar<false>(y, vu, rgb, quads, kColorKernelsScalar.nv212rgb);
}

void Yuv2Rgb(const uint8_t* yuv, uint8_t* rgb, size_t pixels) {
    const ByteTag d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pixels; i += step) {
        ByteVector y, u, v;
        LoadPixels(yuv + 3 * i, y, u, v);
        const SignedVector uEven = ChromaEighths(Even(u));
        const SignedVector uOdd = ChromaEighths(Odd(u));
        const SignedVector vEven = ChromaEighths(Even(v));
        const SignedVector vOdd = ChromaEighths(Odd(v));
        StoreDecoded(EvenLuma(y), Truncated(vEven, kRedFromV),
                     hn::Add(Truncated(uEven, kGreenFromU), Truncated(vEven, kGreenFromV)),
                     Truncated(uEven, kBlueFromU), OddLuma(y), Truncated(vOdd, kRedFromV),
                     hn::Add(Truncated(uOdd, kGreenFromU), Truncated(vOdd, kGreenFromV)), Truncated(uOdd, kBlueFromU),
                     rgb + 3 * i);
    }
    kColorKernelsScalar.yuv2rgb(yuv + 3 * i, rgb + 3 * i, pixels - i);
}

// ---- Gray and alpha

// The 16-bit weights by halves, 19595 = 76 x 256 + 139 and so on: the high half of the 32-bit sum without leaving 16
// bits. Both sums stay below 2^16 - 255.
HWY_INLINE LaneVector GrayTimes256(LaneVector r, LaneVector g, LaneVector b) {
    const LaneTag d;
    const auto weighted = [&](uint16_t ofR, uint16_t ofG, uint16_t ofB) HWY_ATTR {
        return hn::Add(hn::Add(hn::Mul(r, hn::Set(d, ofR)), hn::Mul(g, hn::Set(d, ofG))), hn::Mul(b, hn::Set(d, ofB)));
    };
    return hn::Add(weighted(76, 150, 29), hn::ShiftRight<8>(weighted(139, 70, 47)));
}

HWY_INLINE ByteVector Gray(ByteVector r, ByteVector g, ByteVector b) {
    const LaneTag d;
    const LaneVector even = GrayTimes256(Even(r), Even(g), Even(b));
    const LaneVector odd = GrayTimes256(Odd(r), Odd(g), Odd(b));
    return hn::BitCast(ByteTag(), hn::Or(hn::ShiftRight<8>(even), hn::AndNot(hn::Set(d, 0x00FF), odd)));
}

void Rgb2Gray(const uint8_t* rgb, uint8_t* gray, size_t pixels) {
    const ByteTag d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pixels; i += step) {
        ByteVector r, g, b;
        LoadPixels(rgb + 3 * i, r, g, b);
        hn::StoreU(Gray(r, g, b), d, gray + i);
    }
    kColorKernelsScalar.rgb2gray(rgb + 3 * i, gray + i, pixels - i);
}

void Rgba2Gray(const uint8_t* rgba, uint8_t* gray, size_t pixels) {
    const ByteTag d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pixels; i += step) {
        ByteVector r, g, b, a;
        hn::LoadInterleaved4(d, rgba + 4 * i, r, g, b, a);
        // Green and blue are the output's next bytes, which no earlier step has written.
        hn::StoreU(Gray(r, hn::LoadU(d, gray + i + 1), hn::LoadU(d, gray + i + 2)), d, gray + i);
    }
    kColorKernelsScalar.rgba2gray(rgba + 4 * i, gray + i, pixels - i);
}

void Gray2Rgb(const uint8_t* gray, uint8_t* rgb, size_t pixels) {
    const ByteTag d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pixels; i += step) {
        const ByteVector v = hn::LoadU(d, gray + i);
        hn::StoreInterleaved3(v, v, v, d, rgb + 3 * i);
    }
    kColorKernelsScalar.gray2rgb(gray + i, rgb + 3 * i, pixels - i);
}

void Gray2Rgba(const uint8_t* gray, uint8_t* rgba, size_t pixels) {
    const ByteTag d;
    const ByteVector opaque = hn::Set(d, 255);
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pixels; i += step) {
        const ByteVector v = hn::LoadU(d, gray + i);
        hn::StoreInterleaved4(v, v, v, opaque, d, rgba + 4 * i);
    }
    kColorKernelsScalar.gray2rgba(gray + i, rgba + 4 * i, pixels - i);
}

#if HWY_ARCH_X86

// Three of four 32-bit lanes hold the four pixels of a block when they are packed.
alignas(64) constexpr uint32_t kSpreadLanes[16] = {0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0};
alignas(64) constexpr uint32_t kPackedLanes[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
alignas(16) constexpr uint8_t kSpreadBytes[16] = {0, 1, 2, 0x80, 3, 4, 5, 0x80, 6, 7, 8, 0x80, 9, 10, 11, 0x80};
alignas(16) constexpr uint8_t kPackedBytes[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};

void Rgb2Rgba(const uint8_t* rgb, uint8_t* rgba, size_t pixels) {
    const ByteTag d;
    const QuadTag dQuad;
    const auto lanes = hn::SetTableIndices(dQuad, kSpreadLanes);
    const ByteVector opaque = hn::BitCast(d, hn::Set(dQuad, 0xFF000000));
    const size_t step = hn::Lanes(dQuad);
    size_t i = 0;
    // A step reads a whole vector, of which it needs three quarters.
    for (; 3 * (pixels - i) >= 4 * step; i += step) {
        const auto spread = hn::TableLookupLanes(hn::BitCast(dQuad, hn::LoadU(d, rgb + 3 * i)), lanes);
        const ByteVector colors = hn::TableLookupBytesOr0(hn::BitCast(d, spread), hn::LoadDup128(d, kSpreadBytes));
        hn::StoreU(hn::Or(colors, opaque), d, rgba + 4 * i);
    }
    kColorKernelsScalar.rgb2rgba(rgb + 3 * i, rgba + 4 * i, pixels - i);
}

void Rgba2Rgb(const uint8_t* rgba, uint8_t* rgb, size_t pixels) {
    const ByteTag d;
    const QuadTag dQuad;
    const size_t step = hn::Lanes(dQuad);
    // In shorter vectors the table's later lanes are among those that do not count, but must be lanes all the same.
    const QuadVector inVector = hn::Set(dQuad, static_cast<uint32_t>(step - 1));
    const auto lanes = hn::IndicesFromVec(dQuad, hn::And(hn::LoadU(dQuad, kPackedLanes), inVector));
    size_t i = 0;
    // A step writes a whole vector, of which the next one overwrites the last quarter.
    for (; 3 * (pixels - i) >= 4 * step; i += step) {
        const ByteVector packed = Shuffled(hn::LoadU(d, rgba + 4 * i), kPackedBytes);
        hn::StoreU(hn::BitCast(d, hn::TableLookupLanes(hn::BitCast(dQuad, packed), lanes)), d, rgb + 3 * i);
    }
    kColorKernelsScalar.rgba2rgb(rgba + 4 * i, rgb + 3 * i, pixels - i);
}

#else

void Rgb2Rgba(const uint8_t* rgb, uint8_t* rgba, size_t pixels) {
    const ByteTag d;
    const ByteVector opaque = hn::Set(d, 255);
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pixels; i += step) {
        ByteVector r, g, b;
        hn::LoadInterleaved3(d, rgb + 3 * i, r, g, b);
        hn::StoreInterleaved4(r, g, b, opaque, d, rgba + 4 * i);
    }
    kColorKernelsScalar.rgb2rgba(rgb + 3 * i, rgba + 4 * i, pixels - i);
}

void Rgba2Rgb(const uint8_t* rgba, uint8_t* rgb, size_t pixels) {
    const ByteTag d;
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pixels; i += step) {
        ByteVector r, g, b, a;
        hn::LoadInterleaved4(d, rgba + 4 * i, r, g, b, a);
        hn::StoreInterleaved3(r, g, b, d, rgb + 3 * i);
    }
    kColorKernelsScalar.rgba2rgb(rgba + 4 * i, rgb + 3 * i, pixels - i);
}

#endif

const ColorKernels* Kernels() {
    static constexpr ColorKernels kKernels = {
        .gray2rgb = Gray2Rgb,
        .gray2rgba = Gray2Rgba,
        .rgb2gray = Rgb2Gray,
        .rgba2gray = Rgba2Gray,
        .rgb2rgba = Rgb2Rgba,
        .rgba2rgb = Rgba2Rgb,
        .rgb2yuv = Rgb2Yuv,
        .yuv2rgb = Yuv2Rgb,
        .rgb2yuyv = Rgb2Yuyv,
        .rgb2yvyu = Rgb2Yvyu,
        .rgb2yuv422p = Rgb2Yuv422p,
        .yuyv2rgb = Yuyv2Rgb,
        .yvyu2rgb = Yvyu2Rgb,
        .yuv422p2rgb = Yuv422p2Rgb,
        .rgb2yv12oryu12 = Rgb2Yv12OrYu12,
        .rgb2nv12 = Rgb2Nv12,
        .yv12oryu122rgb = Yv12OrYu122Rgb,
        .nv122rgb = Nv122Rgb,
        .nv212rgb = Nv212Rgb,
        .rgb2nv21_rows = Rgb2Nv21Rows,
    };
    return &kKernels;
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace korvane {

HWY_EXPORT(Kernels);

const ColorKernels& color_kernels() {
    return *HWY_DYNAMIC_DISPATCH(Kernels)();
}

}  // namespace korvane
#endif
