// SPDX-License-Identifier: Apache-2.0
// The scalar twin of the fast blur.
#ifndef KORVANE_ALGORITHMS_FAST_BLUR_SCALAR_H_
#define KORVANE_ALGORITHMS_FAST_BLUR_SCALAR_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

// The radius is at most the smaller of width and height. Images may overlap.
void fast_blur_scalar(const uint32_t* src, uint8_t* dst, size_t width, size_t height, size_t radius);

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_FAST_BLUR_SCALAR_H_
