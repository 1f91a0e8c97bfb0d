// SPDX-License-Identifier: Apache-2.0
#include "applications/photo_timestamp/timestamp_watermark.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "frameworks/core/memory.h"
#include "frameworks/images/color_convert.h"
#include "tests/support/random_bytes.h"

namespace {

constexpr char kText[] = "2016-01-02 03:04";

// Coverage of the laid out text, taken from the tables glyph by glyph.
struct Strip {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> coverage;
};

Strip model_strip(const std::string& text, int ratioType) {
    const TimestampSymbolFunc lookup = gGetTimestampSymbolFuncTable[ratioType];
    Strip strip;
    strip.height = lookup('0')->height;
    for (const char c : text) {
        strip.width += lookup(c)->width;
    }
    strip.coverage.assign(static_cast<size_t>(strip.width) * static_cast<size_t>(strip.height), 0);
    int left = 0;
    for (const char c : text) {
        const Symbol* glyph = lookup(c);
        for (int y = 0; glyph->data != nullptr && y < glyph->height; ++y) {
            for (int x = 0; x < glyph->width; ++x) {
                strip.coverage[static_cast<size_t>(y * strip.width + left + x)] =
                    static_cast<unsigned char>(255 - glyph->data[y * glyph->width + x]);
            }
        }
        left += glyph->width;
    }
    return strip;
}

// Stamps one pixel at a time, straight from the rules: grey g for coverage a, its Y and neutral chroma, blended.
void model_stamp(std::vector<unsigned char>& frame, int width, int height, const std::string& text) {
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

TEST(TimestampWatermark, StampsLikeThePlainModelInEveryShapeOfFrame) {
    const int sizes[][2] = {{4000, 2250}, {4000, 3000}, {3000, 4000}, {2250, 4000}, {1280, 720}, {641, 481},
                            {910, 500},   {333, 250},   {99, 75},     {97, 1200},   {1001, 37},  {40, 30},
                            {8, 6},       {1, 1},       {1, 100},     {100, 1},     {1600, 1600}};
    for (const auto& size : sizes) {
        for (const char* text : {kText, "7", " ", "--::", "88888888888888888888888888"}) {
            SCOPED_TRACE(std::to_string(size[0]) + " x " + std::to_string(size[1]) + " '" + text + "'");
            const size_t bytes = static_cast<size_t>(size[0]) * static_cast<size_t>(size[1]) * 2;
            std::vector<unsigned char> expected = random_bytes(bytes, 1);
            // Exactly as long as the frame, on the heap: the address sanitizer sees a byte beyond.
            std::vector<unsigned char> frame = expected;
            model_stamp(expected, size[0], size[1], text);
            EXPECT_TRUE(make_photo_timestamp_watermark_to_yuyv(frame.data(), size[0], size[1], text, 7));
            EXPECT_TRUE(frame == expected);
        }
    }
}

TEST(TimestampWatermark, RefusesWhatItCannotDrawAndLeavesTheFrame) {
    const std::vector<unsigned char> before = random_bytes(640 * 480 * 2, 2);
    std::vector<unsigned char> frame = before;
    for (const char* text : {"", "2016/01/02", "12:00 PM", "\xff", "1\n"}) {
        EXPECT_FALSE(make_photo_timestamp_watermark_to_yuyv(frame.data(), 640, 480, text, 0)) << text;
    }
    EXPECT_FALSE(make_photo_timestamp_watermark_to_yuyv(nullptr, 640, 480, kText, 0));
    EXPECT_FALSE(make_photo_timestamp_watermark_to_yuyv(frame.data(), 640, 480, nullptr, 0));
    EXPECT_FALSE(make_photo_timestamp_watermark_to_yuyv(frame.data(), 0, 480, kText, 0));
    EXPECT_FALSE(make_photo_timestamp_watermark_to_yuyv(frame.data(), 640, -1, kText, 0));
    // A very long text makes a strip of some 30 megabytes, and a stamp far wider than the frame.
    EXPECT_TRUE(make_photo_timestamp_watermark_to_yuyv(frame.data(), 640, 480, std::string(2'000, '8').c_str(), 0));
    EXPECT_TRUE(frame == before);
}

TEST(TimestampWatermark, LaysOutTheStrip) {
    for (const int ratioType : {0, 1}) {
        const Strip expected = model_strip(kText, ratioType);
        unsigned char* strip = nullptr;
        int width = 0;
        int height = 0;
        CreateTimestampWatermark(kText, &strip, &width, &height, ratioType);
        ASSERT_NE(strip, nullptr);
        EXPECT_EQ(width, expected.width);
        EXPECT_EQ(height, expected.height);
        EXPECT_EQ(std::memcmp(strip, expected.coverage.data(), expected.coverage.size()), 0);
        galloc_free(strip);
    }
    // Outputs are cleared for a text or ratio that cannot be drawn, and left alone when an argument is missing.
    for (const auto& [text, ratioType] : {std::pair{"x", 0}, {"", 1}, {"1", 2}, {"1", -1}}) {
        unsigned char byte = 0;
        unsigned char* strip = &byte;
        int width = 5;
        int height = 5;
        CreateTimestampWatermark(text, &strip, &width, nullptr, ratioType);
        EXPECT_EQ(strip, &byte);
        CreateTimestampWatermark(text, &strip, &width, &height, ratioType);
        EXPECT_EQ(strip, nullptr);
        EXPECT_EQ(width, 0);
        EXPECT_EQ(height, 0);
    }
}

TEST(TimestampWatermark, DrawSymbolClipsAndReadsTheBitmapOnWithoutGaps) {
    unsigned char bitmap[6] = {0, 50, 100, 150, 200, 250};
    Symbol glyph{'x', 3, 2, bitmap};
    struct Case {
        int x, y, width, height;
        std::vector<unsigned char> expected;  // 4 x 3
    };
    const Case cases[] = {
        {0, 0, 3, 2, {255, 205, 155, 9, 105, 55, 5, 9, 9, 9, 9, 9}},
        {2, 1, 3, 2, {9, 9, 9, 9, 9, 9, 255, 205, 9, 9, 155, 105}},
        {-1, -1, 3, 2, {255, 205, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9}},
        {0, 0, 99, 99, {255, 205, 155, 105, 55, 5, 9, 9, 9, 9, 9, 9}},
        {2147483647, 0, 2147483647, 2, std::vector<unsigned char>(12, 9)},
        {0, 0, -3, 2, std::vector<unsigned char>(12, 9)},
    };
    for (const Case& c : cases) {
        std::vector<unsigned char> image(12, 9);
        DrawSymbol(image.data(), 4, 3, &glyph, c.x, c.y, c.width, c.height);
        EXPECT_EQ(image, c.expected) << c.x << ", " << c.y;
    }
    std::vector<unsigned char> image(12, 9);
    DrawSymbol(image.data(), 4, 3, GetTimestampSymbol_4_to_3(' '), 0, 0, 60, 160);
    DrawSymbol(image.data(), 4, 3, nullptr, 0, 0, 60, 160);
    DrawSymbol(nullptr, 4, 3, &glyph, 0, 0, 3, 2);
    EXPECT_EQ(image, std::vector<unsigned char>(12, 9));
}

}  // namespace
