// Small transpositions that turn rows into columns, so that vector lanes hold neighbouring rows. For kernel files only:
// included once for each instruction set.
#if defined(KORVANE_ALGORITHMS_TRANSPOSE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVANE_ALGORITHMS_TRANSPOSE_INL_H_
#undef KORVANE_ALGORITHMS_TRANSPOSE_INL_H_
#else
#define KORVANE_ALGORITHMS_TRANSPOSE_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

// Interleaves elements of four lines into four: out 0 is a0 b0 c0 d0 a1 b1 c1 d1 ...
template <class D, class V, typename To>
HWY_INLINE void StoreInterleavedByFour(D d, V a, V b, V c, V e, const To& to) {
    const hn::Repartition<uint8_t, D> dByte;
    const V acLower = hn::InterleaveLower(d, a, c);
    const V acUpper = hn::InterleaveUpper(d, a, c);
    const V beLower = hn::InterleaveLower(d, b, e);
    const V beUpper = hn::InterleaveUpper(d, b, e);
    hn::StoreU(hn::BitCast(dByte, hn::InterleaveLower(d, acLower, beLower)), dByte, to(0));
    hn::StoreU(hn::BitCast(dByte, hn::InterleaveUpper(d, acLower, beLower)), dByte, to(1));
    hn::StoreU(hn::BitCast(dByte, hn::InterleaveLower(d, acUpper, beUpper)), dByte, to(2));
    hn::StoreU(hn::BitCast(dByte, hn::InterleaveUpper(d, acUpper, beUpper)), dByte, to(3));
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
    const auto line = [&](size_t i) HWY_ATTR { return hn::BitCast(d, hn::LoadU(dByte, from(i))); };
    StoreInterleavedByFour(d, line(0), line(1), line(2), line(3), to);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#endif  // include guard
