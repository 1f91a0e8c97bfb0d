// SPDX-License-Identifier: Apache-2.0
// What the corner detector and its twin share: which pixels are tested, and the thinning. Internal.
#ifndef KORVANE_ALGORITHMS_FAST_DETECTION_FRAME_H_
#define KORVANE_ALGORITHMS_FAST_DETECTION_FRAME_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "algorithms/fast_detection.h"

namespace korvane {

// The rows and columns to test, in 64 bits so that no border or size overflows.
struct FastFrame {
    int64_t width;
    int64_t height;
    int64_t borderX;
    int64_t firstRow;
    int64_t endRow;
    int threshold;

    FastFrame(int imageWidth, int imageHeight, const FastParams& params)
        : width(imageWidth),
          height(imageHeight),
          borderX(std::max(params.borderx, 0)),
          // A circle round a pixel of the outer three rows leaves the buffer, so these rows hold no corner.
          firstRow(std::max<int64_t>(params.bordery, 3)),
          endRow(height - firstRow),
          threshold(std::clamp(params.threshold, 0, 255)) {}

    // An image whose circle offsets leave the range of int is treated as one too large for memory.
    bool is_empty() const { return firstRow >= endRow || borderX >= width - borderX || reach() > kMaxReach; }

    // How far, in bytes, the circle reaches before and after its centre.
    int64_t reach() const { return 3 * width + 1; }

    int64_t first_column(int64_t row) const { return std::max(borderX, reach() - row * width); }
    int64_t end_column(int64_t row) const { return std::min(width - borderX, (height - row) * width - reach()); }

    // Memory for three score rows with a spare byte on each side and three rows of counted positions. The kernel's two
    // lists of blocks take less than those.
    size_t work_bytes() const { return (3 * static_cast<size_t>(width) + 48) * 5 + 128; }

  private:
    static constexpr int64_t kMaxReach = std::numeric_limits<int>::max() - 8;
};

// At most one corner for each bin of columns in each band of rows.
class CornerThinner {
  public:
    CornerThinner(int minDist, std::vector<KeyPoint>& keypoints)
        : m_BinWidth(std::max(minDist, 0)), m_BandRows(m_BinWidth / 2), m_Keypoints(keypoints) {}

    // Band k begins at row k * m_BandRows - 1.
    void begin_row(int row) {
        m_Row = row;
        if (m_BandRows != 0 && (row + 1) % m_BandRows == 0) {
            m_Occupied = 0;
        }
    }

    void add(int column) {
        const int bin = m_BinWidth == 0 ? 0 : column / m_BinWidth;
        const uint32_t bit = uint32_t{1} << (bin % 32);
        if ((m_Occupied & bit) == 0) {
            m_Occupied |= bit;
            m_Keypoints.push_back({column, m_Row, nullptr});
        }
    }

  private:
    const int m_BinWidth;
    const int m_BandRows;
    int m_Row = 0;
    uint32_t m_Occupied = 0;
    std::vector<KeyPoint>& m_Keypoints;
};

}  // namespace korvane

#endif  // KORVANE_ALGORITHMS_FAST_DETECTION_FRAME_H_
