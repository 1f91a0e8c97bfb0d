// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cstddef>

#include "algorithms/fast_detection.h"

namespace {

constexpr int kCircleEntries = 25;

struct CircleStep {
    int dx;
    int dy;
};

constexpr CircleStep offsets16[] = {{0, 3},  {1, 3},   {2, 2},   {3, 1},   {3, 0},  {3, -1}, {2, -2}, {1, -3},
                                    {0, -3}, {-1, -3}, {-2, -2}, {-3, -1}, {-3, 0}, {-3, 1}, {-2, 2}, {-1, 3}};
constexpr CircleStep offsets12[] = {{0, 2},  {1, 2},   {2, 1},   {2, 0},  {2, -1}, {1, -2},
                                    {0, -2}, {-1, -2}, {-2, -1}, {-2, 0}, {-2, 1}, {-1, 2}};
constexpr CircleStep offsets8[] = {{0, 1}, {1, 1}, {1, 0}, {1, -1}, {0, -1}, {-1, -1}, {-1, 0}, {-1, 1}};

const CircleStep* circle_of_size(int patternSize) {
    switch (patternSize) {
        case 16:
            return offsets16;
        case 12:
            return offsets12;
        case 8:
            return offsets8;
        default:
            return nullptr;
    }
}

}  // namespace

void makeOffsets(int* pixel, int rowStride, int patternSize) {
    const CircleStep* circle = circle_of_size(patternSize);
    if (pixel == nullptr || circle == nullptr) {
        return;
    }
    for (int k = 0; k < patternSize; ++k) {
        // Unsigned, since a stride beyond any image must wrap, not trap.
        const unsigned int dx = static_cast<unsigned int>(circle[k].dx);
        const unsigned int dy = static_cast<unsigned int>(circle[k].dy);
        pixel[k] = static_cast<int>(dx + dy * static_cast<unsigned int>(rowStride));
    }
    for (int k = patternSize; k < kCircleEntries; ++k) {
        pixel[k] = pixel[k - patternSize];
    }
}

int cornerScore16(const unsigned char* ptr, const int* pixel, int threshold) {
    std::array<short, kCircleEntries> d;
    for (size_t k = 0; k < d.size(); ++k) {
        d[k] = static_cast<short>(*ptr - ptr[pixel[k]]);
    }
    // The arcs that begin at k and at k + 1 share the eight differences from k + 1 on.
    int a0 = threshold;
    for (size_t k = 0; k < 16; k += 2) {
        int a = std::min({d[k + 1], d[k + 2], d[k + 3]});
        if (a <= a0) {
            continue;
        }
        a = std::min<int>(a, std::min({d[k + 4], d[k + 5], d[k + 6], d[k + 7], d[k + 8]}));
        a0 = std::max(a0, std::min<int>(a, d[k]));
        a0 = std::max(a0, std::min<int>(a, d[k + 9]));
    }
    int b0 = -a0;
    for (size_t k = 0; k < 16; k += 2) {
        int b = std::max({d[k + 1], d[k + 2], d[k + 3], d[k + 4], d[k + 5]});
        if (b >= b0) {
            continue;
        }
        b = std::max<int>(b, std::max({d[k + 6], d[k + 7], d[k + 8]}));
        b0 = std::min(b0, std::max<int>(b, d[k]));
        b0 = std::min(b0, std::max<int>(b, d[k + 9]));
    }
    return -b0 - 1;
}
