// SPDX-License-Identifier: Apache-2.0
#include "applications/gif_maker/cell_pixels.h"

#include <cstring>

#include "frameworks/core/memory.h"

namespace korvane {

CellPixels::~CellPixels() {
    galloc_free(m_Begin);
    galloc_free(m_Low);
}

bool CellPixels::sort(const CellPixel* pixels, size_t count) {
    // While sorting, begin[cell + 1] is where the next pixel of `cell` goes. In the end it is where the next cell
    // begins.
    m_Begin = static_cast<uint32_t*>(galloc_alloc((kHistogramCells + 2) * sizeof(uint32_t)));
    m_Low = static_cast<uint16_t*>(galloc_malloc((count + kSlack) * sizeof(uint16_t)));
    if (m_Begin == nullptr || m_Low == nullptr) {
        return false;
    }
    uint32_t* const next = m_Begin + 1;
    uint32_t* const counts = next + 1;
    four_a_round(pixels, count, [counts](const CellPixel& pixel) { ++counts[pixel.cell()]; });
    for (size_t cell = 1; cell <= kHistogramCells; ++cell) {
        next[cell] += next[cell - 1];
    }
    uint16_t* const sorted = m_Low;
    four_a_round(pixels, count, [next, sorted](const CellPixel& pixel) { sorted[next[pixel.cell()]++] = pixel.low(); });
    std::memset(m_Low + count, 0, kSlack * sizeof(uint16_t));
    return true;
}

}  // namespace korvane
