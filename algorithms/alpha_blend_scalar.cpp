// SPDX-License-Identifier: Apache-2.0
#include "algorithms/alpha_blend_scalar.h"

void korvane::blend_scalar(unsigned char* dest, size_t pixels, const BlendTerms& terms) {
    for (size_t i = 0; i < pixels; ++i, dest += 4) {
        for (size_t channel = 0; channel < 3; ++channel) {
            const uint32_t sum = terms.addends[channel] + uint32_t{dest[channel]} * terms.inverseWeight;
            dest[channel] = static_cast<unsigned char>(sum >> 8);
        }
    }
}
