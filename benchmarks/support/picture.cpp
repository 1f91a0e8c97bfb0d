// SPDX-License-Identifier: Apache-2.0
#include "benchmarks/support/picture.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace korvane::bench {
namespace {

class NoiseSource {
  public:
    // Sum of four bytes about zero: close enough to a bell curve, -510 to 510.
    int next() {
        m_State = m_State * 6364136223846793005u + 1442695040888963407u;
        const auto bits = static_cast<uint32_t>(m_State >> 32);
        return static_cast<int>((bits & 255) + ((bits >> 8) & 255) + ((bits >> 16) & 255) + (bits >> 24)) - 510;
    }

  private:
    uint64_t m_State = 0x9E3779B97F4A7C15u;
};

struct Disc {
    int x, y, radius;
    int colour[3];
    int texture;
};

std::vector<Disc> discs_of(int width, int height) {
    std::vector<Disc> discs;
    NoiseSource source;
    const auto below = [&source](int limit) { return (source.next() + 510) * limit / 1021; };
    for (int i = 0; i < 60; ++i) {
        discs.push_back({below(width),
                         below(height),
                         4 + below(std::max(width, height) / 12),
                         {below(256), below(256), below(256)},
                         i % 3 == 0 ? 24 : 0});
    }
    return discs;
}

unsigned char clamped(int value) {
    return static_cast<unsigned char>(std::clamp(value, 0, 255));
}

void draw_disc(std::vector<unsigned char>& pixels, int width, int height, const Disc& disc) {
    for (int y = std::max(0, disc.y - disc.radius); y < std::min(height, disc.y + disc.radius); ++y) {
        for (int x = std::max(0, disc.x - disc.radius); x < std::min(width, disc.x + disc.radius); ++x) {
            const int dx = x - disc.x;
            const int dy = y - disc.y;
            if (dx * dx + dy * dy > disc.radius * disc.radius) {
                continue;
            }
            unsigned char* pixel =
                &pixels[(static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)) * 4];
            const int texture = ((x >> 1) ^ (y / 3)) & 1 ? disc.texture : -disc.texture;
            for (int channel = 0; channel < 3; ++channel) {
                pixel[channel] = clamped(disc.colour[channel] + dy * 40 / disc.radius + texture);
            }
        }
    }
}

}  // namespace

std::vector<unsigned char> rgba_picture(int width, int height) {
    std::vector<unsigned char> pixels(static_cast<size_t>(width) * static_cast<size_t>(height) * 4, 255);
    size_t at = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, at += 4) {
            pixels[at] = clamped(40 + 120 * x / width);
            pixels[at + 1] = clamped(200 - 140 * y / height);
            pixels[at + 2] = clamped(230 - 90 * x / width - 90 * y / height);
        }
    }
    for (const Disc& disc : discs_of(width, height)) {
        draw_disc(pixels, width, height, disc);
    }
    NoiseSource noise;
    for (at = 0; at < pixels.size(); at += 4) {
        const int grain = noise.next() / 85;
        for (size_t channel = 0; channel < 3; ++channel) {
            pixels[at + channel] = clamped(pixels[at + channel] + grain);
        }
    }
    return pixels;
}

}  // namespace korvane::bench
