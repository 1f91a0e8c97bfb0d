// SPDX-License-Identifier: Apache-2.0
#include "applications/gif_maker/cell_pixels.h"

#include <cstring>

#include "frameworks/core/memory.h"

namespace korvane {

CellPixels::~CellPixels() {
    galloc_free(m_Begin);
    galloc_free(m_Low);
}

bool CellPixels::sort(const PixelPlanes& pixels) {
    // While sorting, begin[cell + 1] is where the next pixel of `cell` goes. In the end it is where the next cell
    // begins.
    m_Begin = static_cast<uint32_t*>(galloc_alloc((kHistogramCells + 2) * sizeof(uint32_t)));
    m_Low = static_cast<uint16_t*>(galloc_malloc((pixels.count + kSlack) * sizeof(uint16_t)));
    if (m_Begin == nullptr || m_Low == nullptr) {
        return false;
    }
    uint32_t* next = m_Begin + 1;
    for (size_t i = 0; i < pixels.count; ++i) {
        ++next[pixels.cells[i] + 1];
    }
    for (size_t cell = 1; cell <= kHistogramCells; ++cell) {
        next[cell] += next[cell - 1];
    }
    for (size_t i = 0; i < pixels.count; ++i) {
        m_Low[next[pixels.cells[i]]++] = LowBits::pack(pixels.red[i], pixels.green[i], pixels.blue[i]);
    }
    std::memset(m_Low + pixels.count, 0, kSlack * sizeof(uint16_t));
    return true;
}

}  // namespace korvane
