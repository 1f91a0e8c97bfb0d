// SPDX-License-Identifier: Apache-2.0
// What the drawn pictures are made of: points, paints, and shapes given by their distance.
#ifndef KORVANE_TOOLS_DRAWING_H_
#define KORVANE_TOOLS_DRAWING_H_

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace korvane::drawing {

// Lengths are in picture heights: y runs down from 0 to 1, x to the right from 0 to width / height.
struct Point {
    float x;
    float y;
};

struct Paint {
    float red;
    float green;
    float blue;
};

inline Paint mix(Paint a, Paint b, float t) {
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t};
}

inline Paint scale(Paint paint, float factor) {
    return {paint.red * factor, paint.green * factor, paint.blue * factor};
}

inline float unit(float value) {
    return std::clamp(value, 0.0f, 1.0f);
}

// Evenly spread over 0 to 1, one value a grid cell.
inline float noise(int x, int y) {
    uint32_t hash = static_cast<uint32_t>(x) * 0x9E3779B1u ^ static_cast<uint32_t>(y) * 0x85EBCA77u;
    hash = (hash ^ (hash >> 15)) * 0x2C1B3C6Du;
    hash = (hash ^ (hash >> 12)) * 0x297A2D39u;
    return static_cast<float>((hash ^ (hash >> 15)) >> 8) * (1.0f / 16777216.0f);
}

inline int cell(float position, float cellsPerHeight) {
    return static_cast<int>(std::floor(position * cellsPerHeight));
}

// Distances are negative inside a shape; half a pixel around 0 is blended, which smooths the edges.
inline float disc(Point p, Point centre, float radius) {
    return std::hypot(p.x - centre.x, p.y - centre.y) - radius;
}

inline float box(Point p, Point topLeft, Point bottomRight) {
    return std::max(std::max(topLeft.x - p.x, p.x - bottomRight.x), std::max(topLeft.y - p.y, p.y - bottomRight.y));
}

// The left side of the line from `a` to `b` is outside.
inline float beside(Point p, Point a, Point b) {
    const float dx = b.x - a.x;
    const float dy = b.y - a.y;
    return (dy * (p.x - a.x) - dx * (p.y - a.y)) / std::hypot(dx, dy);
}

inline float triangle(Point p, Point a, Point b, Point c) {
    return std::max(std::max(beside(p, a, b), beside(p, b, c)), beside(p, c, a));
}

inline float ellipse(Point p, Point centre, Point radii) {
    return (std::hypot((p.x - centre.x) / radii.x, (p.y - centre.y) / radii.y) - 1.0f) * std::min(radii.x, radii.y);
}

// Smooth between the values of `noise`, in cells of size 1.
inline float soft_noise(float x, float y) {
    const float left = std::floor(x);
    const float top = std::floor(y);
    const auto column = static_cast<int>(left);
    const auto row = static_cast<int>(top);
    const auto ease = [](float t) { return t * t * (3.0f - 2.0f * t); };
    const float u = ease(x - left);
    const float v = ease(y - top);
    return std::lerp(std::lerp(noise(column, row), noise(column + 1, row), u),
                     std::lerp(noise(column, row + 1), noise(column + 1, row + 1), u), v);
}

// Near 1 in the centre, fading out over about `radii`.
inline float glow(Point p, Point centre, Point radii) {
    const float x = (p.x - centre.x) / radii.x;
    const float y = (p.y - centre.y) / radii.y;
    return std::exp(-(x * x + y * y));
}

// Lays shapes over what is there.
class Brush {
  public:
    explicit Brush(float pixelsPerHeight) : m_PixelsPerHeight(pixelsPerHeight) {}

    Paint over(Paint below, Paint above, float distance) const {
        return mix(below, above, unit(0.5f - distance * m_PixelsPerHeight));
    }

  private:
    float m_PixelsPerHeight;
};

}  // namespace korvane::drawing

#endif  // KORVANE_TOOLS_DRAWING_H_
