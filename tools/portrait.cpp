// SPDX-License-Identifier: Apache-2.0
#include "tools/portrait.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace korvane {

using namespace drawing;

namespace {

// The chin is narrower than the brow.
float face(Point p) {
    const float down = unit((p.y - 0.44f) * 4.0f);
    return ellipse(p, {0, 0.46f}, {0.196f - 0.022f * down * down, 0.256f});
}

float fringe(Point p) {
    const float line = 0.338f - 0.5f * (p.x + 0.03f) * (p.x + 0.03f) + 0.06f * p.x;
    return p.y - line - 0.004f * std::sin(p.x * 90.0f) - 0.003f * std::sin(p.x * 210.0f);
}

// All the hair, to its hem.
float mane(Point p) {
    const float wave = 0.01f * std::sin(p.y * 26.0f + (p.x > 0 ? 0.5f : 1.6f)) * unit((p.y - 0.4f) * 6.0f);
    const float side = std::abs(p.x) - 0.27f - wave;
    const float hem = p.y - 0.752f + 3.2f * (std::abs(p.x) - 0.19f) * (std::abs(p.x) - 0.19f);
    return std::max(hem, p.y < 0.4f ? ellipse(p, {0, 0.4f}, {0.27f, 0.31f}) : side);
}

// A stroke that sags or arches, thinner towards its ends.
float curve(Point p, Point middle, float halfWidth, float sag, float thickness) {
    const float across = (p.x - middle.x) / halfWidth;
    const float taper = thickness * (1.0f - across * across);
    return std::max(std::abs(p.y - middle.y + sag * (1.0f - across * across)) - taper,
                    std::abs(p.x - middle.x) - halfWidth);
}

}  // namespace

// Everything below has its origin in the middle of the upper edge.
Paint Portrait::at(Point p) const {
    p.x -= m_Centre;
    Paint paint = lights(p);
    const Paint strands = hair(p);
    paint = over(paint, scale(strands, 0.5f), std::max(mane(p), p.y - 0.715f));
    const float neckWidth = 0.088f + 0.4f * std::max(0.0f, p.y - 0.76f);
    paint = over(paint, scale(skin(p), 0.86f - 0.36f * glow(p, {0.02f, 0.7f}, {0.14f, 0.075f})),
                 std::max(std::abs(p.x) - neckWidth, 0.62f - p.y));
    const float collar = p.y - 0.815f - 0.035f * std::cos(p.x * 13.0f) + 0.01f;
    const float shoulder = 0.875f + 0.2f * p.x * p.x + 0.35f * std::pow(std::abs(p.x), 5.0f) * 6.0f;
    const float body = std::min(std::max(shoulder - p.y, std::abs(p.x) - 0.8f),
                                std::max(-collar, std::abs(p.x) - 0.143f - 0.35f * std::max(0.0f, p.y - 0.8f)));
    paint = over(paint, wool(p), body);
    if (face(p) < 0.01f) {
        paint = over(paint, skin(p), face(p));
        for (const float side : {-1.0f, 1.0f}) {
            paint = eye(p, {0.079f * side, 0.452f}, paint);
            const Point brow = {p.x * side, p.y};
            paint = mix(paint, hair(p),
                        0.85f * unit(0.5f - curve(brow, {0.083f, 0.402f}, 0.048f, 0.014f, 0.0075f) * 300.0f));
        }
        paint = mouth(p, paint);
    }
    const float window = std::max(-fringe(p), std::abs(p.x) - 0.17f - 0.02f * std::sin(p.y * 8.0f + 4.0f));
    return over(paint, strands, std::max(mane(p), -window));
}

Paint Portrait::lights(Point p) const {
    Paint paint = mix({38, 66, 84}, {18, 30, 44}, unit(p.y * 1.1f));
    paint = mix(paint, {206, 140, 84}, 0.5f * glow(p, {0.55f, 0.32f}, {0.42f, 0.4f}));
    paint = mix(paint, {70, 130, 140}, 0.45f * glow(p, {-0.6f, 0.2f}, {0.4f, 0.36f}));
    struct Light {
        Point centre;
        float radius;
        Paint paint;
    };
    for (const Light& light :
         {Light{{-0.72f, 0.2f}, 0.085f, {120, 200, 196}}, Light{{-0.52f, 0.42f}, 0.06f, {98, 168, 178}},
          Light{{-0.44f, 0.1f}, 0.05f, {170, 214, 200}}, Light{{-0.8f, 0.6f}, 0.07f, {64, 118, 136}},
          Light{{0.42f, 0.14f}, 0.07f, {255, 190, 110}}, Light{{0.6f, 0.36f}, 0.1f, {255, 160, 84}},
          Light{{0.8f, 0.12f}, 0.06f, {250, 208, 150}}, Light{{0.46f, 0.62f}, 0.055f, {224, 120, 84}},
          Light{{0.8f, 0.66f}, 0.08f, {196, 100, 76}}}) {
        const float distance = disc(p, light.centre, light.radius);
        const float rim = 0.14f * std::exp(-std::abs(distance) * 90.0f);
        paint = mix(paint, light.paint, (0.42f + rim) * unit(0.5f - distance * 55.0f));
    }
    return paint;
}

// Strands run down from the parting; the light lies on the crown.
Paint Portrait::hair(Point p) const {
    const float across = p.x / (0.25f + 0.25f * unit(p.y - 0.1f)) + 0.05f * std::sin(p.y * 16.0f + p.x * 6.0f);
    const float strand =
        0.55f * soft_noise(across * 90.0f, p.y * 5.0f) + 0.45f * soft_noise(across * 230.0f + 50.0f, p.y * 9.0f);
    const float shine = 0.5f * glow(p, {-0.1f, 0.2f}, {0.16f, 0.07f}) + 0.22f * glow(p, {-0.22f, 0.5f}, {0.06f, 0.16f});
    return mix(scale({104, 58, 36}, 0.42f + 0.75f * strand), {232, 164, 112}, unit(shine * (0.35f + strand)));
}

Paint Portrait::skin(Point p) const {
    const float x = p.x / 0.235f;
    const float y = (p.y - 0.47f) / 0.32f;
    const float depth = std::sqrt(std::max(0.04f, 1.0f - x * x - y * y));
    const float light = 0.6f - 0.3f * x - 0.24f * y + 0.34f * depth;
    Paint paint = mix({120, 62, 46}, {255, 214, 184}, unit(0.18f + 0.66f * light));
    for (const float side : {-1.0f, 1.0f}) {
        paint = mix(paint, {222, 104, 88}, 0.3f * glow(p, {0.105f * side, 0.54f}, {0.052f, 0.04f}));
        paint = mix(paint, {132, 70, 54}, 0.34f * glow(p, {0.079f * side, 0.438f}, {0.056f, 0.03f}));
        paint = mix(paint, {108, 50, 40}, 0.55f * glow(p, {0.019f * side, 0.5635f}, {0.011f, 0.006f}));
    }
    // The nose: a shadow at its side, a light along its ridge.
    paint = mix(paint, {150, 82, 62}, 0.34f * glow(p, {0.026f, 0.505f}, {0.016f, 0.06f}));
    paint = mix(paint, {255, 232, 210}, 0.4f * glow(p, {-0.004f, 0.5f}, {0.011f, 0.055f}));
    paint = mix(paint, {255, 238, 220}, 0.5f * glow(p, {-0.006f, 0.542f}, {0.013f, 0.012f}));
    paint = mix(paint, {140, 74, 56}, 0.34f * glow(p, {0, 0.572f}, {0.034f, 0.007f}));
    paint = mix(paint, {140, 70, 56}, 0.3f * glow(p, {0, 0.664f}, {0.05f, 0.01f}));
    paint = mix(paint, {255, 226, 200}, 0.25f * glow(p, {-0.015f, 0.688f}, {0.03f, 0.02f}));
    paint = mix(paint, {110, 58, 44}, 0.4f * unit(2.2f - fringe(p) * 40.0f));
    // Freckles where the sun falls, pores everywhere.
    const int column = cell(p.x, 95);
    const int row = cell(p.y, 95);
    if (noise(column + 31, row) > 0.55f) {
        const Point spot = {(static_cast<float>(column) + 0.16f + 0.68f * noise(column, row + 7)) / 95.0f,
                            (static_cast<float>(row) + 0.16f + 0.68f * noise(column + 5, row)) / 95.0f};
        const float sun = glow(p, {-0.07f, 0.525f}, {0.07f, 0.032f}) + glow(p, {0.07f, 0.525f}, {0.07f, 0.032f}) +
                          0.7f * glow(p, {0, 0.52f}, {0.03f, 0.03f});
        paint = mix(paint, {150, 84, 56}, 0.6f * unit(sun) * unit(0.5f - disc(p, spot, 0.0016f) * 700.0f));
    }
    return scale(paint, 0.975f + 0.05f * soft_noise(p.x * 420.0f, p.y * 420.0f));
}

Paint Portrait::wool(Point p) const {
    const float fold = p.y > 0.9f ? p.y - 0.12f * std::cos(p.x * 3.0f) : p.y * 0.4f;
    const float stitch = std::abs(std::fmod(std::abs(p.x) * 62.0f, 1.0f) - 0.5f);
    const float knit = 0.5f + 0.5f * std::sin((fold + stitch * 0.011f) * 520.0f);
    const float light = 0.86f - 0.5f * p.x - 0.25f * unit((p.y - 0.84f) * 4.0f);
    const float wale = 0.62f + 0.38f * std::sin(stitch * 3.14f);
    const float fuzz = 0.9f + 0.2f * soft_noise(p.x * 300.0f, p.y * 300.0f);
    return scale({214, 158, 62}, light * fuzz * wale * (0.72f + 0.34f * knit));
}

Paint Portrait::eye(Point p, Point centre, Paint paint) const {
    const float outer = centre.x > 0 ? 1.0f : -1.0f;
    const Point q = {p.x - centre.x, p.y - centre.y - (-0.05f * outer) * (p.x - centre.x)};
    const float lid = std::max(disc(q, {0, 0.0275f}, 0.0445f), disc(q, {0, -0.033f}, 0.048f));
    paint = mix(paint, {120, 62, 50},
                0.5f * unit(1.0f - std::abs(disc(q, {0, 0.026f}, 0.055f)) * 260.0f) * unit(-q.y * 90.0f - 0.6f));
    Paint ball =
        scale({240, 234, 228}, 1.0f - 0.34f * unit((-q.y + 0.002f) * 60.0f) - 0.1f * unit(std::abs(q.x) * 30.0f));
    const float iris = disc(q, {0, -0.0035f}, 0.0165f);
    const float rays = 0.8f + 0.4f * soft_noise(std::atan2(q.y + 0.0035f, q.x) * 12.0f, 3.0f);
    const Paint green = mix({150, 160, 84}, {52, 96, 84}, unit((iris + 0.0165f) * 80.0f));
    ball = over(ball, scale(green, rays * (0.78f + 14.0f * unit(q.y + 0.012f))), iris);
    ball = mix(ball, {26, 44, 44}, 0.7f * unit(1.0f - std::abs(iris) * 500.0f));
    ball = over(ball, {14, 14, 18}, disc(q, {0, -0.0035f}, 0.0072f));
    ball = over(ball, {255, 255, 255}, disc(q, {-0.006f, -0.0095f}, 0.0036f));
    paint = over(paint, ball, lid);
    const float lash = std::max(
        std::abs(disc(q, {0, 0.0275f}, 0.0448f)) - 0.0026f - 0.0016f * unit(q.x * outer * 40.0f), q.y - 0.001f);
    return over(paint, {44, 24, 20}, std::max(lash, std::abs(q.x) - 0.0375f));
}

Paint Portrait::mouth(Point p, Paint paint) const {
    const float across = p.x / 0.066f;
    const float reach = std::max(0.0f, 1.0f - across * across);
    const float part = 0.624f - 0.010f * across * across + 0.0015f * std::cos(p.x * 120.0f);
    const float bow = 0.013f * reach - 0.0035f * std::exp(-p.x * p.x * 9000.0f);
    const float upper = std::max(part - bow - p.y, p.y - part);
    const float lower = std::max(part - p.y, p.y - part - 0.022f * reach);
    const float crease = 0.92f + 0.14f * soft_noise(p.x * 330.0f, p.y * 30.0f);
    paint = over(paint, scale({166, 66, 62}, crease), std::max(upper, std::abs(p.x) - 0.066f));
    Paint full = scale({206, 94, 86}, crease);
    full = mix(full, {255, 208, 196}, 0.55f * glow(p, {-0.012f, 0.6335f}, {0.022f, 0.0045f}));
    paint = over(paint, full, std::max(lower, std::abs(p.x) - 0.066f));
    return mix(paint, {84, 26, 28}, 0.85f * unit(1.0f - std::abs(p.y - part) * 420.0f) * unit(reach * 5.0f));
}

}  // namespace korvane
