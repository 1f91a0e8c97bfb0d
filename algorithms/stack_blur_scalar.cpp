#include "algorithms/stack_blur_scalar.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "algorithms/stack_blur_tables.h"

namespace {

constexpr size_t kChannels = 3;

struct Pixel {
    uint32_t channel[kChannels];
};

Pixel load(const unsigned char* bytes) {
    return {{bytes[0], bytes[1], bytes[2]}};
}

// The window over one line: the weighted sum of its pixels, and the plain sums of those whose weight is about to grow
// and of those whose weight is about to shrink. 32 bits hold sum * mul for every radius.
class Window {
  public:
    explicit Window(int radius)
        : m_Radius(static_cast<size_t>(radius)),
          m_Mul(stackblur_mul[m_Radius]),
          m_Shr(stackblur_shr[m_Radius]),
          m_Slots(2 * m_Radius + 1) {}

    void start(const unsigned char* line, int length, size_t step) {
        const Pixel first = load(line);
        const auto growing = static_cast<uint32_t>(m_Radius) + 1;
        for (size_t c = 0; c < kChannels; ++c) {
            m_Sum[c] = first.channel[c] * (growing * (growing + 1) / 2);
            m_SumOut[c] = first.channel[c] * growing;
            m_SumIn[c] = 0;
        }
        std::fill_n(m_Stack, growing, first);
        for (size_t i = 1; i <= m_Radius; ++i) {
            const Pixel pixel = load(line + std::min(i, static_cast<size_t>(length) - 1) * step);
            m_Stack[m_Radius + i] = pixel;
            for (size_t c = 0; c < kChannels; ++c) {
                m_Sum[c] += pixel.channel[c] * static_cast<uint32_t>(m_Radius + 1 - i);
                m_SumIn[c] += pixel.channel[c];
            }
        }
        m_Centre = m_Radius;
    }

    void write(unsigned char* bytes) const {
        for (size_t c = 0; c < kChannels; ++c) {
            bytes[c] = static_cast<unsigned char>((m_Sum[c] * m_Mul) >> m_Shr);
        }
    }

    void advance(const Pixel& next) {
        const size_t oldest = m_Centre >= m_Radius ? m_Centre - m_Radius : m_Centre + m_Slots - m_Radius;
        m_Centre = m_Centre + 1 == m_Slots ? 0 : m_Centre + 1;
        for (size_t c = 0; c < kChannels; ++c) {
            m_Sum[c] -= m_SumOut[c];
            m_SumOut[c] -= m_Stack[oldest].channel[c];
            m_SumIn[c] += next.channel[c];
            m_Sum[c] += m_SumIn[c];
            m_Stack[oldest].channel[c] = next.channel[c];
            m_SumOut[c] += m_Stack[m_Centre].channel[c];
            m_SumIn[c] -= m_Stack[m_Centre].channel[c];
        }
    }

  private:
    size_t m_Radius;
    uint32_t m_Mul;
    uint32_t m_Shr;
    size_t m_Slots;
    size_t m_Centre = 0;
    uint32_t m_Sum[kChannels] = {};
    uint32_t m_SumIn[kChannels] = {};
    uint32_t m_SumOut[kChannels] = {};
    Pixel m_Stack[2 * kStackBlurMaxRadius + 1];
};

void blur_lines(unsigned char* src, int lines, size_t lineStep, int length, size_t step, int radius) {
    Window window(radius);
    for (int i = 0; i < lines; ++i, src += lineStep) {
        window.start(src, length, step);
        for (int at = 0; at < length; ++at) {
            window.write(src + static_cast<size_t>(at) * step);
            const size_t next = static_cast<size_t>(at) + static_cast<size_t>(radius) + 1;
            window.advance(load(src + std::min(next, static_cast<size_t>(length) - 1) * step));
        }
    }
}

}  // namespace

void stack_blur_scalar(unsigned char* src, int w, int h, int radius) {
    if (w < 1 || h < 1) {
        return;
    }
    radius = std::clamp(radius, 0, kStackBlurMaxRadius);
    const size_t stride = static_cast<size_t>(w) * 4;
    blur_lines(src, h, stride, w, 4, radius);
    blur_lines(src, w, 4, h, stride, radius);
}
