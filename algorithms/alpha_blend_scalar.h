// SPDX-License-Identifier: Apache-2.0
// The scalar twin of the blends.
#ifndef KORVANE_ALGORITHMS_ALPHA_BLEND_SCALAR_H_
#define KORVANE_ALGORITHMS_ALPHA_BLEND_SCALAR_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

// A byte c of channel k becomes (addends[k] + c * inverseWeight) >> 8, of which the low 8 bits count: so all of it may
// be held in 16 bits that wrap.
struct BlendTerms {
    uint16_t addends[3];
    uint16_t inverseWeight;
};

void blend_scalar(unsigned char* dest, size_t pixels, const BlendTerms& terms);

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_ALPHA_BLEND_SCALAR_H_
