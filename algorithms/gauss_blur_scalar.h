// SPDX-License-Identifier: Apache-2.0
// The scalar twins of the box passes. Radii are 1 or more, and at most half of the line.
#ifndef KORVANE_ALGORITHMS_GAUSS_BLUR_SCALAR_H_
#define KORVANE_ALGORITHMS_GAUSS_BLUR_SCALAR_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

void box_rows_scalar(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius);
// `spare` is as large as the image; what is in it afterwards is undefined.
void box_rows_in_place_scalar(uint8_t* image, uint8_t* spare, size_t width, size_t height, size_t radius);
void box_columns_scalar(const uint8_t* src, uint8_t* dst, size_t width, size_t height, size_t radius);

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_GAUSS_BLUR_SCALAR_H_
