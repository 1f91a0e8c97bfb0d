// SPDX-License-Identifier: Apache-2.0
// A tally: the sums of the low bits of some pixels of one cell and their count, 16 bits each in one number. So a pixel
// takes one addition. Internal.
#ifndef KORVANE_APPLICATIONS_GIF_MAKER_PIXEL_TALLY_H_
#define KORVANE_APPLICATIONS_GIF_MAKER_PIXEL_TALLY_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "applications/gif_maker/cell_pixels.h"
#include "applications/gif_maker/palette_refinement.h"

namespace korvane {

constexpr size_t kPixelsPerTally = 8192;  // times 7 stays below 2^16

constexpr std::array<uint64_t, 512> make_tally_steps() {
    std::array<uint64_t, 512> steps{};
    for (uint64_t low = 0; low < steps.size(); ++low) {
        steps[low] = (low & 7) | (low >> 3 & 7) << 16 | (low >> 6) << 32 | uint64_t{1} << 48;
    }
    return steps;
}

inline constexpr std::array<uint64_t, 512> kTallySteps = make_tally_steps();

inline void add_tally(uint64_t tally, const CellBase& base, size_t entry, const PaletteSums& sums) {
    const auto count = static_cast<int64_t>(tally >> 48);
    sums.reds[entry] += base.red * count + static_cast<int64_t>(tally & 0xFFFF);
    sums.greens[entry] += base.green * count + static_cast<int64_t>(tally >> 16 & 0xFFFF);
    sums.blues[entry] += base.blue * count + static_cast<int64_t>(tally >> 32 & 0xFFFF);
    sums.counts[entry] += count;
}

}  // namespace korvane

#endif  // KORVANE_APPLICATIONS_GIF_MAKER_PIXEL_TALLY_H_
