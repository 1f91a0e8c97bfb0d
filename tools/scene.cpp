// SPDX-License-Identifier: Apache-2.0
#include "tools/scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>

#include "tools/drawing.h"
#include "tools/portrait.h"

namespace korvane {
namespace {

using namespace drawing;

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

class House : Brush {
  public:
    using Brush::Brush;

    Paint at(Point p) const {
        Paint paint = sky(p);
        paint = hills(p, paint);
        paint = kite(p, paint);
        paint = meadow(p, paint);
        paint = tree(p, paint);
        paint = fence(p, paint);
        paint = house(p, paint);
        return board(p, paint);
    }

  private:
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

    // Saturated colours in the sky, and a line as thin as a pixel or two.
    Paint kite(Point p, Paint paint) const {
        const float along = unit((p.y - 0.26f) / 0.4f);
        const float string = 1.03f + 0.09f * along * along + 0.012f * std::sin(along * 9.0f);
        paint = over(paint, {246, 240, 232}, std::max(std::abs(p.x - string) - 0.0011f, box(p, {1, 0.26f}, {2, 0.7f})));
        for (const float knot : {0.32f, 0.37f, 0.42f}) {
            const float place = (knot - 0.26f) / 0.4f;
            const Point centre = {1.03f + 0.09f * place * place + 0.012f * std::sin(place * 9.0f), knot};
            paint = over(paint, {250, 190, 50}, std::abs(p.x - centre.x) * 0.5f + std::abs(p.y - centre.y) - 0.007f);
        }
        const Point top = {1.06f, 0.15f};
        const Point right = {1.105f, 0.215f};
        const Point bottom = {1.03f, 0.27f};
        const Point left = {1.01f, 0.19f};
        paint = over(paint, {214, 40, 120}, triangle(p, top, bottom, left));
        return over(paint, {250, 120, 60}, triangle(p, top, right, bottom));
    }

    // Its pickets come closer to the right: they show how sharp a picture is.
    Paint fence(Point p, Paint paint) const {
        const float from = p.x - 1.27f;
        if (from < 0.0f) {
            return paint;
        }
        const float wood = 0.9f + 0.1f * noise(cell(p.x, 300), cell(p.y, 30));
        for (const float rail : {0.735f, 0.78f}) {
            paint = over(paint, scale({214, 206, 190}, wood), std::abs(p.y - rail) - 0.004f);
        }
        const float count = 26.0f * from * (1.0f + 1.2f * from);
        const float width = 1.0f / (26.0f * (1.0f + 2.4f * from));
        const float offset = (count - std::floor(count) - 0.5f) * width;
        const float side = std::abs(offset) - 0.3f * width;
        const float end = std::max(0.71f - width * 0.3f + std::abs(offset) - p.y, p.y - 0.815f);
        return over(paint, scale({250, 246, 236}, wood), std::max(side, end));
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
        return on_text(p, {0.8519f, 0.7113f}, 0.0082f, "KORVANE", 7) ? Paint{26, 30, 48} : paint;
    }
};

unsigned char to_byte(float value) {
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0f, 255.0f)));
}

template <class Picture>
void draw(const Picture& picture, Image& image) {
    unsigned char* out = image.getPlanes()[0];
    const auto pixelsPerHeight = static_cast<float>(image.getHeight());
    for (uint32_t y = 0; y < image.getHeight(); ++y) {
        for (uint32_t x = 0; x < image.getWidth(); ++x, out += 3) {
            const Point centre = {(static_cast<float>(x) + 0.5f) / pixelsPerHeight,
                                  (static_cast<float>(y) + 0.5f) / pixelsPerHeight};
            const Paint paint = picture.at(centre);
            out[0] = to_byte(paint.red);
            out[1] = to_byte(paint.green);
            out[2] = to_byte(paint.blue);
        }
    }
}

}  // namespace

auto_ptr<Image> draw_scene(uint32_t width, uint32_t height, SceneSubject subject) {
    auto_ptr<Image> image(Image::createImage(width, height, 1, IMAGE_FORMAT_TYPE_RGB, nullptr));
    if (image->getPlanes()[0] == nullptr) {
        return image;
    }
    const auto pixelsPerHeight = static_cast<float>(height);
    if (subject == SceneSubject::kPortrait) {
        draw(Portrait(pixelsPerHeight, static_cast<float>(width) / pixelsPerHeight / 2), *image);
    } else {
        draw(House(pixelsPerHeight), *image);
    }
    return image;
}

}  // namespace korvane
