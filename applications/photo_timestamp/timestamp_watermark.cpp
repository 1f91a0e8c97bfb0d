// SPDX-License-Identifier: Apache-2.0
#include "applications/photo_timestamp/timestamp_watermark.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>

#include "frameworks/core/memory.h"
#include "frameworks/images/color_convert.h"

namespace {

struct GallocFree {
    void operator()(unsigned char* block) const { galloc_free(block); }
};
using Buffer = std::unique_ptr<unsigned char, GallocFree>;

// The frame that a set of glyphs was drawn for: its sides and the stamp's distance from the corner, in pixels.
struct Reference {
    int64_t longSide;
    int64_t shortSide;
    int64_t margin;
};

constexpr Reference kReferences[2] = {{5248, 3936, 200}, {4608, 2592, 150}};

int ratio_type_of(int64_t longSide, int64_t shortSide) {
    return std::abs(longSide * 100 / shortSide - 177) < 5 ? 1 : 0;
}

struct Extent {
    int width;
    int height;
};

// The size of a text in pixels; 0 x 0 when a character has no glyph or the text is too long for an int.
Extent measure(const char* text, TimestampSymbolFunc lookup) {
    int64_t width = 0;
    int height = 0;
    for (const char* c = text; *c != '\0'; ++c) {
        const Symbol* symbol = lookup(*c);
        if (symbol == nullptr) {
            return {};
        }
        width += symbol->width;
        height = std::max(height, symbol->height);
    }
    // YUYV shares chroma between two columns.
    width += width & 1;
    return width > std::numeric_limits<int>::max() ? Extent{} : Extent{static_cast<int>(width), height};
}

// Where the stamp lies in the frame: columns from x, rows from y, the end row excluded.
struct Placement {
    int64_t x;
    int64_t y;
    int64_t width;
    int64_t height;
};

Placement place_stamp(int width, int height, int stripWidth, int stripHeight, const Reference& reference) {
    const int64_t longSide = std::max(width, height);
    const int64_t shortSide = std::min(width, height);
    Placement stamp{};
    stamp.width = stripWidth * longSide / reference.longSide;
    stamp.width += stamp.width & 1;
    stamp.height = stripHeight * shortSide / reference.shortSide;
    stamp.x = width - reference.margin * longSide / reference.longSide - 1 - stamp.width;
    // An even column, so that the stamp's chroma pairs lie on the frame's.
    stamp.x = stamp.x / 2 * 2;
    stamp.y = height - 1 - reference.margin * shortSide / reference.shortSide - stamp.height;
    return stamp;
}

bool fits(const Placement& stamp, int width, int height) {
    return stamp.width >= 1 && stamp.height >= 1 && stamp.x >= 0 && stamp.y >= 0 && stamp.x + stamp.width < width &&
           stamp.y + stamp.height < height;
}

// Nearest neighbour, in single precision: which source pixel a boundary falls to is part of the stamp's look.
void scale_strip(const unsigned char* strip, int stripWidth, int stripHeight, unsigned char* scaled,
                 const Placement& stamp) {
    const float fx = static_cast<float>(stripWidth) / static_cast<float>(stamp.width);
    const float fy = static_cast<float>(stripHeight) / static_cast<float>(stamp.height);
    for (int64_t row = 0; row < stamp.height; ++row) {
        const int sourceRow = std::min(static_cast<int>(static_cast<float>(row) * fy), stripHeight - 1);
        const unsigned char* source = strip + static_cast<size_t>(sourceRow) * static_cast<size_t>(stripWidth);
        for (int64_t column = 0; column < stamp.width; ++column) {
            *scaled++ = source[std::min(static_cast<int>(static_cast<float>(column) * fx), stripWidth - 1)];
        }
    }
}

void paint_stamp(const unsigned char* coverage, unsigned char* rgb, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i) {
        const int a = coverage[i];
        for (int k = 0; k < 3; ++k) {
            // Full coverage gives 254, just below white.
            *rgb = static_cast<unsigned char>((*rgb + (255 - a) + 255 * a) >> 8);
            ++rgb;
        }
    }
}

unsigned char blend(int stamp, int frame, int a) {
    return static_cast<unsigned char>((stamp * a + frame * (255 - a)) >> 8);
}

void blend_stamp(unsigned char* yuyv, int width, const unsigned char* coverage, const unsigned char* color,
                 const Placement& stamp) {
    const auto frameStride = static_cast<size_t>(width) * 2;
    unsigned char* row = yuyv + static_cast<size_t>(stamp.y) * frameStride + static_cast<size_t>(stamp.x) * 2;
    for (int64_t j = 0; j < stamp.height; ++j, row += frameStride) {
        unsigned char* d = row;
        for (int64_t i = 0; i < stamp.width; ++i, d += 2, color += 2) {
            const int a = *coverage++;
            // Without coverage nothing is blended: the blend would still darken the frame by a step.
            if (a != 0) {
                d[0] = blend(color[0], d[0], a);
                d[1] = blend(color[1], d[1], a);
            }
        }
    }
}

}  // namespace

void DrawSymbol(unsigned char* image, int image_width, int image_height, Symbol* symbol, int x, int y, int width,
                int height) {
    if (image == nullptr || symbol == nullptr || symbol->data == nullptr) {
        return;
    }
    const int64_t startX = std::max(x, 0);
    const int64_t startY = std::max(y, 0);
    const int64_t endX = std::min(int64_t{x} + width, int64_t{image_width});
    const int64_t endY = std::min(int64_t{y} + height, int64_t{image_height});
    if (startY >= endY || startX >= endX) {
        return;
    }
    const unsigned char* data = symbol->data;
    int64_t left = int64_t{symbol->width} * symbol->height;
    for (int64_t j = startY; j < endY && left > 0; ++j) {
        unsigned char* pixel = image + static_cast<size_t>(j) * static_cast<size_t>(image_width) + startX;
        const int64_t count = std::min(endX - startX, left);
        left -= count;
        for (int64_t i = 0; i < count; ++i) {
            *pixel++ = static_cast<unsigned char>(255 - *data++);
        }
    }
}

void CreateTimestampWatermark(const char* timestamp, unsigned char** watermark, int* watermark_width,
                              int* watermark_height, int ratio_type) {
    if (timestamp == nullptr || watermark == nullptr || watermark_width == nullptr || watermark_height == nullptr) {
        return;
    }
    *watermark = nullptr;
    *watermark_width = 0;
    *watermark_height = 0;
    if (ratio_type != 0 && ratio_type != 1) {
        return;
    }
    const TimestampSymbolFunc lookup = gGetTimestampSymbolFuncTable[ratio_type];
    const Extent extent = measure(timestamp, lookup);
    auto* strip = static_cast<unsigned char*>(
        galloc_alloc(static_cast<unsigned long>(extent.width) * static_cast<unsigned long>(extent.height)));
    if (strip == nullptr) {
        return;
    }
    int x = 0;
    for (const char* c = timestamp; *c != '\0'; ++c) {
        Symbol* symbol = lookup(*c);
        DrawSymbol(strip, extent.width, extent.height, symbol, x, 0, symbol->width, symbol->height);
        x += symbol->width;
    }
    *watermark = strip;
    *watermark_width = extent.width;
    *watermark_height = extent.height;
}

bool make_photo_timestamp_watermark_to_yuyv(unsigned char* yuyv, int width, int height, const char* timestamp,
                                            int /*type*/) {
    if (yuyv == nullptr || timestamp == nullptr || width < 1 || height < 1) {
        return false;
    }
    const int ratioType = ratio_type_of(std::max(width, height), std::min(width, height));
    unsigned char* strip = nullptr;
    int stripWidth = 0;
    int stripHeight = 0;
    CreateTimestampWatermark(timestamp, &strip, &stripWidth, &stripHeight, ratioType);
    const Buffer stripOwner(strip);
    if (strip == nullptr) {
        return false;
    }
    const Placement stamp = place_stamp(width, height, stripWidth, stripHeight, kReferences[ratioType]);
    if (!fits(stamp, width, height)) {
        return true;
    }

    const size_t pixels = static_cast<size_t>(stamp.width) * static_cast<size_t>(stamp.height);
    const Buffer scaled(static_cast<unsigned char*>(galloc_malloc(pixels)));
    const Buffer rgb(static_cast<unsigned char*>(galloc_alloc(pixels * 3)));
    const Buffer color(static_cast<unsigned char*>(galloc_alloc(pixels * 2)));
    if (scaled == nullptr || rgb == nullptr || color == nullptr) {
        return false;
    }
    scale_strip(strip, stripWidth, stripHeight, scaled.get(), stamp);
    paint_stamp(scaled.get(), rgb.get(), pixels);
    color_convert_rgb2yuyv(rgb.get(), color.get(), static_cast<int>(stamp.width), static_cast<int>(stamp.height));
    blend_stamp(yuyv, width, scaled.get(), color.get(), stamp);
    return true;
}
