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
    // `length` bytes, `step` bytes apart.
    WindowSum(const unsigned char* line, int length, size_t step) : m_Prefix(static_cast<size_t>(length) + 1) {
        for (size_t i = 0; i < static_cast<size_t>(length); ++i) {
            m_Prefix[i + 1] = m_Prefix[i] + line[i * step];
        }
    }

    long operator()(int centre, int radius) const {
        const int last = static_cast<int>(m_Prefix.size()) - 2;
        const int before = std::max(0, radius - centre);
        const int behind = std::max(0, centre + radius - last);
        return before * value(0) + behind * value(last) + sum_to(std::min(centre + radius, last)) -
               sum_to(std::max(centre - radius, 0) - 1);
    }

    long value(int i) const { return sum_to(i) - sum_to(i - 1); }

  private:
    long sum_to(int i) const { return m_Prefix[static_cast<size_t>(i + 1)]; }

    std::vector<long> m_Prefix;
};

// One pass over a picture of `depth` bytes a pixel: value(sum, i) for place i of each of its rows or columns.
template <typename Value>
Bytes plain_pass(bool isOfRows, const Bytes& src, int width, int height, size_t depth, const Value& value) {
    const size_t stride = static_cast<size_t>(width) * depth;
    const size_t step = isOfRows ? depth : stride;
    const int length = isOfRows ? width : height;
    Bytes result(src.size());
    for (size_t line = 0; line < src.size() / static_cast<size_t>(length); ++line) {
        const size_t start = isOfRows ? line / depth * stride + line % depth : line;
        const WindowSum sum(src.data() + start, length, step);
        for (int i = 0; i < length; ++i) {
            result[start + static_cast<size_t>(i) * step] = static_cast<unsigned char>(value(sum, i));
        }
    }
    return result;
}

#endif  // KORVANE_TESTS_ALGORITHMS_WINDOW_SUM_H_
