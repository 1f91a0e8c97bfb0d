#include "algorithms/alpha_blend.h"

#include <cstddef>
#include <cstdint>

#include "algorithms/alpha_blend_scalar.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algorithms/alpha_blend.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target, which sets the target that it reads.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace korvane {
namespace HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

void AlphaBlend(unsigned char* dest, int size, int r, int g, int b, int a) {
    alpha_blend_scalar(dest, size, r, g, b, a);
}

void AlphaBlendNeon(unsigned char* dest, int size, int r, int g, int b, int a) {
    alpha_blend_neon_scalar(dest, size, r, g, b, a);
}

#else

namespace hn = hwy::HWY_NAMESPACE;

using LaneTag = hn::ScalableTag<uint16_t>;
using LaneVector = hn::Vec<LaneTag>;

// Only the low 16 bits of a sum reach the result, so 16-bit lanes that wrap are exact for every argument. A pixel is
// two lanes of even bytes (0, 2) and two of odd ones (1, 3); byte 3 has weight 256 and addend 0, which keep it.
class Blender {
  public:
    Blender(int r, int g, int b, int a, uint32_t inverseWeight)
        : m_InverseWeight(static_cast<uint16_t>(inverseWeight)),
          m_Red(low_product(a, r)),
          m_Green(low_product(a, g)),
          m_Blue(low_product(a, b)) {}

    void operator()(unsigned char* dest, size_t pixels) const {
        const LaneTag d;
        const hn::RepartitionToWide<LaneTag> dPixel;
        const auto inPixels = [&](uint32_t byte0Or1, uint32_t byte2Or3)
                                  HWY_ATTR { return hn::BitCast(d, hn::Set(dPixel, byte0Or1 | byte2Or3 << 16)); };
        const LaneVector evenAddend = inPixels(m_Red, m_Blue);
        const LaneVector oddAddend = inPixels(m_Green, 0);
        const LaneVector evenWeight = hn::Set(d, static_cast<uint16_t>(m_InverseWeight));
        const LaneVector oddWeight = inPixels(m_InverseWeight, 256);
        const LaneVector lowByte = hn::Set(d, 0x00FF);
        const hn::Repartition<uint8_t, LaneTag> dByte;
        const auto blended = [&](LaneVector bytes) HWY_ATTR {
            const LaneVector even = hn::Add(hn::Mul(hn::And(bytes, lowByte), evenWeight), evenAddend);
            const LaneVector odd = hn::Add(hn::Mul(hn::ShiftRight<8>(bytes), oddWeight), oddAddend);
            return hn::Or(hn::ShiftRight<8>(even), hn::AndNot(lowByte, odd));
        };
        const size_t step = hn::Lanes(dPixel);
        size_t i = 0;
        for (; i + step <= pixels; i += step) {
            unsigned char* here = dest + i * 4;
            hn::StoreU(hn::BitCast(dByte, blended(hn::BitCast(d, hn::LoadU(dByte, here)))), dByte, here);
        }
        tail(dest + i * 4, pixels - i);
    }

  private:
    static uint16_t low_product(int left, int right) {
        return static_cast<uint16_t>(static_cast<uint32_t>(left) * static_cast<uint32_t>(right));
    }

    void tail(unsigned char* dest, size_t pixels) const {
        const uint32_t addends[3] = {m_Red, m_Green, m_Blue};
        for (; pixels != 0; --pixels, dest += 4) {
            for (size_t channel = 0; channel < 3; ++channel) {
                dest[channel] = static_cast<unsigned char>((addends[channel] + dest[channel] * m_InverseWeight) >> 8);
            }
        }
    }

    uint32_t m_InverseWeight;
    uint16_t m_Red;
    uint16_t m_Green;
    uint16_t m_Blue;
};

void AlphaBlend(unsigned char* dest, int size, int r, int g, int b, int a) {
    const Blender blend(r, g, b, a, 256 - static_cast<uint32_t>(a));
    blend(dest, static_cast<size_t>(size));
}

void AlphaBlendNeon(unsigned char* dest, int size, int r, int g, int b, int a) {
    const Blender blend(r, g, b, a, (256 - static_cast<uint32_t>(a)) & 255);
    blend(dest, static_cast<size_t>(size / 8 * 8));
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace korvane
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace korvane {
namespace {

HWY_EXPORT(AlphaBlend);
HWY_EXPORT(AlphaBlendNeon);

void dispatch_alpha_blend(unsigned char* dest, int size, int r, int g, int b, int a) {
    HWY_DYNAMIC_DISPATCH(AlphaBlend)(dest, size, r, g, b, a);
}

void dispatch_alpha_blend_neon(unsigned char* dest, int size, int r, int g, int b, int a) {
    HWY_DYNAMIC_DISPATCH(AlphaBlendNeon)(dest, size, r, g, b, a);
}

}  // namespace
}  // namespace korvane

void alpha_blend(unsigned char* dest, int size, int r, int g, int b, int a) {
    if (size > 0) {
        korvane::dispatch_alpha_blend(dest, size, r, g, b, a);
    }
}

void alpha_blend_neon(unsigned char* dest, int size, int r, int g, int b, int a) {
    if (size > 0) {
        korvane::dispatch_alpha_blend_neon(dest, size, r, g, b, a);
    }
}

#endif
