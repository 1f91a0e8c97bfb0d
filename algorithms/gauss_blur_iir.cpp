#include "algorithms/gauss_blur_iir.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "algorithms/flush_denormals.h"
#include "algorithms/gauss_blur_iir_coefficients.h"
#include "algorithms/gauss_blur_iir_scalar.h"
#include "algorithms/work_buffer.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/gauss_blur_iir.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that they read.
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "algorithms/transpose-inl.h"

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

void GaussIir(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert) {
    gaussiir_scalar(image, width, height, depth, stride, horz, vert);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

// 16 lines are filtered at once. They are gathered into slots, one for each position along the lines, that hold the
// three channels of all lines; byte 3 of the pixels never gets there.
constexpr size_t kLines = 16;
constexpr size_t kChannels = 3;
constexpr size_t kSlotBytes = kLines * kChannels;
constexpr size_t kOrder = 4;
constexpr size_t kLeastLength = 2 * kOrder;  // of a line, for the kernel

using FloatTag = hn::CappedTag<float, kLines>;
using Floats = hn::Vec<FloatTag>;

// What is not zero of the coefficients.
struct Recursion {
    float numerator[kOrder + 1];
    float denominator[kOrder + 1];
    float edge[kOrder + 1];  // what a position beyond the line adds, times the first value
};

Recursion RecursionOf(const float* numerator, const float* denominator, const float* edge) {
    Recursion recursion;
    for (size_t j = 0; j <= kOrder; ++j) {
        recursion.numerator[j] = numerator[j];
        recursion.denominator[j] = denominator[j];
        recursion.edge[j] = numerator[j] - edge[j];
    }
    return recursion;
}

// Term j of a position with kTerms values before it: the line's own history, or the edge.
template <size_t kJ, size_t kTerms>
HWY_INLINE Floats Term(const Recursion& recursion, Floats initial, Floats s, Floats v) {
    const FloatTag d;
    if constexpr (kJ > kTerms) {
        return hn::Mul(hn::Set(d, recursion.edge[kJ]), initial);
    } else {
        return hn::Sub(hn::Mul(hn::Set(d, recursion.numerator[kJ]), s),
                       hn::Mul(hn::Set(d, recursion.denominator[kJ]), v));
    }
}

// Terms are added in the plain form's order. Forwards the denominator of term 0 and the numerator of term 4 are zero.
template <size_t kTerms>
HWY_INLINE Floats Forwards(const Recursion& p, Floats initial, Floats s0, Floats s1, Floats s2, Floats s3, Floats v1,
                           Floats v2, Floats v3, Floats v4) {
    const FloatTag d;
    Floats sum = hn::Mul(hn::Set(d, p.numerator[0]), s0);
    sum = hn::Add(sum, Term<1, kTerms>(p, initial, s1, v1));
    sum = hn::Add(sum, Term<2, kTerms>(p, initial, s2, v2));
    sum = hn::Add(sum, Term<3, kTerms>(p, initial, s3, v3));
    if constexpr (kTerms < kOrder) {
        return hn::Add(sum, Term<4, kTerms>(p, initial, v4, v4));
    }
    return hn::Sub(sum, hn::Mul(hn::Set(d, p.denominator[4]), v4));
}

// Backwards all of term 0 is zero.
template <size_t kTerms>
HWY_INLINE Floats Backwards(const Recursion& m, Floats initial, Floats s1, Floats s2, Floats s3, Floats s4, Floats v1,
                            Floats v2, Floats v3, Floats v4) {
    Floats sum = Term<1, kTerms>(m, initial, s1, v1);
    sum = hn::Add(sum, Term<2, kTerms>(m, initial, s2, v2));
    sum = hn::Add(sum, Term<3, kTerms>(m, initial, s3, v3));
    return hn::Add(sum, Term<4, kTerms>(m, initial, s4, v4));
}

template <size_t kTerms>
using Terms = std::integral_constant<size_t, kTerms>;

#define KORVANE_ALWAYS_INLINE HWY_ATTR __attribute__((always_inline))

// Filters one vector of lines in `length` slots, in place. Both recursions run at once, towards each other, which hides
// half of their latency; where they have met, each finds the other's result in `work` and completes the sum.
void FilterLanes(const Recursion& p, const Recursion& m, uint8_t* slots, float* work, size_t length) {
    const FloatTag d;
    const hn::Rebind<int32_t, FloatTag> dInt;
    const hn::Rebind<uint32_t, FloatTag> dUnsigned;
    const hn::Rebind<uint8_t, FloatTag> dByte;
    const size_t lanes = hn::Lanes(d);

    const auto load = [&](size_t i) KORVANE_ALWAYS_INLINE {
        return hn::ConvertTo(d, hn::PromoteTo(dInt, hn::LoadU(dByte, slots + i * kSlotBytes)));
    };
    // A NaN fails the comparison and becomes 0.
    const auto store = [&](Floats sum, size_t i) KORVANE_ALWAYS_INLINE {
        const Floats positive = hn::IfThenElseZero(hn::Ge(sum, hn::Zero(d)), sum);
        const auto whole = hn::ConvertTo(dInt, hn::Min(positive, hn::Set(d, 255.0F)));
        hn::StoreU(hn::U8FromU32(hn::BitCast(dUnsigned, whole)), dByte, slots + i * kSlotBytes);
    };

    const Floats firstP = load(0);
    const Floats firstM = load(length - 1);
    Floats ps1 = firstP, ps2 = firstP, ps3 = firstP;
    Floats ms1 = firstM, ms2 = firstM, ms3 = firstM, ms4 = firstM;
    Floats pv1 = hn::Zero(d), pv2 = pv1, pv3 = pv1, pv4 = pv1;
    Floats mv1 = pv1, mv2 = pv1, mv3 = pv1, mv4 = pv1;

    const auto forwards = [&](auto terms, size_t i) KORVANE_ALWAYS_INLINE {
        const Floats s0 = load(i);
        const Floats v0 = Forwards<terms()>(p, firstP, s0, ps1, ps2, ps3, pv1, pv2, pv3, pv4);
        ps3 = ps2;
        ps2 = ps1;
        ps1 = s0;
        pv4 = pv3;
        pv3 = pv2;
        pv2 = pv1;
        pv1 = v0;
        return v0;
    };
    const auto backwards = [&](auto terms, size_t i) KORVANE_ALWAYS_INLINE {
        const Floats v0 = Backwards<terms()>(m, firstM, ms1, ms2, ms3, ms4, mv1, mv2, mv3, mv4);
        ms4 = ms3;
        ms3 = ms2;
        ms2 = ms1;
        ms1 = load(i);
        mv4 = mv3;
        mv3 = mv2;
        mv2 = mv1;
        mv1 = v0;
        return v0;
    };
    const auto apart = [&](auto terms, size_t i) KORVANE_ALWAYS_INLINE {
        const size_t mirrored = length - 1 - i;
        hn::StoreU(forwards(terms, i), d, work + i * lanes);
        hn::StoreU(backwards(terms, mirrored), d, work + mirrored * lanes);
    };

    const size_t half = length / 2;
    apart(Terms<0>(), 0);
    apart(Terms<1>(), 1);
    apart(Terms<2>(), 2);
    apart(Terms<3>(), 3);
    for (size_t i = kOrder; i < half; ++i) {
        apart(Terms<kOrder>(), i);
    }
    if (length % 2 != 0) {
        const Floats sum = hn::Add(forwards(Terms<kOrder>(), half), backwards(Terms<kOrder>(), half));
        store(sum, half);
    }
    for (size_t i = length - half; i < length; ++i) {
        const size_t mirrored = length - 1 - i;
        const Floats otherM = hn::LoadU(d, work + i * lanes);
        const Floats otherP = hn::LoadU(d, work + mirrored * lanes);
        store(hn::Add(forwards(Terms<kOrder>(), i), otherM), i);
        store(hn::Add(otherP, backwards(Terms<kOrder>(), mirrored)), mirrored);
    }
}

class Blur {
  public:
    Blur(unsigned char* image, size_t width, size_t height, size_t depth, ptrdiff_t stride)
        : m_Image(image),
          m_Width(width),
          m_Height(height),
          m_Depth(depth),
          m_Stride(stride),
          // Tiles are whole also at a line's end.
          m_Slots(std::max(width, height) + kLines, kSlotBytes),
          m_Work(std::max(width, height), kLines) {}

    bool HasMemory() const { return m_Slots && m_Work; }

    void BlurColumns(const gaussiirContext& context) {
        for (size_t x = 0; x < m_Width; x += kLines) {
            const size_t count = std::min(kLines, m_Width - x);
            for (size_t y = 0; y < m_Height; ++y) {
                hwy::Prefetch(Pixel(x, std::min(y + kPrefetchRows, m_Height - 1)));
                GatherPixels(Pixel(x, y), m_Slots.get() + y * kSlotBytes, count);
            }
            Filter(context, m_Height);
            for (size_t y = 0; y < m_Height; ++y) {
                hwy::Prefetch(Pixel(x, std::min(y + kPrefetchRows, m_Height - 1)));
                ScatterPixels(m_Slots.get() + y * kSlotBytes, Pixel(x, y), count);
            }
        }
    }

    void BlurRows(const gaussiirContext& context) {
        HWY_ALIGN uint8_t tile[kLines * kSlotBytes] = {};
        for (size_t y = 0; y < m_Height; y += kLines) {
            const size_t rows = std::min(kLines, m_Height - y);
            for (size_t x = 0; x < m_Width; x += kLines) {
                const size_t count = std::min(kLines, m_Width - x);
                for (size_t row = 0; row < rows; ++row) {
                    GatherPixels(Pixel(x, y + row), tile + row * kSlotBytes, count);
                }
                TransposeTile(tile, m_Slots.get() + x * kSlotBytes);
            }
            Filter(context, m_Width);
            for (size_t x = 0; x < m_Width; x += kLines) {
                const size_t count = std::min(kLines, m_Width - x);
                TransposeTile(m_Slots.get() + x * kSlotBytes, tile);
                for (size_t row = 0; row < rows; ++row) {
                    ScatterPixels(tile + row * kSlotBytes, Pixel(x, y + row), count);
                }
            }
        }
    }

  private:
    static constexpr size_t kPrefetchRows = 16;

    unsigned char* Pixel(size_t x, size_t y) const {
        return m_Image + static_cast<ptrdiff_t>(y) * m_Stride + static_cast<ptrdiff_t>(x * m_Depth);
    }

    void Filter(const gaussiirContext& context, size_t length) {
        const Recursion p = RecursionOf(context.np, context.dp, context.bp);
        const Recursion m = RecursionOf(context.nm, context.dm, context.bm);
        for (size_t at = 0; at < kSlotBytes; at += hn::Lanes(FloatTag())) {
            FilterLanes(p, m, m_Slots.get() + at, m_Work.get(), length);
        }
    }

    // Up to kLines neighbouring pixels into the three parts of a slot, one for each channel.
    HWY_INLINE void GatherPixels(const uint8_t* pixels, uint8_t* slot, size_t count) const {
        const hn::FixedTag<uint8_t, kLines> d;
        if (count < kLines) {
            for (size_t i = 0; i < count; ++i) {
                for (size_t c = 0; c < kChannels; ++c) {
                    slot[c * kLines + i] = pixels[i * m_Depth + c];
                }
            }
            return;
        }
        hn::Vec<decltype(d)> red, green, blue, rest;
        if (m_Depth == 4) {
            hn::LoadInterleaved4(d, pixels, red, green, blue, rest);
        } else {
            hn::LoadInterleaved3(d, pixels, red, green, blue);
        }
        hn::StoreU(red, d, slot);
        hn::StoreU(green, d, slot + kLines);
        hn::StoreU(blue, d, slot + 2 * kLines);
    }

    HWY_INLINE void ScatterPixels(const uint8_t* slot, uint8_t* pixels, size_t count) const {
        const hn::FixedTag<uint8_t, kLines> d;
        if (count < kLines) {
            for (size_t i = 0; i < count; ++i) {
                for (size_t c = 0; c < kChannels; ++c) {
                    pixels[i * m_Depth + c] = slot[c * kLines + i];
                }
            }
            return;
        }
        const auto red = hn::LoadU(d, slot);
        const auto green = hn::LoadU(d, slot + kLines);
        const auto blue = hn::LoadU(d, slot + 2 * kLines);
        if (m_Depth == 4) {
            hn::Vec<decltype(d)> before0, before1, before2, rest;
            hn::LoadInterleaved4(d, pixels, before0, before1, before2, rest);
            hn::StoreInterleaved4(red, green, blue, rest, d, pixels);
        } else {
            hn::StoreInterleaved3(red, green, blue, d, pixels);
        }
    }

    // kLines slots: the positions along the lines become the lines.
    static HWY_INLINE void TransposeTile(const uint8_t* from, uint8_t* to) {
        for (size_t at = 0; at < kSlotBytes; at += kLines) {
            TransposeBytes([=](size_t i) { return from + i * kSlotBytes + at; },
                           [=](size_t i) { return to + i * kSlotBytes + at; });
        }
    }

    unsigned char* m_Image;
    size_t m_Width;
    size_t m_Height;
    size_t m_Depth;
    ptrdiff_t m_Stride;
    WorkBuffer<uint8_t> m_Slots;
    WorkBuffer<float> m_Work;
};

#undef KORVANE_ALWAYS_INLINE

void GaussIir(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert) {
    const auto columns = static_cast<size_t>(width);
    const auto rows = static_cast<size_t>(height);
    // Rows that overlap depend on the order in which the pixels are written.
    const bool isOverlapping = std::abs(ptrdiff_t{stride}) < ptrdiff_t{width} * depth;
    if (std::min(columns, rows) < kLeastLength || isOverlapping) {
        gaussiir_scalar(image, width, height, depth, stride, horz, vert);
        return;
    }
    Blur blur(image, columns, rows, static_cast<size_t>(depth), stride);
    if (!blur.HasMemory()) {
        return;
    }
    gaussiirContext context = {};
    calculate_gauss_iir_coefficients(&context, gaussiir_deviation(horz));
    blur.BlurColumns(context);
    if (vert != horz) {
        calculate_gauss_iir_coefficients(&context, gaussiir_deviation(vert));
    }
    blur.BlurRows(context);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
HWY_EXPORT(GaussIir);
}  // namespace korvane

void gaussiir(unsigned char* image, int width, int height, int depth, int stride, float horz, float vert) {
    const bool isBlurring = horz > 0.0F && vert > 0.0F;  // false for a NaN
    if (image == nullptr || !isBlurring || width < 5 || height < 5 || (depth != 3 && depth != 4)) {
        return;
    }
    const korvane::FlushDenormals mode;
    HWY_DYNAMIC_DISPATCH(korvane::GaussIir)(image, width, height, depth, stride, horz, vert);
}

void blur_line(gaussiirContext* ctx, const unsigned char* src, unsigned char* dst, int width, int depth) {
    if (ctx == nullptr || ctx->vp == nullptr || ctx->vm == nullptr || src == nullptr || dst == nullptr || width < 1 ||
        (depth != 3 && depth != 4)) {
        return;
    }
    const korvane::FlushDenormals mode;
    blur_line_scalar(ctx, src, dst, width, depth);
}

#endif
