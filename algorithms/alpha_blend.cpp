// SPDX-License-Identifier: Apache-2.0
#include "algorithms/alpha_blend.h"

#include <cstddef>
#include <cstdint>

#include "algorithms/alpha_blend_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/alpha_blend.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include "frameworks/simd/bytes-inl.h"
#include "frameworks/simd/kernel-inl.h"
#include "frameworks/simd/steps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {
namespace {

#if KORVANE_HAS_VECTORS

// Two 16-bit values for each pixel.
HWY_INLINE LaneVector InPixels(uint16_t lower, uint16_t upper) {
    return hn::BitCast(LaneTag(), hn::Set(QuadTag(), lower | static_cast<uint32_t>(upper) << 16));
}

// A pixel is two lanes of even bytes (0, 2) and two of odd ones (1, 3); byte 3 has weight 256 and addend 0, which keep
// it.
void Blend(unsigned char* dest, size_t pixels, const BlendTerms& terms) {
    const ByteTag d;
    const LaneVector evenAddend = InPixels(terms.addends[0], terms.addends[2]);
    const LaneVector oddAddend = InPixels(terms.addends[1], 0);
    const LaneVector evenWeight = InPixels(terms.inverseWeight, terms.inverseWeight);
    const LaneVector oddWeight = InPixels(terms.inverseWeight, 256);
    const size_t lanes = hn::Lanes(d);
    const auto blended = [&](const uint8_t* from) KORVANE_INLINE {
        return WeightedPlus(hn::LoadU(d, from), evenWeight, oddWeight, evenAddend, oddAddend);
    };
    const size_t doneBytes = ForWholeSteps(0, pixels * 4, 2 * lanes, [&](size_t i) KORVANE_INLINE {
        StorePair(blended(dest + i), blended(dest + i + lanes), dest + i);
    });
    blend_scalar(dest + doneBytes, pixels - doneBytes / 4, terms);
}

#else

constexpr auto& Blend = blend_scalar;

#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

KORVANE_DISPATCH(Blend);

// Unsigned, so that absurd arguments wrap instead of overflowing.
BlendTerms blend_terms(int r, int g, int b, int a, uint32_t inverseWeight) {
    const auto addend = [a](int color) {
        return static_cast<uint16_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(color));
    };
    return {{addend(r), addend(g), addend(b)}, static_cast<uint16_t>(inverseWeight)};
}

}  // namespace
}  // namespace korvane

void alpha_blend(unsigned char* dest, int size, int r, int g, int b, int a) {
    if (size > 0) {
        korvane::Blend(dest, static_cast<size_t>(size),
                       korvane::blend_terms(r, g, b, a, 256 - static_cast<uint32_t>(a)));
    }
}

void alpha_blend_neon(unsigned char* dest, int size, int r, int g, int b, int a) {
    if (size > 0) {
        korvane::Blend(dest, static_cast<size_t>(size / 8 * 8),
                       korvane::blend_terms(r, g, b, a, (256 - static_cast<uint32_t>(a)) & 255));
    }
}

#endif
