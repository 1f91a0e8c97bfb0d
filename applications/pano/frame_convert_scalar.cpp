// SPDX-License-Identifier: Apache-2.0
#include "applications/pano/frame_convert_scalar.h"

namespace korvane {

void split_pairs_scalar(const uint8_t* pairs, uint8_t* evens, uint8_t* odds, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        evens[i] = pairs[2 * i];
        odds[i] = pairs[2 * i + 1];
    }
}

}  // namespace korvane
