// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/palette.h"

#include <algorithm>
#include <limits>
#include <new>

#include "applications/gif_maker/color_quantizer.h"

namespace korvane {
namespace {

// The error of each channel, in sixteenths, for one row and a pixel on either side of it.
using ErrorRow = std::vector<std::array<int, 3>>;

Bytes dither_pixels(const Photo& photo, const std::vector<Rgb>& palette, NearestEntry& nearest) {
    const size_t width = photo.image->getWidth();
    Bytes indices(photo.pixelCount());
    ErrorRow row(width + 2);
    ErrorRow next(width + 2);
    const unsigned char* pixel = photo.pixels();
    for (size_t i = 0; i < indices.size(); ++i, pixel += 3) {
        const size_t x = i % width + 1;
        Rgb wanted;
        for (size_t c = 0; c < 3; ++c) {
            wanted[c] = static_cast<unsigned char>(std::clamp(pixel[c] + (row[x][c] + 8) / 16, 0, 255));
        }
        indices[i] = static_cast<unsigned char>(nearest(wanted.data()));
        const Rgb& taken = palette[indices[i]];
        for (size_t c = 0; c < 3; ++c) {
            // The shares of Floyd and Steinberg.
            const int error = wanted[c] - taken[c];
            row[x + 1][c] += error * 7;
            next[x - 1][c] += error * 3;
            next[x][c] += error * 5;
            next[x + 1][c] += error;
        }
        if (x == width) {
            row.swap(next);
            std::fill(next.begin(), next.end(), std::array<int, 3>{});
        }
    }
    return indices;
}

}  // namespace

std::vector<Rgb> make_palette(const std::vector<Photo>& photos, int colors) {
    size_t rows = 0;
    for (const Photo& photo : photos) {
        rows += photo.image->getHeight();
    }
    if (rows > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        throw std::bad_alloc();
    }
    ColorQuantizer quantizer;
    quantizer.prepare(static_cast<int32_t>(photos.front().image->getWidth()), static_cast<int32_t>(rows));
    for (const Photo& photo : photos) {
        const unsigned char* const end = photo.pixels() + photo.pixelCount() * 3;
        for (const unsigned char* pixel = photo.pixels(); pixel != end; pixel += 3) {
            quantizer.addColor(pixel[0], pixel[1], pixel[2]);
        }
    }
    std::vector<Rgb> palette;
    for (const Color& color : quantizer.getPalette(colors)) {
        palette.push_back({static_cast<unsigned char>(color.red), static_cast<unsigned char>(color.green),
                           static_cast<unsigned char>(color.blue)});
    }
    if (palette.empty()) {
        throw std::bad_alloc();
    }
    return palette;
}

size_t NearestEntry::operator()(const unsigned char* rgb) {
    uint16_t& entry = m_Known[static_cast<size_t>(rgb[0]) << 16 | static_cast<size_t>(rgb[1]) << 8 | rgb[2]];
    if (entry == kUnknown) {
        const auto distance = [rgb](const Rgb& color) {
            const int red = rgb[0] - color[0];
            const int green = rgb[1] - color[1];
            const int blue = rgb[2] - color[2];
            return red * red + green * green + blue * blue;
        };
        const auto found = std::min_element(m_Palette.begin(), m_Palette.end(),
                                            [&](const Rgb& a, const Rgb& b) { return distance(a) < distance(b); });
        entry = static_cast<uint16_t>(found - m_Palette.begin());
    }
    return entry;
}

Bytes index_pixels(const Photo& photo, const std::vector<Rgb>& palette, NearestEntry& nearest, bool dithers) {
    if (dithers) {
        return dither_pixels(photo, palette, nearest);
    }
    Bytes indices(photo.pixelCount());
    for (size_t i = 0; i < indices.size(); ++i) {
        indices[i] = static_cast<unsigned char>(nearest(photo.pixels() + 3 * i));
    }
    return indices;
}

}  // namespace korvane
