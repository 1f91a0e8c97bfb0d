// SPDX-License-Identifier: Apache-2.0
// Small transpositions that turn rows into columns, so that vector lanes hold neighbouring rows. For kernel files only:
// included once for each instruction set.
#if defined(KORVANE_FRAMEWORKS_SIMD_TRANSPOSE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_FRAMEWORKS_SIMD_TRANSPOSE_INL_H_
#undef KORVANE_FRAMEWORKS_SIMD_TRANSPOSE_INL_H_
#else
#define KORVANE_FRAMEWORKS_SIMD_TRANSPOSE_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "frameworks/simd/kernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// Interleaves elements of four lines into four: out 0 is a0 b0 c0 e0 a1 b1 c1 e1 and so on.
template <class D, class V, typename To>
HWY_INLINE void StoreInterleavedByFour(D d, V a, V b, V c, V e, const To& to) {
    const V acLower = hn::InterleaveLower(d, a, c);
    const V acUpper = hn::InterleaveUpper(d, a, c);
    const V beLower = hn::InterleaveLower(d, b, e);
    const V beUpper = hn::InterleaveUpper(d, b, e);
    hn::StoreU(hn::InterleaveLower(d, acLower, beLower), d, to(0));
    hn::StoreU(hn::InterleaveUpper(d, acLower, beLower), d, to(1));
    hn::StoreU(hn::InterleaveLower(d, acUpper, beUpper), d, to(2));
    hn::StoreU(hn::InterleaveUpper(d, acUpper, beUpper), d, to(3));
}

// Transposes 32-bit lanes, four by four in each block of 128 bits. In 64-bit lanes at the end, which clang for 64-bit
// ARM makes fewer instructions of.
template <class D, class V>
HWY_INLINE void TransposeInBlocks(D d, V& a, V& b, V& c, V& e) {
    const hn::Repartition<uint64_t, D> dWide;
    const auto abLower = hn::BitCast(dWide, hn::InterleaveLower(d, a, b));
    const auto abUpper = hn::BitCast(dWide, hn::InterleaveUpper(d, a, b));
    const auto ceLower = hn::BitCast(dWide, hn::InterleaveLower(d, c, e));
    const auto ceUpper = hn::BitCast(dWide, hn::InterleaveUpper(d, c, e));
    a = hn::BitCast(d, hn::InterleaveLower(dWide, abLower, ceLower));
    b = hn::BitCast(d, hn::InterleaveUpper(dWide, abLower, ceLower));
    c = hn::BitCast(d, hn::InterleaveLower(dWide, abUpper, ceUpper));
    e = hn::BitCast(d, hn::InterleaveUpper(dWide, abUpper, ceUpper));
}

// 16 lines of 16 bytes. `from(i)` and `to(i)` give the address of line i; the lines may lie anywhere.
template <typename From, typename To>
HWY_INLINE void TransposeBytes(const From& from, const To& to) {
    const hn::FixedTag<uint8_t, 16> d;
    HWY_ALIGN uint8_t quarters[256];
    for (size_t i = 0; i < 4; ++i) {
        StoreInterleavedByFour(d, hn::LoadU(d, from(i)), hn::LoadU(d, from(i + 4)), hn::LoadU(d, from(i + 8)),
                               hn::LoadU(d, from(i + 12)), [&](size_t k) { return quarters + (k * 4 + i) * 16; });
    }
    for (size_t k = 0; k < 4; ++k) {
        const uint8_t* quarter = quarters + k * 64;
        StoreInterleavedByFour(d, hn::Load(d, quarter), hn::Load(d, quarter + 16), hn::Load(d, quarter + 32),
                               hn::Load(d, quarter + 48), [&](size_t i) { return to(k * 4 + i); });
    }
}

// 4 lines of 4 pixels of 4 bytes.
template <typename From, typename To>
HWY_INLINE void TransposePixels(const From& from, const To& to) {
    const hn::FixedTag<uint8_t, 16> dByte;
    const hn::FixedTag<uint32_t, 4> d;
    const auto line = [&](size_t i) KORVANE_INLINE { return hn::BitCast(d, hn::LoadU(dByte, from(i))); };
    auto a = line(0), b = line(1), c = line(2), e = line(3);
    TransposeInBlocks(d, a, b, c, e);
    hn::StoreU(hn::BitCast(dByte, a), dByte, to(0));
    hn::StoreU(hn::BitCast(dByte, b), dByte, to(1));
    hn::StoreU(hn::BitCast(dByte, c), dByte, to(2));
    hn::StoreU(hn::BitCast(dByte, e), dByte, to(3));
}

// Transposes the 128-bit blocks of a tile: as many aligned vectors of 32-bit lanes as a vector has lanes, of which
// every fourth one belongs together.
template <class D>
HWY_INLINE void TransposeBlocks(D d, const uint32_t* from, uint32_t* to) {
    constexpr size_t kBlockLanes = 4;
    constexpr size_t kLanes = hn::MaxLanes(D());
    constexpr size_t kStride = kBlockLanes * kLanes;
    for (size_t i = 0; i < kBlockLanes; ++i, from += kLanes, to += kLanes) {
        const auto a = hn::Load(d, from);
        if constexpr (kLanes == kBlockLanes) {
            hn::Store(a, d, to);
        } else if constexpr (kLanes == 2 * kBlockLanes) {
            const auto b = hn::Load(d, from + kStride);
            hn::Store(hn::ConcatLowerLower(d, b, a), d, to);
            hn::Store(hn::ConcatUpperUpper(d, b, a), d, to + kStride);
        } else {
            const auto b = hn::Load(d, from + kStride);
            const auto c = hn::Load(d, from + 2 * kStride);
            const auto e = hn::Load(d, from + 3 * kStride);
            const auto acLow = hn::ConcatLowerLower(d, c, a);
            const auto acHigh = hn::ConcatUpperUpper(d, c, a);
            const auto beLow = hn::ConcatLowerLower(d, e, b);
            const auto beHigh = hn::ConcatUpperUpper(d, e, b);
            hn::Store(hn::OddEvenBlocks(hn::SwapAdjacentBlocks(beLow), acLow), d, to);
            hn::Store(hn::OddEvenBlocks(beLow, hn::SwapAdjacentBlocks(acLow)), d, to + kStride);
            hn::Store(hn::OddEvenBlocks(hn::SwapAdjacentBlocks(beHigh), acHigh), d, to + 2 * kStride);
            hn::Store(hn::OddEvenBlocks(beHigh, hn::SwapAdjacentBlocks(acHigh)), d, to + 3 * kStride);
        }
    }
}

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
