#include "algorithms/alpha_blend_scalar.h"

#include <cstdint>

namespace {

// Unsigned, so that absurd arguments wrap instead of overflowing.
void blend(unsigned char* dest, int size, const uint32_t (&addends)[3], uint32_t inverseWeight) {
    for (int i = 0; i < size; ++i, dest += 4) {
        for (int channel = 0; channel < 3; ++channel) {
            dest[channel] = static_cast<unsigned char>((addends[channel] + dest[channel] * inverseWeight) >> 8);
        }
    }
}

}  // namespace

void alpha_blend_scalar(unsigned char* dest, int size, int r, int g, int b, int a) {
    const auto weight = static_cast<uint32_t>(a);
    const uint32_t addends[3] = {weight * static_cast<uint32_t>(r), weight * static_cast<uint32_t>(g),
                                 weight * static_cast<uint32_t>(b)};
    blend(dest, size, addends, 256 - weight);
}

void alpha_blend_neon_scalar(unsigned char* dest, int size, int r, int g, int b, int a) {
    const auto weight = static_cast<uint32_t>(a);
    const uint32_t addends[3] = {weight * static_cast<uint32_t>(r), weight * static_cast<uint32_t>(g),
                                 weight * static_cast<uint32_t>(b)};
    blend(dest, size / 8 * 8, addends, (256 - weight) & 255);
}
