// SPDX-License-Identifier: Apache-2.0
#include "tools/scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>

namespace korvane {
namespace {

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

Paint mix(Paint a, Paint b, float t) {
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t};
}

Paint scale(Paint paint, float factor) {
    return {paint.red * factor, paint.green * factor, paint.blue * factor};
}

float unit(float value) {
    return std::clamp(value, 0.0f, 1.0f);
}

// Evenly spread over 0 to 1, one value a grid cell.
float noise(int x, int y) {
    uint32_t hash = static_cast<uint32_t>(x) * 0x9E3779B1u ^ static_cast<uint32_t>(y) * 0x85EBCA77u;
    hash = (hash ^ (hash >> 15)) * 0x2C1B3C6Du;
    hash = (hash ^ (hash >> 12)) * 0x297A2D39u;
    return static_cast<float>((hash ^ (hash >> 15)) >> 8) * (1.0f / 16777216.0f);
}

int cell(float position, float cellsPerHeight) {
    return static_cast<int>(std::floor(position * cellsPerHeight));
}

// Distances are negative inside a shape; half a pixel around 0 is blended, which smooths the edges.
float disc(Point p, Point centre, float radius) {
    return std::hypot(p.x - centre.x, p.y - centre.y) - radius;
}

float box(Point p, Point topLeft, Point bottomRight) {
    return std::max(std::max(topLeft.x - p.x, p.x - bottomRight.x), std::max(topLeft.y - p.y, p.y - bottomRight.y));
}

// The left side of the line from `a` to `b` is outside.
float beside(Point p, Point a, Point b) {
    const float dx = b.x - a.x;
    const float dy = b.y - a.y;
    return (dy * (p.x - a.x) - dx * (p.y - a.y)) / std::hypot(dx, dy);
}

float triangle(Point p, Point a, Point b, Point c) {
    return std::max(std::max(beside(p, a, b), beside(p, b, c)), beside(p, c, a));
}

constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 7;

struct Glyph {
    char letter;
    std::array<uint8_t, kGlyphHeight> rows;
};

// Block letters for the board, one byte a row, the highest of five bits at the left.
constexpr Glyph kGlyphs[] = {
    {'K', {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11}}, {'O', {0x0E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}},
    {'R', {0x1E, 0x11, 0x11, 0x1E, 0x14, 0x12, 0x11}}, {'V', {0x11, 0x11, 0x11, 0x11, 0x11, 0x0A, 0x04}},
    {'A', {0x0E, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}}, {'N', {0x11, 0x19, 0x15, 0x13, 0x11, 0x11, 0x11}},
    {'E', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F}},
};

bool glyph_bit(char letter, int column, int row) {
    for (const Glyph& glyph : kGlyphs) {
        if (glyph.letter == letter) {
            return (glyph.rows[static_cast<size_t>(row)] >> (kGlyphWidth - 1 - column) & 1) != 0;
        }
    }
    return false;
}

// The letters of a line that starts at `start`, its dots `dot` wide.
bool on_text(Point p, Point start, float dot, const char* text, int length) {
    const int column = static_cast<int>(std::floor((p.x - start.x) / dot));
    const int row = static_cast<int>(std::floor((p.y - start.y) / dot));
    constexpr int kAdvance = kGlyphWidth + 1;
    if (column < 0 || column >= length * kAdvance || row < 0 || row >= kGlyphHeight) {
        return false;
    }
    return column % kAdvance < kGlyphWidth && glyph_bit(text[column / kAdvance], column % kAdvance, row);
}

class Scene {
  public:
    explicit Scene(float pixelsPerHeight) : m_PixelsPerHeight(pixelsPerHeight) {}

    Paint at(Point p) const {
        Paint paint = sky(p);
        paint = hills(p, paint);
        paint = meadow(p, paint);
        paint = tree(p, paint);
        paint = house(p, paint);
        return board(p, paint);
    }

  private:
    Paint over(Paint below, Paint above, float distance) const {
        return mix(below, above, unit(0.5f - distance * m_PixelsPerHeight));
    }

    Paint sky(Point p) const {
        Paint paint = mix({58, 108, 186}, {246, 214, 180}, unit(p.y * 1.5f + p.x * 0.08f));
        const float sun = disc(p, {1.36f, 0.2f}, 0.075f);
        paint = mix(paint, {255, 236, 170}, 0.75f * std::exp(-std::max(sun, 0.0f) * 11.0f));
        paint = over(paint, {255, 250, 224}, sun);
        for (const Point& cloud :
             {Point{0.3f, 0.17f}, Point{0.38f, 0.145f}, Point{0.46f, 0.175f}, Point{0.94f, 0.1f}}) {
            const float depth = unit(1.0f - std::hypot((p.x - cloud.x) * 0.8f, (p.y - cloud.y) * 1.9f) * 11.0f);
            paint = mix(paint, {255, 252, 248}, 0.85f * depth);
        }
        return paint;
    }

    Paint hills(Point p, Paint paint) const {
        const float far = 0.5f + 0.05f * std::sin(p.x * 4.1f + 0.6f) + 0.02f * std::sin(p.x * 11.0f);
        const float near = 0.58f + 0.045f * std::sin(p.x * 2.7f + 2.4f) + 0.012f * std::sin(p.x * 17.0f);
        paint = over(paint, mix({104, 126, 170}, {150, 160, 182}, unit((p.y - far) * 7.0f)), far - p.y);
        return over(paint, mix({62, 104, 92}, {96, 140, 92}, unit((p.y - near) * 8.0f)), near - p.y);
    }

    Paint meadow(Point p, Paint paint) const {
        const float edge = 0.68f - 0.03f * p.x;
        const float depth = unit((p.y - edge) * 3.4f);
        const float blades =
            noise(cell(p.x, 700), cell(p.y, 240)) * 0.4f + noise(cell(p.x, 160), cell(p.y, 60)) * 0.25f;
        Paint grass = scale(mix({128, 166, 70}, {44, 112, 40}, depth), 0.68f + blades);
        if (noise(cell(p.x, 110) + 900, cell(p.y, 110)) > 0.975f) {
            grass = mix(grass, noise(cell(p.x, 110), 7) > 0.5f ? Paint{228, 52, 70} : Paint{250, 220, 60}, depth);
        }
        return over(paint, grass, edge - p.y);
    }

    Paint tree(Point p, Paint paint) const {
        paint = over(paint, scale({104, 72, 46}, 0.8f + 0.4f * noise(cell(p.x, 260), cell(p.y, 50))),
                     box(p, {1.5f, 0.52f}, {1.535f, 0.78f}));
        for (const Point& crown : {Point{1.46f, 0.5f}, Point{1.58f, 0.48f}, Point{1.52f, 0.4f}}) {
            const float light = 0.62f + 0.5f * noise(cell(p.x, 130), cell(p.y, 130)) - 0.7f * (p.y - crown.y + 0.05f);
            paint = over(paint, scale({70, 150, 62}, light), disc(p, crown, 0.095f));
        }
        return paint;
    }

    Paint house(Point p, Paint paint) const {
        const float planks = std::fmod(p.y * 60.0f, 1.0f) < 0.12f ? 0.84f : 1.0f;
        paint = over(paint, scale(mix({236, 222, 196}, {196, 172, 150}, unit((p.x - 0.2f) * 2.2f)), planks),
                     box(p, {0.2f, 0.46f}, {0.62f, 0.8f}));
        const float shingles =
            0.74f + 0.5f * noise(cell(p.x + 0.01f * static_cast<float>(cell(p.y, 50) % 2), 46), cell(p.y, 50));
        paint =
            over(paint, scale({182, 62, 48}, shingles), triangle(p, {0.15f, 0.47f}, {0.36f, 0.27f}, {0.67f, 0.47f}));
        paint = over(paint, {98, 74, 66}, box(p, {0.5f, 0.25f}, {0.545f, 0.39f}));
        paint = over(paint, {52, 84, 120}, box(p, {0.26f, 0.6f}, {0.345f, 0.8f}));
        paint = over(paint, {240, 200, 90}, disc(p, {0.332f, 0.705f}, 0.008f));
        paint = over(paint, {250, 246, 236}, box(p, {0.42f, 0.54f}, {0.56f, 0.67f}));
        paint = over(paint, mix({40, 60, 96}, {150, 186, 214}, unit((p.x - p.y + 0.2f) * 4.0f)),
                     std::max(box(p, {0.43f, 0.55f}, {0.55f, 0.66f}), 0.004f - std::abs(p.x - 0.49f)));
        return paint;
    }

    Paint board(Point p, Paint paint) const {
        paint = over(paint, {120, 88, 58}, box(p, {0.86f, 0.76f}, {0.88f, 0.95f}));
        paint = over(paint, {120, 88, 58}, box(p, {1.16f, 0.76f}, {1.18f, 0.95f}));
        paint = over(paint, {250, 248, 240}, box(p, {0.82f, 0.64f}, {1.22f, 0.84f}));
        paint = over(paint, {30, 36, 60}, std::abs(box(p, {0.832f, 0.652f}, {1.208f, 0.828f})) - 0.002f);
        if (on_text(p, {0.853f, 0.675f}, 0.0082f, "KORVANE", 7)) {
            paint = {26, 30, 48};
        }
        // Text too small to read and lines that meet in one point: they show how sharp a picture is.
        if (on_text(p, {0.853f, 0.755f}, 0.0024f, "NERVEAKORVANERAVEN", 18)) {
            paint = {60, 40, 90};
        }
        if (box(p, {0.853f, 0.785f}, {1.13f, 0.815f}) < 0.0f &&
            std::fmod((p.x - 0.853f) * (40.0f + 500.0f * (p.x - 0.853f)), 1.0f) < 0.5f) {
            paint = {20, 20, 24};
        }
        return over(paint, {214, 40, 120}, triangle(p, {1.14f, 0.815f}, {1.14f, 0.785f}, {1.19f, 0.815f}));
    }

    float m_PixelsPerHeight;
};

unsigned char to_byte(float value) {
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0f, 255.0f)));
}

}  // namespace

auto_ptr<Image> draw_scene(uint32_t width, uint32_t height) {
    auto_ptr<Image> image(Image::createImage(width, height, 1, IMAGE_FORMAT_TYPE_RGB, nullptr));
    unsigned char* out = image->getPlanes()[0];
    if (out == nullptr) {
        return image;
    }
    const float pixelsPerHeight = static_cast<float>(height);
    const Scene scene(pixelsPerHeight);
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x, out += 3) {
            const Point centre = {(static_cast<float>(x) + 0.5f) / pixelsPerHeight,
                                  (static_cast<float>(y) + 0.5f) / pixelsPerHeight};
            const Paint paint = scene.at(centre);
            out[0] = to_byte(paint.red);
            out[1] = to_byte(paint.green);
            out[2] = to_byte(paint.blue);
        }
    }
    return image;
}

}  // namespace korvane
