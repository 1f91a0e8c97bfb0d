// SPDX-License-Identifier: Apache-2.0
#include "algorithms/fast_detection_scalar.h"

#include <cstring>
#include <memory>

#include "algorithms/fast_detection_frame.h"
#include "frameworks/core/memory.h"

namespace korvane {

namespace {
constexpr unsigned char kDarker = 1;
constexpr unsigned char kBrighter = 2;
constexpr int kArc = 9;
}  // namespace

FastPixelTest::FastPixelTest(int stride, int threshold) : m_Threshold(threshold) {
    makeOffsets(m_Pixel.data(), stride, 16);
    for (size_t i = 0; i < m_Side.size(); ++i) {
        const int difference = static_cast<int>(i) - 255;
        m_Side[i] = difference < -threshold ? kDarker : (difference > threshold ? kBrighter : 0);
    }
}

bool FastPixelTest::is_corner(const unsigned char* ptr) const {
    const unsigned char* side = &m_Side[255 - static_cast<size_t>(*ptr)];
    // An arc of nine holds at least one end of every diameter.
    const auto diameter = [&](size_t k) { return side[ptr[m_Pixel[k]]] | side[ptr[m_Pixel[k + 8]]]; };
    int sides = diameter(0);
    if (sides == 0) {
        return false;
    }
    sides &= diameter(2) & diameter(4) & diameter(6);
    if (sides == 0) {
        return false;
    }
    sides &= diameter(1) & diameter(3) & diameter(5) & diameter(7);
    return ((sides & kDarker) != 0 && has_arc(ptr, kDarker)) || ((sides & kBrighter) != 0 && has_arc(ptr, kBrighter));
}

bool FastPixelTest::has_arc(const unsigned char* ptr, unsigned char side) const {
    const unsigned char* sides = &m_Side[255 - static_cast<size_t>(*ptr)];
    int run = 0;
    for (const int offset : m_Pixel) {
        run = sides[ptr[offset]] == side ? run + 1 : 0;
        if (run == kArc) {
            return true;
        }
    }
    return false;
}

unsigned char FastPixelTest::score(const unsigned char* ptr) const {
    return static_cast<unsigned char>(cornerScore16(ptr, m_Pixel.data(), m_Threshold));
}

namespace {

// Three rows of scores and of corner columns, used in rotation, in one block of memory.
class WorkRows {
  public:
    explicit WorkRows(const FastFrame& frame)
        : m_Columns(static_cast<size_t>(frame.width)),
          m_Block(static_cast<unsigned char*>(galloc_alloc(frame.work_bytes())), &galloc_free) {}

    bool is_valid() const { return m_Block != nullptr; }

    // Columns -1 to width may be read; those two are always 0.
    unsigned char* scores(int64_t row) const { return m_Block.get() + slot(row) * (m_Columns + 2) + 1; }

    // The count, then the columns.
    int* positions(int64_t row) const {
        constexpr size_t kScoreAlignment = alignof(int) - 1;
        unsigned char* begin = m_Block.get() + ((3 * (m_Columns + 2) + kScoreAlignment) & ~kScoreAlignment);
        return reinterpret_cast<int*>(begin) + slot(row) * (m_Columns + 1);
    }

    void clear(int64_t row) const {
        std::memset(scores(row), 0, m_Columns);
        *positions(row) = 0;
    }

  private:
    static size_t slot(int64_t row) { return static_cast<size_t>(row % 3); }

    const size_t m_Columns;
    std::unique_ptr<unsigned char, decltype(&galloc_free)> m_Block;
};

bool is_maximum(const WorkRows& rows, int64_t row, int j) {
    const unsigned char* own = rows.scores(row) + j;
    const unsigned char* above = rows.scores(row - 1) + j;
    const unsigned char* below = rows.scores(row + 1) + j;
    const unsigned char score = *own;
    return score > own[-1] && score > own[1] && score > above[-1] && score > above[0] && score > above[1] &&
           score > below[-1] && score > below[0] && score > below[1];
}

}  // namespace

void fast16_scalar(const unsigned char* img, std::vector<KeyPoint>& keypoints, const FastFrame& frame,
                   const FastParams& params) {
    const WorkRows rows(frame);
    if (!rows.is_valid()) {
        return;
    }
    const FastPixelTest test(static_cast<int>(frame.width), frame.threshold);
    const bool suppress = params.nonmax_suppression != 0;
    CornerThinner thinner(params.min_dist, keypoints);

    for (int64_t i = frame.firstRow; i <= frame.endRow; ++i) {
        rows.clear(i);
        if (i < frame.endRow) {
            const unsigned char* line = img + i * frame.width;
            int* positions = rows.positions(i);
            for (int64_t j = frame.first_column(i); j < frame.end_column(i); ++j) {
                if (test.is_corner(line + j)) {
                    positions[++positions[0]] = static_cast<int>(j);
                    if (suppress) {
                        rows.scores(i)[j] = test.score(line + j);
                    }
                }
            }
        }
        if (i > frame.firstRow) {
            thinner.begin_row(static_cast<int>(i - 1));
            const int* positions = rows.positions(i - 1);
            for (int k = 1; k <= positions[0]; ++k) {
                if (!suppress || is_maximum(rows, i - 1, positions[k])) {
                    thinner.add(positions[k]);
                }
            }
        }
    }
}

}  // namespace korvane
