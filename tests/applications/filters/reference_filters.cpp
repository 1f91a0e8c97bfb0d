// SPDX-License-Identifier: Apache-2.0
#include "tests/applications/filters/reference_filters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace {

using Color = std::array<double, 4>;

// Linear filtering with the edges repeated; colors from 0 to 1.
Color sample(const ReferenceImage& image, double s, double t) {
    const double x = s * image.width - 0.5;
    const double y = t * image.height - 0.5;
    const double x0 = std::floor(x);
    const double y0 = std::floor(y);
    Color sum = {0, 0, 0, image.depth == 3 ? 1.0 : 0.0};
    for (int corner = 0; corner < 4; ++corner) {
        const double cx = x0 + corner % 2;
        const double cy = y0 + (corner >> 1);
        const double weight = (1 - std::abs(x - cx)) * (1 - std::abs(y - cy));
        const auto column = static_cast<size_t>(std::clamp(cx, 0.0, image.width - 1.0));
        const auto row = static_cast<size_t>(std::clamp(cy, 0.0, image.height - 1.0));
        const size_t at = (row * static_cast<size_t>(image.width) + column) * static_cast<size_t>(image.depth);
        for (size_t k = 0; k < static_cast<size_t>(image.depth); ++k) {
            sum[k] += weight * image.pixels[at + k] / 255.0;
        }
    }
    return sum;
}

using Shader = Color (*)(const ReferenceImage& input, double s, double t, const ReferenceParameters& p);

Color table(const ReferenceImage& input, double s, double t, const ReferenceParameters& p) {
    const Color color = sample(input, s, t);
    const double scale = 63.0 * 255.0 / 256.0;
    const double g = color[1] * scale;
    const double g0 = std::floor(g);
    const double b = std::clamp(color[2] * scale + g0 / 5.0, 1.0, 62.0);
    const Color low = sample(*p.table, (b + g0 * 64) / 4095.0, color[0]);
    const Color high = sample(*p.table, (b + (g0 + 1) * 64) / 4095.0, color[0]);
    Color out = {0, 0, 0, 1};
    for (size_t k = 0; k < 3; ++k) {
        out[k] = color[k] * (1 - p.strength) + (low[k] * (1 - (g - g0)) + high[k] * (g - g0)) * p.strength;
    }
    return out;
}

Color distorted(const ReferenceImage& input, double s, double t, const ReferenceParameters& p) {
    const double dx = s - p.centerx;
    const double dy = t - p.centery;
    const double distance = std::hypot(dx, dy);
    if (distance >= p.radius) {
        return sample(input, s, t);
    }
    const double part = (p.radius - distance) / p.radius;
    const double angle = p.strength * part * part;
    return sample(input, dx * std::cos(angle) + dy * std::sin(angle) + p.centerx,
                  -dx * std::sin(angle) + dy * std::cos(angle) + p.centery);
}

Color extrusion(const ReferenceImage& input, double s, double t, const ReferenceParameters& p) {
    const double dx = s - p.centerx;
    const double dy = t - p.centerx;
    const double factor = std::pow(dx * dx + dy * dy, p.strength) * p.zoom;
    return sample(input, dx * factor + p.centerx, dy * factor + p.centerx);
}

Color mirror(const ReferenceImage& input, double s, double t, const ReferenceParameters& p) {
    return sample(input, s > p.centerx ? 2 * p.centerx - s : s, t > p.centery ? 2 * p.centery - t : t);
}

Color temperature(const ReferenceImage& input, double s, double t, const ReferenceParameters&) {
    const Color c = sample(input, s, t);
    const double y = c[0] * 0.299 + c[1] * 0.587 + c[2] * 0.114;
    const auto hill = [y](double top) { return 1 - 16 * (y - top) * (y - top); };
    const double valley = 16 * (y - 0.5) * (y - 0.5);
    if (y > 0.75) {
        return {1, hill(0.75), 0, 1};
    }
    if (y > 0.5) {
        return {valley, 1, 0, 1};
    }
    return y > 0.25 ? Color{0, 1, valley, 1} : Color{0, hill(0.25), 1, 1};
}

Color timetunnel(const ReferenceImage& input, double s, double t, const ReferenceParameters& p) {
    const double dx = s - 0.5;
    const double dy = t - 0.5;
    const double squared = dx * dx + dy * dy;
    const double factor = squared > p.radius ? std::sqrt(p.radius / squared) : 1.0;
    return sample(input, factor * dx + 0.5, factor * dy + 0.5);
}

Color xray(const ReferenceImage& input, double s, double t, const ReferenceParameters&) {
    const Color c = sample(input, s, t);
    const double grey = 1 - (c[0] + c[1] + c[2]) / 3;
    return {grey, grey, grey, 1};
}

Color none(const ReferenceImage& input, double s, double t, const ReferenceParameters&) {
    return sample(input, s, t);
}

const std::map<std::string, Shader> kShaders = {
    {"None", none},
    {"Table", table},
    {"Distorted", distorted},
    {"Extrusion", extrusion},
    {"Mirror", mirror},
    {"Temperature", temperature},
    {"Timetunnel", timetunnel},
    {"Xray", xray},
};

}  // namespace

ReferenceImage reference_filter(const std::string& name, const ReferenceParameters& parameters,
                                const ReferenceImage& input, int width, int height) {
    const Shader shader = kShaders.at(name);
    ReferenceImage output{width, height, 4, {}};
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const double s = 1 - (row + 0.5) / height;
            const double t = 1 - (column + 0.5) / width;
            for (const double value : shader(input, s, t, parameters)) {
                output.pixels.push_back(static_cast<unsigned char>(std::lround(std::clamp(value, 0.0, 1.0) * 255)));
            }
        }
    }
    return output;
}

void expect_close(const ReferenceImage& expected, const std::vector<unsigned char>& pixels, int largest, double mean) {
    ASSERT_EQ(expected.pixels.size(), pixels.size());
    int worst = 0;
    double sum = 0;
    for (size_t i = 0; i < pixels.size(); ++i) {
        const int difference = std::abs(pixels[i] - expected.pixels[i]);
        worst = std::max(worst, difference);
        sum += difference;
    }
    EXPECT_LE(worst, largest);
    EXPECT_LE(sum / static_cast<double>(pixels.size()), mean);
}

ReferenceImage smooth_picture(int width, int height) {
    ReferenceImage image{width, height, 4, {}};
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const double x = (column + 0.5) / width;
            const double y = (row + 0.5) / height;
            const double channels[4] = {0.05 + 0.9 * x * (0.8 + 0.2 * y), 0.5 - 0.45 * std::cos(3 * x + y),
                                        0.9 - 0.7 * y * y - 0.1 * x, 0.6 + 0.3 * y};
            for (const double value : channels) {
                image.pixels.push_back(static_cast<unsigned char>(std::lround(value * 255)));
            }
        }
    }
    return image;
}
