// SPDX-License-Identifier: Apache-2.0
#include "algorithms/fast_blur_scalar.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "algorithms/work_buffer.h"

namespace {

using korvane::WorkBuffer;

struct Sums {
    size_t red = 0;
    size_t green = 0;
    size_t blue = 0;
};

class FastBlur {
  public:
    FastBlur(size_t width, size_t height, size_t radius)
        : m_Width(width),
          m_Height(height),
          m_Radius(radius),
          // One row of zeros below the image, which a sum reads at its start when the radius reaches the height.
          m_Red(height + 1, width),
          m_Green(height + 1, width),
          m_Blue(height + 1, width),
          m_Quotient(256, 2 * radius + 1) {}

    bool hasMemory() const { return m_Red && m_Green && m_Blue && m_Quotient; }

    void run(const uint32_t* src, uint8_t* dst) {
        const size_t divisor = 2 * m_Radius + 1;
        for (size_t i = 0; i < 256 * divisor; ++i) {
            m_Quotient[i] = static_cast<int>(i / divisor);
        }
        for (WorkBuffer<int>* plane : {&m_Red, &m_Green, &m_Blue}) {
            std::memset(plane->get() + m_Height * m_Width, 0, m_Width * sizeof(int));
        }
        blur_rows(src);
        blur_columns(dst);
    }

  private:
    void blur_rows(const uint32_t* src) {
        const size_t last = m_Width - 1;
        for (size_t y = 0; y < m_Height; ++y, src += m_Width) {
            Sums sums;
            add(sums, src[0], m_Radius + 1);
            for (size_t i = 1; i <= m_Radius; ++i) {
                add(sums, src[std::min(i, last)], 1);
            }
            for (size_t x = 0; x < m_Width; ++x) {
                const size_t at = y * m_Width + x;
                m_Red[at] = m_Quotient[sums.red];
                m_Green[at] = m_Quotient[sums.green];
                m_Blue[at] = m_Quotient[sums.blue];
                add(sums, src[std::min(x + m_Radius + 1, last)], 1);
                add(sums, src[x - std::min(x, m_Radius)], ~size_t{0});
            }
        }
    }

    // A factor of all ones subtracts: sums are modulo 2^64, and the final ones are never below 0.
    static void add(Sums& sums, uint32_t pixel, size_t factor) {
        sums.red += factor * (pixel >> 16 & 0xFF);
        sums.green += factor * (pixel >> 8 & 0xFF);
        sums.blue += factor * (pixel & 0xFF);
    }

    void blur_columns(uint8_t* dst) {
        const size_t last = m_Height - 1;
        for (size_t x = 0; x < m_Width; ++x) {
            Sums sums;
            add_planes(sums, x, m_Radius + 1);
            for (size_t i = 1; i <= m_Radius; ++i) {
                add_planes(sums, x + i * m_Width, 1);
            }
            for (size_t y = 0; y < m_Height; ++y) {
                const auto pixel = static_cast<uint32_t>(m_Quotient[sums.red] << 16 | m_Quotient[sums.green] << 8 |
                                                         m_Quotient[sums.blue]) |
                                   0xFF000000U;
                std::memcpy(dst + (y * m_Width + x) * sizeof(pixel), &pixel, sizeof(pixel));
                add_planes(sums, x + std::min(y + m_Radius + 1, last) * m_Width, 1);
                add_planes(sums, x + (y - std::min(y, m_Radius)) * m_Width, ~size_t{0});
            }
        }
    }

    void add_planes(Sums& sums, size_t at, size_t factor) const {
        sums.red += factor * static_cast<size_t>(m_Red[at]);
        sums.green += factor * static_cast<size_t>(m_Green[at]);
        sums.blue += factor * static_cast<size_t>(m_Blue[at]);
    }

    size_t m_Width;
    size_t m_Height;
    size_t m_Radius;
    WorkBuffer<int> m_Red;
    WorkBuffer<int> m_Green;
    WorkBuffer<int> m_Blue;
    WorkBuffer<int> m_Quotient;
};

}  // namespace

void korvane::fast_blur_scalar(const uint32_t* src, uint8_t* dst, size_t width, size_t height, size_t radius) {
    FastBlur blur(width, height, radius);
    if (blur.hasMemory()) {
        blur.run(src, dst);
    }
}
