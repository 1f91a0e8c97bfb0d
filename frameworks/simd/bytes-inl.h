// SPDX-License-Identifier: Apache-2.0
// Bytes as 16-bit lanes, and the arithmetic on them that has a form of its own on some processor. For kernel files
// only: included once for each instruction set.
//
// The even bytes of a vector (0, 2, 4 and so on) are one vector of 16-bit lanes, the odd ones another: this takes one
// instruction each, where a widening in memory order takes several.
#if defined(KORVANE_FRAMEWORKS_SIMD_BYTES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_SIMD_BYTES_INL_H_
#undef KORVANE_FRAMEWORKS_SIMD_BYTES_INL_H_
#else
#define KORVANE_FRAMEWORKS_SIMD_BYTES_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frameworks/simd/kernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

using ByteTag = hn::ScalableTag<uint8_t>;
using LaneTag = hn::Repartition<uint16_t, ByteTag>;
using SignedTag = hn::RebindToSigned<LaneTag>;
using QuadTag = hn::Repartition<uint32_t, ByteTag>;
using SignedQuadTag = hn::RebindToSigned<QuadTag>;
using ByteVector = hn::Vec<ByteTag>;
using LaneVector = hn::Vec<LaneTag>;
using SignedVector = hn::Vec<SignedTag>;
using QuadVector = hn::Vec<QuadTag>;
using SignedQuadVector = hn::Vec<SignedQuadTag>;

// `d` is a tag of 16-bit lanes for vectors as long as `bytes`.
template <class D, class V>
HWY_INLINE hn::Vec<D> EvenBytes(D d, V bytes) {
    return hn::And(hn::BitCast(d, bytes), hn::Set(d, 0x00FF));
}

template <class D, class V>
HWY_INLINE hn::Vec<D> OddBytes(D d, V bytes) {
    return hn::ShiftRight<8>(hn::BitCast(d, bytes));
}

HWY_INLINE LaneVector EvenBytes(ByteVector bytes) {
    return EvenBytes(LaneTag(), bytes);
}

HWY_INLINE LaneVector OddBytes(ByteVector bytes) {
    return OddBytes(LaneTag(), bytes);
}

// From the high bytes of the lanes.
HWY_INLINE ByteVector JoinedHighBytes(LaneVector even, LaneVector odd) {
    return hn::BitCast(ByteTag(), hn::Or(hn::ShiftRight<8>(even), hn::AndNot(hn::Set(LaneTag(), 0x00FF), odd)));
}

// The low bytes of the lanes, in memory order; lanes hold values up to 255.
HWY_INLINE void StoreLowBytes(LaneVector lanes, uint8_t* to) {
    const hn::Rebind<uint8_t, LaneTag> d;
    hn::StoreU(hn::DemoteTo(d, hn::BitCast(SignedTag(), lanes)), d, to);
}

// Each block of 16 bytes by the table.
HWY_INLINE ByteVector Shuffled(ByteVector bytes, const uint8_t* HWY_RESTRICT table) {
    return hn::TableLookupBytes(bytes, hn::LoadDup128(ByteTag(), table));
}

// Two vectors, one after the other.
HWY_INLINE void StorePair(ByteVector first, ByteVector second, uint8_t* to) {
    hn::StoreU(first, ByteTag(), to);
    hn::StoreU(second, ByteTag(), to + hn::Lanes(ByteTag()));
}

// Pairs of 16-bit lanes in memory order, at any alignment, whatever the pointer type of Highway's functions says.
HWY_INLINE void LoadLanePairs(const uint8_t* from, LaneVector& even, LaneVector& odd) {
    hn::LoadInterleaved2(LaneTag(), reinterpret_cast<const uint16_t*>(from), even, odd);
}

HWY_INLINE void StoreLanePairs(LaneVector even, LaneVector odd, uint8_t* to) {
    hn::StoreInterleaved2(even, odd, LaneTag(), reinterpret_cast<uint16_t*>(to));
}

// One value in even lanes and another in odd ones.
HWY_INLINE SignedVector AlternatingLanes(int16_t even, int16_t odd) {
    const uint32_t both = static_cast<uint16_t>(even) | static_cast<uint32_t>(static_cast<uint16_t>(odd)) << 16;
    return hn::BitCast(SignedTag(), hn::Set(QuadTag(), both));
}

// ---- Operations with a form of their own on some processor

#if HWY_TARGET == HWY_NEON

// NEON has no high half of 16-bit products: Highway makes it of three instructions. The high half of the doubled
// product is one. NEON also inserts bytes, halves sums, adds neighbours and multiplies bytes into 16-bit sums in one
// instruction each.

template <uint16_t kMultiplier>
HWY_INLINE LaneVector ScaledBytes(LaneVector bytes) {
    static_assert(kMultiplier % 2 == 0);
    const int16x8_t product = vqdmulhq_s16(vreinterpretq_s16_u16(bytes.raw), vdupq_n_s16(kMultiplier / 2));
    return LaneVector(vreinterpretq_u16_s16(product));
}

HWY_INLINE ByteVector JoinedLowBytes(LaneVector even, LaneVector odd) {
    return hn::BitCast(ByteTag(), LaneVector(vsliq_n_u16(even.raw, odd.raw, 8)));
}

HWY_INLINE ByteVector JoinedBytes(LaneVector even, LaneVector odd) {
    return JoinedLowBytes(even, odd);
}

HWY_INLINE LaneVector HalvedSum(LaneVector a, LaneVector b) {
    const int16x8_t half = vhaddq_s16(vreinterpretq_s16_u16(a.raw), vreinterpretq_s16_u16(b.raw));
    return LaneVector(vreinterpretq_u16_s16(half));
}

// The product is doubled, so Centred shifts by one less.
constexpr int kScalingShift = 1;

HWY_INLINE SignedVector ScaledTowardZero(SignedVector x, SignedVector multipliers) {
    const uint16x8_t product = vreinterpretq_u16_s16(vqdmulhq_s16(x.raw, multipliers.raw));
    return SignedVector(vreinterpretq_s16_u16(vsraq_n_u16(product, vreinterpretq_u16_s16(x.raw), 15)));
}

// Shifting with saturation clamps, and leaves the byte where another shift inserts it.
HWY_INLINE ByteVector ClampedBytes(SignedVector even, SignedVector odd) {
    const uint16x8_t high = vqshluq_n_s16(odd.raw, 8);
    return hn::BitCast(ByteTag(), LaneVector(vsriq_n_u16(high, vqshluq_n_s16(even.raw, 8), 8)));
}

template <class V>
HWY_INLINE V HighHalf(V lanes, V multiplier) {
    const int16x8_t half = vreinterpretq_s16_u16(vshrq_n_u16(multiplier.raw, 1));
    return V(vreinterpretq_u16_s16(vqdmulhq_s16(vreinterpretq_s16_u16(lanes.raw), half)));
}

template <class D, class V>
HWY_INLINE void SplitBytes(D /*d*/, V bytes, hn::Vec<D>& a, hn::Vec<D>& b) {
    a = hn::Vec<D>(vmovl_u8(vget_low_u8(bytes.raw)));
    b = hn::Vec<D>(vmovl_high_u8(bytes.raw));
}

template <class D, class V>
HWY_INLINE void AddDifference(D /*d*/, V plus, V minus, hn::Vec<D>& a, hn::Vec<D>& b) {
    a.raw = vsubw_u8(vaddw_u8(a.raw, vget_low_u8(plus.raw)), vget_low_u8(minus.raw));
    b.raw = vsubw_high_u8(vaddw_high_u8(b.raw, plus.raw), minus.raw);
}

template <class V>
HWY_INLINE hn::Vec<ByteTag> UnsplitBytes(V a, V b) {
    return ByteVector(vuzp1q_u8(vreinterpretq_u8_u16(a.raw), vreinterpretq_u8_u16(b.raw)));
}

HWY_INLINE void StoreQuarterSums(LaneVector a, LaneVector b, uint8_t* toA, uint8_t* toB) {
    const uint8x8_t quarters = vadd_u8(vshrn_n_u16(vpaddq_u16(a.raw, b.raw), 2), vdup_n_u8(128));
    const uint32x2_t both = vreinterpret_u32_u8(quarters);
    const uint32_t ofA = vget_lane_u32(both, 0);
    const uint32_t ofB = vget_lane_u32(both, 1);
    std::memcpy(toA, &ofA, sizeof(ofA));
    std::memcpy(toB, &ofB, sizeof(ofB));
}

HWY_INLINE void StoreQuarterSumPairs(LaneVector a, LaneVector b, uint8_t* to) {
    const uint16x8_t sums = vaddq_u16(vtrn1q_u16(a.raw, b.raw), vtrn2q_u16(a.raw, b.raw));
    vst1_u8(to, vadd_u8(vshrn_n_u16(sums, 2), vdup_n_u8(128)));
}

template <uint8_t kOfA, uint8_t kOfB, uint8_t kOfC>
HWY_INLINE void SumProducts(ByteVector a, ByteVector b, ByteVector c, uint16x8_t& lower, uint16x8_t& upper) {
    lower = vmull_u8(vget_low_u8(a.raw), vdup_n_u8(kOfA));
    upper = vmull_high_u8(a.raw, vdupq_n_u8(kOfA));
    lower = vmlal_u8(lower, vget_low_u8(b.raw), vdup_n_u8(kOfB));
    upper = vmlal_high_u8(upper, b.raw, vdupq_n_u8(kOfB));
    lower = vmlal_u8(lower, vget_low_u8(c.raw), vdup_n_u8(kOfC));
    upper = vmlal_high_u8(upper, c.raw, vdupq_n_u8(kOfC));
}

template <uint16_t kOfA, uint16_t kOfB, uint16_t kOfC>
HWY_INLINE ByteVector WeightedSum(ByteVector a, ByteVector b, ByteVector c) {
    uint16x8_t lower, upper, lowerRest, upperRest;
    SumProducts<(kOfA >> 8), (kOfB >> 8), (kOfC >> 8)>(a, b, c, lower, upper);
    SumProducts<kOfA & 255, kOfB & 255, kOfC & 255>(a, b, c, lowerRest, upperRest);
    lower = vsraq_n_u16(lower, lowerRest, 8);
    upper = vsraq_n_u16(upper, upperRest, 8);
    return ByteVector(vuzp2q_u8(vreinterpretq_u8_u16(lower), vreinterpretq_u8_u16(upper)));
}

HWY_INLINE SignedVector ScaledLanes(SignedVector x, int16_t multiplier) {
    return SignedVector(vqdmulhq_n_s16(x.raw, multiplier));
}

HWY_INLINE ByteVector WeightedPlus(ByteVector bytes, LaneVector evenWeights, LaneVector oddWeights,
                                   LaneVector evenAddends, LaneVector oddAddends) {
    // The low halves of the weights make 16-bit sums, the high ones only count in the result's 8 bits.
    const ByteVector lowWeights = JoinedLowBytes(evenWeights, oddWeights);
    const ByteVector highWeights = JoinedHighBytes(evenWeights, oddWeights);
    const uint16x8_t lower = vmull_u8(vget_low_u8(bytes.raw), vget_low_u8(lowWeights.raw));
    const uint16x8_t upper = vmull_high_u8(bytes.raw, lowWeights.raw);
    const uint8x16_t sums = vaddhn_high_u16(vaddhn_u16(lower, vzip1q_u16(evenAddends.raw, oddAddends.raw)), upper,
                                            vzip2q_u16(evenAddends.raw, oddAddends.raw));
    return ByteVector(vmlaq_u8(sums, bytes.raw, highWeights.raw));
}

// By table lookups, of which four do what six widenings do.
HWY_INLINE void LoadQuarters(const uint8_t* from, SignedQuadVector& a, SignedQuadVector& b, SignedQuadVector& c,
                             SignedQuadVector& e) {
    const uint8x16_t bytes = vld1q_u8(from);
    // Every fourth byte is the next one of a quarter; the others are past the table's end and so become 0.
    const uint32x4_t ofA = vorrq_u32(vmovl_u16(vcreate_u16(0x0003000200010000)), vdupq_n_u32(0xFFFFFF00));
    const auto quarter = [&](uint32_t first) KORVANE_INLINE {
        const uint32x4_t indices = vaddq_u32(ofA, vdupq_n_u32(first));
        return SignedQuadVector(vreinterpretq_s32_u8(vqtbl1q_u8(bytes, vreinterpretq_u8_u32(indices))));
    };
    a = quarter(0);
    b = quarter(4);
    c = quarter(8);
    e = quarter(12);
}

// These add as they widen.
HWY_INLINE void AddQuarters(const uint8_t* from, SignedQuadVector& a, SignedQuadVector& b, SignedQuadVector& c,
                            SignedQuadVector& e) {
    const uint8x16_t bytes = vld1q_u8(from);
    const int16x8_t lower = vreinterpretq_s16_u16(vmovl_u8(vget_low_u8(bytes)));
    const int16x8_t upper = vreinterpretq_s16_u16(vmovl_high_u8(bytes));
    a = SignedQuadVector(vaddw_s16(a.raw, vget_low_s16(lower)));
    b = SignedQuadVector(vaddw_high_s16(b.raw, lower));
    c = SignedQuadVector(vaddw_s16(c.raw, vget_low_s16(upper)));
    e = SignedQuadVector(vaddw_high_s16(e.raw, upper));
}

HWY_INLINE ByteVector LoadLowBytes(const int32_t* from) {
    return ByteVector(vld4q_u8(reinterpret_cast<const uint8_t*>(from)).val[0]);
}

#else

// (a * kOfA + b * kOfB + c * kOfC) / 65536. The weights are taken by halves: their sum is at most 65536 and that of
// their low halves at most 256, so that no sum leaves 16 bits.
template <uint16_t kOfA, uint16_t kOfB, uint16_t kOfC>
HWY_INLINE ByteVector WeightedSum(ByteVector a, ByteVector b, ByteVector c) {
    static_assert(kOfA + kOfB + kOfC <= 65536 && kOfA % 256 + kOfB % 256 + kOfC % 256 <= 256);
    const LaneTag d;
    const auto sum = [&](LaneVector aLanes, LaneVector bLanes, LaneVector cLanes) KORVANE_INLINE {
        const auto products = [&](uint16_t ofA, uint16_t ofB, uint16_t ofC) KORVANE_INLINE {
            const LaneVector ab = hn::Add(hn::Mul(aLanes, hn::Set(d, ofA)), hn::Mul(bLanes, hn::Set(d, ofB)));
            return hn::Add(ab, hn::Mul(cLanes, hn::Set(d, ofC)));
        };
        const LaneVector rest = products(kOfA & 255, kOfB & 255, kOfC & 255);
        return hn::Add(products(kOfA >> 8, kOfB >> 8, kOfC >> 8), hn::ShiftRight<8>(rest));
    };
    return JoinedHighBytes(sum(EvenBytes(a), EvenBytes(b), EvenBytes(c)), sum(OddBytes(a), OddBytes(b), OddBytes(c)));
}

// byte * kMultiplier / 65536, for lanes that hold bytes. The multiplier is even.
template <uint16_t kMultiplier>
HWY_INLINE LaneVector ScaledBytes(LaneVector bytes) {
    return hn::MulHigh(bytes, hn::Set(LaneTag(), kMultiplier));
}

// From lanes of values up to 255 and the low bytes of `odd`.
HWY_INLINE ByteVector JoinedBytes(LaneVector even, LaneVector odd) {
    return hn::BitCast(ByteTag(), hn::Or(even, hn::ShiftLeft<8>(odd)));
}

// From the low bytes of both.
HWY_INLINE ByteVector JoinedLowBytes(LaneVector even, LaneVector odd) {
    return hn::BitCast(ByteTag(), hn::OrAnd(hn::ShiftLeft<8>(odd), even, hn::Set(LaneTag(), 0x00FF)));
}

// (a + b) / 2 of signed lanes, rounded down. The sum fits a lane.
HWY_INLINE LaneVector HalvedSum(LaneVector a, LaneVector b) {
    return hn::BitCast(LaneTag(), hn::ShiftRight<1>(hn::BitCast(SignedTag(), hn::Add(a, b))));
}

constexpr int kScalingShift = 0;

// x * multiplier / 65536, truncated toward zero, for a multiplier that is positive and x from Centred.
HWY_INLINE SignedVector ScaledTowardZero(SignedVector x, SignedVector multipliers) {
    return hn::Sub(hn::MulHigh(x, multipliers), hn::ShiftRight<15>(x));
}

// The high half of lane * multiplier, for lanes below 32768 and an even multiplier.
template <class V>
HWY_INLINE V HighHalf(V lanes, V multiplier) {
    return hn::MulHigh(lanes, multiplier);
}

// The lanes clamped to bytes.
HWY_INLINE ByteVector ClampedBytes(SignedVector even, SignedVector odd) {
    const SignedTag d;
    const LaneTag dLanes;
    const auto clamped = [&](SignedVector lanes) KORVANE_INLINE {
        return hn::BitCast(dLanes, hn::Min(hn::Max(lanes, hn::Zero(d)), hn::Set(d, 255)));
    };
    return JoinedBytes(clamped(even), clamped(odd));
}

// 128 + (even lane + odd lane) / 4 of signed lanes above -256, rounded down, in 32-bit lanes.
HWY_INLINE QuadVector QuarterSums(LaneVector lanes) {
    const QuadTag d;
    // The bias keeps each half positive, so that none borrows from the other.
    const QuadVector biased = hn::BitCast(d, hn::Add(lanes, hn::Set(LaneTag(), 256)));
    return hn::ShiftRight<2>(hn::Add(hn::And(biased, hn::Set(d, 0xFFFF)), hn::ShiftRight<16>(biased)));
}

// These sums of `a` and of `b` as bytes, each to its own place.
HWY_INLINE void StoreQuarterSums(LaneVector a, LaneVector b, uint8_t* toA, uint8_t* toB) {
    const hn::Rebind<uint8_t, QuadTag> d;
    const hn::RebindToSigned<QuadTag> dSigned;
    hn::StoreU(hn::DemoteTo(d, hn::BitCast(dSigned, QuarterSums(a))), d, toA);
    hn::StoreU(hn::DemoteTo(d, hn::BitCast(dSigned, QuarterSums(b))), d, toB);
}

// The same in turn, one of `a` first.
HWY_INLINE void StoreQuarterSumPairs(LaneVector a, LaneVector b, uint8_t* to) {
    const hn::Rebind<uint16_t, QuadTag> d;
    const hn::Repartition<uint8_t, decltype(d)> dBytes;
    const QuadVector both = hn::Or(QuarterSums(a), hn::ShiftLeft<8>(QuarterSums(b)));
    const auto pairs = hn::DemoteTo(d, hn::BitCast(hn::RebindToSigned<QuadTag>(), both));
    hn::StoreU(hn::BitCast(dBytes, pairs), dBytes, to);
}

// x * multiplier / 32768, rounded down; 0 or less where x is negative. The multiplier is positive.
HWY_INLINE SignedVector ScaledLanes(SignedVector x, int16_t multiplier) {
    const LaneTag d;
    const LaneVector positive = hn::BitCast(d, hn::Max(x, hn::Zero(SignedTag())));
    return hn::BitCast(SignedTag(), hn::MulHigh(positive, hn::Set(d, static_cast<uint16_t>(2 * multiplier))));
}

// (byte * weight + addend) / 256 for even and for odd bytes, modulo 2^16 before and 2^8 after the division.
HWY_INLINE ByteVector WeightedPlus(ByteVector bytes, LaneVector evenWeights, LaneVector oddWeights,
                                   LaneVector evenAddends, LaneVector oddAddends) {
    return JoinedHighBytes(hn::Add(hn::Mul(EvenBytes(bytes), evenWeights), evenAddends),
                           hn::Add(hn::Mul(OddBytes(bytes), oddWeights), oddAddends));
}

// A vector of bytes as four vectors of 32-bit lanes.
HWY_INLINE void LoadQuarters(const uint8_t* from, SignedQuadVector& a, SignedQuadVector& b, SignedQuadVector& c,
                             SignedQuadVector& e) {
    const SignedQuadTag d;
    const hn::Rebind<uint8_t, SignedQuadTag> dBytes;
    const size_t lanes = hn::Lanes(d);
    a = hn::PromoteTo(d, hn::LoadU(dBytes, from));
    b = hn::PromoteTo(d, hn::LoadU(dBytes, from + lanes));
    c = hn::PromoteTo(d, hn::LoadU(dBytes, from + 2 * lanes));
    e = hn::PromoteTo(d, hn::LoadU(dBytes, from + 3 * lanes));
}

// The same, added to what they hold.
HWY_INLINE void AddQuarters(const uint8_t* from, SignedQuadVector& a, SignedQuadVector& b, SignedQuadVector& c,
                            SignedQuadVector& e) {
    SignedQuadVector ofA, ofB, ofC, ofE;
    LoadQuarters(from, ofA, ofB, ofC, ofE);
    a = hn::Add(a, ofA);
    b = hn::Add(b, ofB);
    c = hn::Add(c, ofC);
    e = hn::Add(e, ofE);
}

#endif

// Bytes to add to pairs: one value to even bytes and another to odd ones.
HWY_INLINE ByteVector AlternatingBytes(uint8_t even, uint8_t odd) {
    return hn::BitCast(ByteTag(), hn::Set(LaneTag(), static_cast<uint16_t>(even | odd << 8)));
}

HWY_INLINE SignedVector ScaledTowardZero(SignedVector x, int16_t multiplier) {
    return ScaledTowardZero(x, hn::Set(SignedTag(), multiplier));
}

// (byte - kOffset) * 2^kShift, ready to be scaled, for lanes that hold bytes.
template <int kOffset, int kShift>
HWY_INLINE SignedVector Centred(LaneVector bytes) {
    constexpr int kOwnShift = kShift - kScalingShift;
    const SignedTag d;
    return hn::Sub(hn::BitCast(d, hn::ShiftLeft<kOwnShift>(bytes)), hn::Set(d, kOffset << kOwnShift));
}

#if HWY_ARCH_X86

// One instruction by its name behind the prefix, for the target's vector length.
#undef KORVANE_X86
#if HWY_MAX_BYTES == 64
#define KORVANE_X86(instruction) _mm512_##instruction
#elif HWY_MAX_BYTES == 32
#define KORVANE_X86(instruction) _mm256_##instruction
#else
#define KORVANE_X86(instruction) _mm_##instruction
#endif

// The lanes clamped to bytes; in each block of 16 bytes `front` comes before `behind`.
HWY_INLINE ByteVector ClampedBlocks(SignedVector front, SignedVector behind) {
    return ByteVector{KORVANE_X86(packus_epi16)(front.raw, behind.raw)};
}

// Two vectors of 32-bit lanes clamped to signed 16 bits, block by block.
HWY_INLINE SignedVector ClampedToLanes(SignedQuadVector a, SignedQuadVector b) {
    return SignedVector{KORVANE_X86(packs_epi32)(a.raw, b.raw)};
}

// Two of those clamped to bytes, in the order of the 32-bit lanes.
HWY_INLINE ByteVector ClampedToBytes(SignedVector ab, SignedVector ce) {
    constexpr uint32_t kBlocks = HWY_MAX_BYTES / 16;
    const QuadTag d;
    const ByteVector blocks = ClampedBlocks(ab, ce);
    if constexpr (kBlocks == 1) {
        return blocks;
    }
    HWY_ALIGN uint32_t order[4 * kBlocks];
    for (uint32_t i = 0; i < 4 * kBlocks; ++i) {
        order[i] = i % kBlocks * 4 + i / kBlocks;
    }
    return hn::BitCast(ByteTag(), hn::TableLookupLanes(hn::BitCast(d, blocks), hn::SetTableIndices(d, order)));
}

// The sums of the two products in each lane, of a byte and a signed byte.
HWY_INLINE SignedVector PairProducts(LaneVector bytes, SignedVector factors) {
    return SignedVector{KORVANE_X86(maddubs_epi16)(bytes.raw, factors.raw)};
}

// As Centred, from the even and from the odd bytes of a vector. The other byte of each pair becomes an 8, so that one
// instruction takes the offset off as well.
template <int kOffset, int kShift>
HWY_INLINE SignedVector CentredEven(ByteVector bytes) {
    constexpr int kFactor = kOffset << kShift >> 3;
    const LaneTag d;
    const LaneVector pairs = hn::OrAnd(hn::Set(d, 0x0800), hn::BitCast(d, bytes), hn::Set(d, 0x00FF));
    return PairProducts(pairs, hn::Set(SignedTag(), -kFactor * 256 + (1 << kShift)));
}

template <int kOffset, int kShift>
HWY_INLINE SignedVector CentredOdd(ByteVector bytes) {
    constexpr int kFactor = kOffset << kShift >> 3;
    const LaneTag d;
    const LaneVector pairs = hn::OrAnd(hn::Set(d, 0x0008), hn::BitCast(d, bytes), hn::Set(d, 0xFF00));
    return PairProducts(pairs, hn::Set(SignedTag(), (256 << kShift) + (256 - kFactor)));
}

// Interleaved, the bytes of two vectors are multiplied by 1 and -1 and added in one instruction.

HWY_INLINE void SplitBytes(LaneTag d, ByteVector bytes, LaneVector& a, LaneVector& b) {
    const ByteVector zero = hn::Zero(ByteTag());
    a = hn::BitCast(d, hn::InterleaveLower(ByteTag(), bytes, zero));
    b = hn::BitCast(d, hn::InterleaveUpper(ByteTag(), bytes, zero));
}

HWY_INLINE void AddDifference(LaneTag d, ByteVector plus, ByteVector minus, LaneVector& a, LaneVector& b) {
    const SignedVector signs = hn::Set(SignedTag(), static_cast<int16_t>(0xFF01));
    const auto difference = [&](ByteVector pairs)
                                KORVANE_INLINE { return hn::BitCast(d, PairProducts(hn::BitCast(d, pairs), signs)); };
    a = hn::Add(a, difference(hn::InterleaveLower(ByteTag(), plus, minus)));
    b = hn::Add(b, difference(hn::InterleaveUpper(ByteTag(), plus, minus)));
}

HWY_INLINE ByteVector UnsplitBytes(LaneVector a, LaneVector b) {
    return ClampedBlocks(hn::BitCast(SignedTag(), a), hn::BitCast(SignedTag(), b));
}

#else

HWY_INLINE SignedVector ClampedToLanes(SignedQuadVector a, SignedQuadVector b) {
    const hn::Half<SignedTag> d;
    return hn::Combine(SignedTag(), hn::DemoteTo(d, b), hn::DemoteTo(d, a));
}

HWY_INLINE ByteVector ClampedToBytes(SignedVector ab, SignedVector ce) {
    const hn::Half<ByteTag> d;
    return hn::Combine(ByteTag(), hn::DemoteTo(d, ce), hn::DemoteTo(d, ab));
}

template <int kOffset, int kShift>
HWY_INLINE SignedVector CentredEven(ByteVector bytes) {
    return Centred<kOffset, kShift>(EvenBytes(bytes));
}

template <int kOffset, int kShift>
HWY_INLINE SignedVector CentredOdd(ByteVector bytes) {
    return Centred<kOffset, kShift>(OddBytes(bytes));
}

#if HWY_TARGET != HWY_NEON

// A vector of bytes as two of 16-bit lanes, in an order that only UnsplitBytes knows.
template <class D, class V>
HWY_INLINE void SplitBytes(D d, V bytes, hn::Vec<D>& a, hn::Vec<D>& b) {
    a = EvenBytes(d, bytes);
    b = OddBytes(d, bytes);
}

// Adds the bytes of `plus` and takes off those of `minus`, in the order of SplitBytes.
template <class D, class V>
HWY_INLINE void AddDifference(D d, V plus, V minus, hn::Vec<D>& a, hn::Vec<D>& b) {
    a = hn::Add(a, hn::Sub(EvenBytes(d, plus), EvenBytes(d, minus)));
    b = hn::Add(b, hn::Sub(OddBytes(d, plus), OddBytes(d, minus)));
}

// The bytes of lanes up to 255 in the order of SplitBytes.
template <class V>
HWY_INLINE ByteVector UnsplitBytes(V a, V b) {
    return hn::BitCast(ByteTag(), hn::Or(a, hn::ShiftLeft<8>(b)));
}

#endif

#endif

#if HWY_TARGET == HWY_NEON

// Loads that part pairs, and widenings that shift.
template <int kOffset, int kShift>
HWY_INLINE void LoadCentredPairs(const uint8_t* from, SignedVector& even, SignedVector& odd) {
    const uint8x8x2_t pairs = vld2_u8(from);
    even = Centred<kOffset, kShift>(LaneVector(vmovl_u8(pairs.val[0])));
    odd = Centred<kOffset, kShift>(LaneVector(vmovl_u8(pairs.val[1])));
}

HWY_INLINE LaneVector FirstBytes(ByteVector bytes) {
    return LaneVector(vmovl_u8(vget_low_u8(bytes.raw)));
}

HWY_INLINE LaneVector SecondBytes(ByteVector bytes) {
    return LaneVector(vmovl_high_u8(bytes.raw));
}

template <int kOffset, int kShift>
HWY_INLINE SignedVector CentredFirst(ByteVector bytes) {
    return Centred<kOffset, kShift>(FirstBytes(bytes));
}

template <int kOffset, int kShift>
HWY_INLINE SignedVector CentredSecond(ByteVector bytes) {
    return Centred<kOffset, kShift>(SecondBytes(bytes));
}

#else

// As CentredEven and CentredOdd, for a vector of bytes in memory.
template <int kOffset, int kShift>
HWY_INLINE void LoadCentredPairs(const uint8_t* from, SignedVector& even, SignedVector& odd) {
    const ByteVector bytes = hn::LoadU(ByteTag(), from);
    even = CentredEven<kOffset, kShift>(bytes);
    odd = CentredOdd<kOffset, kShift>(bytes);
}

// One half of a vector's bytes as lanes and the other one, whichever halves cost least.
HWY_INLINE LaneVector FirstBytes(ByteVector bytes) {
    return EvenBytes(bytes);
}

HWY_INLINE LaneVector SecondBytes(ByteVector bytes) {
    return OddBytes(bytes);
}

template <int kOffset, int kShift>
HWY_INLINE SignedVector CentredFirst(ByteVector bytes) {
    return CentredEven<kOffset, kShift>(bytes);
}

template <int kOffset, int kShift>
HWY_INLINE SignedVector CentredSecond(ByteVector bytes) {
    return CentredOdd<kOffset, kShift>(bytes);
}

// The low bytes of as many numbers as a vector has bytes.
HWY_INLINE ByteVector LoadLowBytes(const int32_t* from) {
    const SignedQuadTag d;
    const size_t lanes = hn::Lanes(d);
    const auto quarter = [&](size_t i)
                             KORVANE_INLINE { return hn::And(hn::LoadU(d, from + i * lanes), hn::Set(d, 0xFF)); };
    return ClampedToBytes(ClampedToLanes(quarter(0), quarter(1)), ClampedToLanes(quarter(2), quarter(3)));
}

#endif

template <class D>
HWY_INLINE bool IsAllZero(D d, hn::Vec<D> bytes) {
    return hn::AllTrue(d, hn::Eq(bytes, hn::Zero(d)));
}

#if HWY_TARGET == HWY_NEON

// NEON has no test of a whole vector. The maxima of neighbours leave half of one, which a register holds.
HWY_INLINE bool IsAllZero(ByteTag /*d*/, ByteVector bytes) {
    const uint32x4_t quads = vreinterpretq_u32_u8(bytes.raw);
    return vgetq_lane_u64(vreinterpretq_u64_u32(vpmaxq_u32(quads, quads)), 0) == 0;
}

#endif

// LoadComparable gives numbers that are good for comparisons with each other only.

#if HWY_ARCH_X86 && HWY_TARGET > HWY_AVX3

// Before AVX-512 x86 compares signed numbers only. Moved by half the range once, a number then takes one instruction
// for each comparison. Compilers that see through this would compare the unsigned numbers again, with two each time.
template <class D>
HWY_INLINE hn::Vec<hn::RebindToSigned<D>> LoadComparable(D d, const uint32_t* from) {
    auto numbers = hn::BitCast(hn::RebindToSigned<D>(), hn::Xor(hn::LoadU(d, from), hn::Set(d, 0x80000000U)));
    __asm__("" : "+x"(numbers.raw));
    return numbers;
}

#else

template <class D>
HWY_INLINE hn::Vec<D> LoadComparable(D d, const uint32_t* from) {
    return hn::LoadU(d, from);
}

#endif

// Bits of comparisons, one below the other, in 32-bit lanes: FirstLess gives bit 0, AddLess<1> bit 1 and so on, of
// a < b. What stands above the last bit is anything until LowByteBelow puts the lowest byte below `rest`, whose own is
// 0.
template <class V>
HWY_INLINE V FirstLess(V a, V b) {
    return hn::IfThenElseZero(hn::Lt(a, b), hn::Set(hn::DFromV<V>(), 1));
}

template <int kBit, class V>
HWY_INLINE V AddLess(V bits, V a, V b) {
    return hn::Or(bits, hn::IfThenElseZero(hn::Lt(a, b), hn::Set(hn::DFromV<V>(), 1 << kBit)));
}

template <class R, class V>
HWY_INLINE R LowByteBelow(R rest, V bits) {
    return hn::Or(rest, hn::BitCast(hn::DFromV<R>(), bits));
}

#if HWY_TARGET == HWY_NEON

// What is all ones or zeros is shifted and inserted in one instruction.

HWY_INLINE QuadVector FirstLess(QuadVector a, QuadVector b) {
    return QuadVector(vcltq_u32(a.raw, b.raw));
}

template <int kBit>
HWY_INLINE QuadVector AddLess(QuadVector bits, QuadVector a, QuadVector b) {
    return QuadVector(vsliq_n_u32(bits.raw, vcltq_u32(a.raw, b.raw), kBit));
}

HWY_INLINE QuadVector LowByteBelow(QuadVector rest, QuadVector bits) {
    return QuadVector(vbslq_u32(vdupq_n_u32(0xFF), bits.raw, rest.raw));
}

#endif

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
