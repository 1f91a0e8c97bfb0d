// SPDX-License-Identifier: Apache-2.0
// The scalar twin of the stack blur.
#ifndef KORVANE_ALGORITHMS_STACK_BLUR_SCALAR_H_
#define KORVANE_ALGORITHMS_STACK_BLUR_SCALAR_H_

#include <cstddef>

namespace korvane {

// The radius is at most kStackBlurMaxRadius.
void stack_blur_scalar(unsigned char* src, size_t w, size_t h, size_t radius);

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_STACK_BLUR_SCALAR_H_
