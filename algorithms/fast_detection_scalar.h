// SPDX-License-Identifier: Apache-2.0
// The scalar twin of the corner detector.
#ifndef KORVANE_ALGORITHMS_FAST_DETECTION_SCALAR_H_
#define KORVANE_ALGORITHMS_FAST_DETECTION_SCALAR_H_

#include <array>
#include <vector>

#include "algorithms/fast_detection.h"

namespace korvane {

struct FastFrame;

// `keypoints` is empty, `frame` is not. May throw std::bad_alloc, as the kernel may.
void fast16_scalar(const unsigned char* img, std::vector<KeyPoint>& keypoints, const FastFrame& frame,
                   const FastParams& params);

// The segment test of single pixels at one stride and one threshold (0 ... 255).
class FastPixelTest {
  public:
    FastPixelTest(int stride, int threshold);

    bool is_corner(const unsigned char* ptr) const;
    unsigned char score(const unsigned char* ptr) const;

  private:
    bool has_arc(const unsigned char* ptr, unsigned char side) const;

    const int m_Threshold;
    std::array<int, 25> m_Pixel{};
    // By difference + 255: 1 for darker than the centre by more than the threshold, 2 for brighter, else 0.
    std::array<unsigned char, 511> m_Side{};
};

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_FAST_DETECTION_SCALAR_H_
