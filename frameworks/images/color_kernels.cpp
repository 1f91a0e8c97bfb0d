// Bytes are worked on as 16-bit lanes of even and of odd pixels: a pair is then one lane of each, a quad two
// neighbouring lanes of each, and sums over them are vertical. The table entries are computed: for a byte i, the
// truncated product with a coefficient of Y, U or V is the high half of i x m, and for a signed x = i - offset it is k
// x plus the signed high half of x x m, plus 1 below 0. The multipliers m give the entry of every i.
#include "frameworks/images/color_kernels.h"

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
    hn::LoadInterleaved3(ByteTag(), rgb, r, g, b);
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

void Rgb2Nv21Rows(const uint8_t* top, const uint8_t* bottom, uint8_t* yTop, uint8_t* yBottom, uint8_t* vu,
                  size_t pairs) {
    const ByteTag d;
    const LaneVector rounding = hn::Set(LaneTag(), 512);
    const size_t step = hn::Lanes(LaneTag());
    size_t i = 0;
    for (; i + step <= pairs; i += step) {
        LaneVector yEven, yOdd, uEven, uOdd, vEven, vOdd;
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

// A channel is a luma term plus a chroma term, clamped to a byte. The terms carry biases that make 0 of the sum lie at
// 0x7F00: a saturating signed addition then cuts off what is above 255, and taking the bias away again in saturating
// unsigned arithmetic what is below 0.
constexpr int16_t kLumaBias = 0x7E00;
constexpr int16_t kChromaBias = 0x0100;
constexpr uint16_t kSumBias = 0x7F00;

// The signed high half of x x m, plus 1 below 0.
HWY_INLINE SignedVector ScaledTowardZero(SignedVector x, SignedVector multipliers) {
    return hn::Sub(hn::MulHigh(x, multipliers), hn::ShiftRight<15>(x));
}

HWY_INLINE SignedVector Centred(LaneVector bytes, int16_t offset) {
    const SignedTag d;
    return hn::Sub(hn::BitCast(d, bytes), hn::Set(d, offset));
}

HWY_INLINE SignedVector LumaTerm(LaneVector y) {
    const SignedTag d;
    const SignedVector x = Centred(y, 16);
    return hn::Add(hn::Add(x, hn::Set(d, kLumaBias)), ScaledTowardZero(x, hn::Set(d, 10746)));
}

// Red from V or blue from U. Twice the raw byte is 2 x and the bias.
template <int16_t kMultiplier>
HWY_INLINE SignedVector OuterTerm(LaneVector chroma) {
    const SignedTag d;
    static_assert(kChromaBias == 2 * 128);
    return hn::Add(hn::BitCast(d, hn::Add(chroma, chroma)),
                   ScaledTowardZero(Centred(chroma, 128), hn::Set(d, kMultiplier)));
}

HWY_INLINE SignedVector RedTerm(LaneVector v) {
    return OuterTerm<-26473>(v);
}

HWY_INLINE SignedVector BlueTerm(LaneVector u) {
    return OuterTerm<1175>(u);
}

HWY_INLINE SignedVector GreenTerm(LaneVector u, LaneVector v) {
    const SignedTag d;
    const SignedVector fromU = ScaledTowardZero(Centred(u, 128), hn::Set(d, 25631));
    const SignedVector xV = Centred(v, 128);
    const SignedVector fromV = hn::Add(xV, ScaledTowardZero(xV, hn::Set(d, -12271)));
    return hn::Sub(hn::Set(d, kChromaBias), hn::Add(fromU, fromV));
}

HWY_INLINE LaneVector Clamped(SignedVector luma, SignedVector chroma) {
    const LaneTag d;
    return hn::SaturatedSub(hn::BitCast(d, hn::SaturatedAdd(luma, chroma)), hn::Set(d, kSumBias));
}

// Stores a vector of pixels whose even and odd neighbours share their chroma.
HWY_INLINE void StoreDecoded(LaneVector yEven, LaneVector yOdd, SignedVector red, SignedVector green, SignedVector blue,
                             uint8_t* rgb) {
    const SignedVector even = LumaTerm(yEven);
    const SignedVector odd = LumaTerm(yOdd);
    const ByteVector r = Joined(Clamped(even, red), Clamped(odd, red));
    const ByteVector g = Joined(Clamped(even, green), Clamped(odd, green));
    const ByteVector b = Joined(Clamped(even, blue), Clamped(odd, blue));
    hn::StoreInterleaved3(r, g, b, ByteTag(), rgb);
}

template <bool kUFirst>
HWY_INLINE void DecodePackedPairs(const uint8_t* packed, uint8_t* rgb, size_t pairs, ColorKernels::Packed tail) {
    const LaneTag d;
    const LaneVector low = hn::Set(d, 0x00FF);
    const size_t step = hn::Lanes(d);
    size_t i = 0;
    for (; i + step <= pairs; i += step) {
        LaneVector even, odd;
        LoadWords(packed + 4 * i, even, odd);
        const LaneVector u = hn::ShiftRight<8>(kUFirst ? even : odd);
        const LaneVector v = hn::ShiftRight<8>(kUFirst ? odd : even);
        StoreDecoded(hn::And(even, low), hn::And(odd, low), RedTerm(v), GreenTerm(u, v), BlueTerm(u), rgb + 6 * i);
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
        StoreDecoded(Even(y), Odd(y), RedTerm(v), GreenTerm(u, v), BlueTerm(u), rgb + 6 * i);
    }
    kColorKernelsScalar.yuv422p2rgb(yPlane + 2 * i, uPlane + i, vPlane + i, rgb + 6 * i, pairs - i);
}

// One value in even lanes and another in odd ones.
HWY_INLINE SignedVector Alternating(int16_t even, int16_t odd) {
    const uint32_t both = static_cast<uint16_t>(even) | static_cast<uint32_t>(static_cast<uint16_t>(odd)) << 16;
    return hn::BitCast(SignedTag(), hn::Set(QuadTag(), both));
}

// Decodes a vector of luma with one U and V for each 32-bit lane of it, the first of them in the lower half. Red and
// blue, and the two parts of green, share their multiplications.
template <bool kUFirst>
HWY_INLINE void StoreDecodedQuads(const uint8_t* yFrom, LaneVector chroma, uint8_t* rgb) {
    const SignedTag d;
    const QuadTag dQuad;
    const SignedVector outerMultipliers = kUFirst ? Alternating(1175, -26473) : Alternating(-26473, 1175);
    const SignedVector greenMultipliers = kUFirst ? Alternating(25631, -12271) : Alternating(-12271, 25631);
    const SignedVector onlyV = kUFirst ? Alternating(0, -1) : Alternating(-1, 0);
    const SignedVector x = Centred(chroma, 128);
    const SignedVector outer = hn::Add(hn::BitCast(d, hn::Add(chroma, chroma)), ScaledTowardZero(x, outerMultipliers));
    const SignedVector part = hn::Add(hn::And(x, onlyV), ScaledTowardZero(x, greenMultipliers));
    const SignedVector otherPart = hn::BitCast(d, hn::RotateRight<16>(hn::BitCast(dQuad, part)));
    const SignedVector green = hn::Sub(hn::Set(d, kChromaBias), hn::Add(part, otherPart));
    const QuadVector outerQuads = hn::BitCast(dQuad, outer);
    const SignedVector first = hn::OddEven(hn::BitCast(d, hn::ShiftLeft<16>(outerQuads)), outer);
    const SignedVector second = hn::OddEven(outer, hn::BitCast(d, hn::ShiftRight<16>(outerQuads)));
    const ByteVector y = hn::LoadU(ByteTag(), yFrom);
    StoreDecoded(Even(y), Odd(y), kUFirst ? second : first, green, kUFirst ? first : second, rgb);
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
        hn::LoadInterleaved3(d, yuv + 3 * i, y, u, v);
        const SignedVector even = LumaTerm(Even(y));
        const SignedVector odd = LumaTerm(Odd(y));
        const ByteVector r = Joined(Clamped(even, RedTerm(Even(v))), Clamped(odd, RedTerm(Odd(v))));
        const ByteVector g =
            Joined(Clamped(even, GreenTerm(Even(u), Even(v))), Clamped(odd, GreenTerm(Odd(u), Odd(v))));
        const ByteVector b = Joined(Clamped(even, BlueTerm(Even(u))), Clamped(odd, BlueTerm(Odd(u))));
        hn::StoreInterleaved3(r, g, b, d, rgb + 3 * i);
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
        hn::LoadInterleaved3(d, rgb + 3 * i, r, g, b);
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
