#include "applications/photo_timestamp/timestamp_watermark.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "frameworks/core/memory.h"
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
        for (int64_t c = 0; c < w; ++c) {
            const auto at = static_cast<size_t>(static_cast<int>(static_cast<float>(r) * fy) * strip.width +
                                                static_cast<int>(static_cast<float>(c) * fx));
            const int a = strip.coverage[at];
            if (a == 0) {
                continue;
            }
            // Luma of a grey: the three truncated products of the studio weights. The chroma sums of a grey cancel to
            // one step below the middle or to the middle itself; the converter's own truncations say which.
            const int g = (254 * a + 255) >> 8;
            const int luma =
                static_cast<int>(0.257 * g) + static_cast<int>(0.504 * g) + static_cast<int>(0.098 * g) + 16;
            const auto chromaOf = [&](int64_t column) {
                const auto grey = [&](int64_t pixel) {
                    const int cover =
                        strip.coverage[static_cast<size_t>(static_cast<int>(static_cast<float>(r) * fy) * strip.width +
                                                           static_cast<int>(static_cast<float>(pixel) * fx))];
                    return (254 * cover + 255) >> 8;
                };
                const bool isU = column % 2 == 0;
                int sum = 256;
                for (const int64_t pixel : {column / 2 * 2, column / 2 * 2 + 1}) {
                    const int v = grey(pixel);
                    sum +=
                        isU ? static_cast<int>(-0.148 * v) + static_cast<int>(-0.291 * v) + static_cast<int>(0.439 * v)
                            : static_cast<int>(0.439 * v) + static_cast<int>(-0.368 * v) + static_cast<int>(-0.071 * v);
                }
                return sum >> 1;
            };
            unsigned char* d = &frame[static_cast<size_t>(((y + r) * width + x0 + c) * 2)];
            d[0] = static_cast<unsigned char>((luma * a + d[0] * (255 - a)) >> 8);
            d[1] = static_cast<unsigned char>((chromaOf(c) * a + d[1] * (255 - a)) >> 8);
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

TEST(TimestampWatermark, DrawsWhiteDigitsInTheCornerOfAPhoto) {
    // 48 megapixels, all middle grey. The stamp lies right of the middle at the bottom, and nothing else changes.
    constexpr int kWidth = 8000;
    constexpr int kHeight = 6000;
    std::vector<unsigned char> frame(size_t{kWidth} * kHeight * 2, 128);
    ASSERT_TRUE(make_photo_timestamp_watermark_to_yuyv(frame.data(), kWidth, kHeight, kText, 0));
    int left = kWidth, right = -1, top = kHeight, bottom = -1, brightest = 0;
    for (int y = 0; y < kHeight; ++y) {
        const unsigned char* row = &frame[static_cast<size_t>(y) * kWidth * 2];
        for (int x = 0; x < kWidth; ++x) {
            if (row[x * 2] != 128 || row[x * 2 + 1] != 128) {
                left = std::min(left, x), right = std::max(right, x);
                top = std::min(top, y), bottom = std::max(bottom, y);
                brightest = std::max<int>(brightest, row[x * 2]);
            }
        }
    }
    // Strip 1320 x 160 scaled to 2012 x 243, ending 305 columns and 305 rows before the far edges.
    EXPECT_GT(left, kWidth - 305 - 2012);
    EXPECT_LT(right, kWidth - 305);
    EXPECT_GT(top, kHeight - 305 - 243);
    EXPECT_LT(bottom, kHeight - 305);
    // Full coverage is grey 254, whose luma is 233, and the blend by 255 parts of 256 takes one step off.
    EXPECT_EQ(brightest, 233 * 255 >> 8);
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
