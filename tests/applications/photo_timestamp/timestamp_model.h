// SPDX-License-Identifier: Apache-2.0
// A plain model of the timestamp: its strip, and a frame that is stamped with it.
#ifndef KORVANE_TESTS_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_MODEL_H_
#define KORVANE_TESTS_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_MODEL_H_

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "applications/photo_timestamp/timestamp_watermark.h"
#include "frameworks/images/color_convert.h"

// Coverage of the laid out text, taken from the tables glyph by glyph; empty where there is none.
struct Strip {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> coverage;
};

inline Strip model_strip(const std::string& text, int ratioType) {
    Strip strip;
    const TimestampSymbolFunc lookup =
        ratioType == 0 || ratioType == 1 ? gGetTimestampSymbolFuncTable[ratioType] : nullptr;
    for (const char c : text) {
        const Symbol* glyph = lookup == nullptr ? nullptr : lookup(c);
        if (glyph == nullptr) {
            return {};
        }
        strip.width += glyph->width;
        strip.height = glyph->height;
    }
    strip.coverage.assign(static_cast<size_t>(strip.width) * static_cast<size_t>(strip.height), 0);
    int left = 0;
    for (const char c : text) {
        const Symbol* glyph = lookup(c);
        for (int i = 0; glyph->data != nullptr && i < glyph->width * glyph->height; ++i) {
            const int place = i / glyph->width * strip.width + left + i % glyph->width;
            strip.coverage[static_cast<size_t>(place)] = static_cast<unsigned char>(255 - glyph->data[i]);
        }
        left += glyph->width;
    }
    return strip;
}

// Stamps one pixel at a time, straight from the rules: grey g for coverage a, its Y and neutral chroma, blended.
inline void model_stamp(std::vector<unsigned char>& frame, int width, int height, const std::string& text) {
    const int longSide = std::max(width, height);
    const int shortSide = std::min(width, height);
    const int ratio = static_cast<int>(longSide * 100LL / shortSide);
    const bool wide = ratio >= 173 && ratio <= 181;
    const Strip strip = model_strip(text, wide ? 1 : 0);
    const int64_t l = wide ? 4608 : 5248;
    const int64_t s = wide ? 2592 : 3936;
    const int64_t m = wide ? 150 : 200;
    int64_t w = strip.width * int64_t{longSide} / l;
    w += w % 2;
    const int64_t h = strip.height * int64_t{shortSide} / s;
    int64_t x0 = width - m * longSide / l - 1 - w;
    const int64_t yEnd = height - 1 - m * shortSide / s;
    x0 -= x0 % 2;
    const int64_t y = yEnd - h;
    if (w < 1 || h < 1 || x0 < 0 || y < 0 || x0 + w >= width) {
        return;
    }
    const float fx = static_cast<float>(strip.width) / static_cast<float>(w);
    const float fy = static_cast<float>(strip.height) / static_cast<float>(h);
    for (int64_t r = 0; r < h; ++r) {
        std::vector<unsigned char> coverage;
        std::vector<unsigned char> greys;
        for (int64_t c = 0; c < w; ++c) {
            const int row = static_cast<int>(static_cast<float>(r) * fy);
            const int column = static_cast<int>(static_cast<float>(c) * fx);
            coverage.push_back(strip.coverage[static_cast<size_t>(row * strip.width + column)]);
            greys.insert(greys.end(), 3, static_cast<unsigned char>((254 * coverage.back() + 255) >> 8));
        }
        std::vector<unsigned char> stamp(static_cast<size_t>(w) * 2);
        color_convert_rgb2yuyv(greys.data(), stamp.data(), static_cast<int>(w), 1);
        unsigned char* d = &frame[static_cast<size_t>(((y + r) * width + x0) * 2)];
        for (size_t i = 0; i < stamp.size(); ++i) {
            const int a = coverage[i / 2];
            d[i] = a == 0 ? d[i] : static_cast<unsigned char>((stamp[i] * a + d[i] * (255 - a)) >> 8);
        }
    }
}

#endif  // KORVANE_TESTS_APPLICATIONS_PHOTO_TIMESTAMP_TIMESTAMP_MODEL_H_
