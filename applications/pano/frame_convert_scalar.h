// SPDX-License-Identifier: Apache-2.0
// The scalar twins of the loops under frame_convert.h.
#ifndef KORVANE_APPLICATIONS_PANO_FRAME_CONVERT_SCALAR_H_
#define KORVANE_APPLICATIONS_PANO_FRAME_CONVERT_SCALAR_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

// evens[i] = pairs[2 * i], odds[i] = pairs[2 * i + 1]
void split_pairs_scalar(const uint8_t* pairs, uint8_t* evens, uint8_t* odds, size_t count);

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_PANO_FRAME_CONVERT_SCALAR_H_
