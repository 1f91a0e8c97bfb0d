// SPDX-License-Identifier: Apache-2.0
// The plain sum under a window on a line that goes on with its border values: what the sliding sums must equal.
#ifndef KORVANE_TESTS_ALGORITHMS_WINDOW_SUM_H_
#define KORVANE_TESTS_ALGORITHMS_WINDOW_SUM_H_

#include <algorithm>
#include <cstddef>
#include <vector>

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

#endif  // KORVANE_TESTS_ALGORITHMS_WINDOW_SUM_H_
