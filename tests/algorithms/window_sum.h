// SPDX-License-Identifier: Apache-2.0
// Blurs from their definitions: each value from plain sums under windows on a line that goes on with its border values.
#ifndef KORVANE_TESTS_ALGORITHMS_WINDOW_SUM_H_
#define KORVANE_TESTS_ALGORITHMS_WINDOW_SUM_H_

#include <algorithm>
#include <cstddef>
#include <vector>

#include "tests/support/random_bytes.h"

using Bytes = std::vector<unsigned char>;

// Every second one black and white, so that sums reach their limits.
inline Bytes random_picture(int width, int height, size_t depth, uint32_t seed) {
    Bytes bytes = random_bytes(static_cast<size_t>(width) * static_cast<size_t>(height) * depth, seed);
    if (seed % 2 == 0) {
        std::transform(bytes.begin(), bytes.end(), bytes.begin(), [](auto b) { return b < 32 ? 0 : 255; });
    }
    return bytes;
}

class WindowSum {
  public:
    // `length` bytes, `step` bytes apart, and as many places beyond both ends as windows reach.
    WindowSum(const unsigned char* line, int length, size_t step, int reach) : m_Reach(reach), m_Before(1) {
        for (int i = -reach; i < length + reach; ++i) {
            m_Before.push_back(m_Before.back() + line[static_cast<size_t>(std::clamp(i, 0, length - 1)) * step]);
        }
    }

    long operator()(int centre, int radius) const { return before(centre + radius + 1) - before(centre - radius); }

  private:
    long before(int place) const { return m_Before[static_cast<size_t>(place + m_Reach)]; }

    const int m_Reach;
    std::vector<long> m_Before;
};

// One pass over a picture of `depth` bytes a pixel: value(sum, i) for place i of each of its rows or columns.
template <typename Value>
Bytes plain_pass(bool isOfRows, const Bytes& src, int width, int height, size_t depth, int reach, const Value& value) {
    const size_t stride = static_cast<size_t>(width) * depth;
    const size_t step = isOfRows ? depth : stride;
    const int length = isOfRows ? width : height;
    Bytes result(src.size());
    for (size_t line = 0; line < src.size() / static_cast<size_t>(length); ++line) {
        const size_t start = isOfRows ? line / depth * stride + line % depth : line;
        const WindowSum sum(src.data() + start, length, step, reach);
        for (int i = 0; i < length; ++i) {
            result[start + static_cast<size_t>(i) * step] = static_cast<unsigned char>(value(sum, i));
        }
    }
    return result;
}

#endif  // KORVANE_TESTS_ALGORITHMS_WINDOW_SUM_H_
