// SPDX-License-Identifier: Apache-2.0
// What the public color conversions share: the test of their arguments. Internal.
#ifndef KORVANE_FRAMEWORKS_IMAGES_COLOR_GROUPS_H_
#define KORVANE_FRAMEWORKS_IMAGES_COLOR_GROUPS_H_

#include <cstddef>
#include <cstdint>

namespace korvane {

// How many pixels of the scan share their chroma.
constexpr int kSinglePixels = 1;
constexpr int kPairPixels = 2;
constexpr int kQuadPixels = 4;

// Runs kernel(pointers..., groups) on the whole groups of the picture. 1 when there is any, 0 when the call is refused:
// a null pointer, or fewer pixels than a group. The number of pixels is a 32-bit product that is read as signed, so two
// negative sizes make a positive count; this is part of the interface.
template <typename Kernel, typename... Pointers>
int convert_groups(int groupPixels, const Kernel& kernel, int width, int height, Pointers*... pointers) {
    const int pixels = static_cast<int>(static_cast<uint32_t>(width) * static_cast<uint32_t>(height));
    if (pixels < groupPixels || ((pointers == nullptr) || ...)) {
        return 0;
    }
    kernel(pointers..., static_cast<size_t>(pixels / groupPixels));
    return 1;
}

}  // namespace korvane

#endif  // KORVANE_FRAMEWORKS_IMAGES_COLOR_GROUPS_H_
