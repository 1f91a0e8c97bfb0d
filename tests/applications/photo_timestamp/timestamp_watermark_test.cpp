// SPDX-License-Identifier: Apache-2.0
#include "applications/photo_timestamp/timestamp_watermark.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/applications/photo_timestamp/timestamp_model.h"
#include "tests/support/random_bytes.h"

namespace {

constexpr char kText[] = "2016-01-02 03:04";

TEST(TimestampWatermark, StampsLikeThePlainModelInEveryShapeOfFrame) {
    const int sizes[][2] = {{4000, 2250}, {4000, 3000}, {3000, 4000}, {2250, 4000}, {1280, 720}, {641, 481},
                            {910, 500},   {333, 250},   {99, 75},     {97, 1200},   {1001, 37},  {40, 30},
                            {8, 6},       {1, 1},       {1, 100},     {100, 1},     {1600, 1600}};
    for (const auto& [width, height] : sizes) {
        for (const char* text : {kText, "7", " ", "--::", "88888888888888888888888888"}) {
            std::vector<unsigned char> expected = random_bytes(size_t{2} * static_cast<size_t>(width * height), 1);
            // Exactly as long as the frame, on the heap: the address sanitizer sees a byte beyond.
            std::vector<unsigned char> frame = expected;
            model_stamp(expected, width, height, text);
            EXPECT_TRUE(make_photo_timestamp_watermark_to_yuyv(frame.data(), width, height, text, 7));
            EXPECT_TRUE(frame == expected) << width << " x " << height << " '" << text << "'";
        }
    }
}

TEST(TimestampWatermark, RefusesWhatItCannotDrawAndLeavesTheFrame) {
    const std::vector<unsigned char> before = random_bytes(640 * 480 * 2, 2);
    std::vector<unsigned char> frame = before;
    const auto stamp = [&](const char* text, int width = 640, int height = 480) {
        return make_photo_timestamp_watermark_to_yuyv(frame.data(), width, height, text, 0);
    };
    for (const char* text : {"", "2016/01/02", "12:00 PM", "\xff", "1\n", static_cast<const char*>(nullptr)}) {
        EXPECT_FALSE(stamp(text)) << testing::PrintToString(text);
    }
    EXPECT_FALSE(stamp(kText, 0));
    EXPECT_FALSE(stamp(kText, 640, -1));
    EXPECT_FALSE(make_photo_timestamp_watermark_to_yuyv(nullptr, 640, 480, kText, 0));
    unsigned char* strip = frame.data();
    CreateTimestampWatermark("1", &strip, nullptr, nullptr, 0);
    EXPECT_EQ(strip, frame.data());
    // A very long text makes a strip of some 30 megabytes, and a stamp far wider than the frame.
    EXPECT_TRUE(stamp(std::string(2'000, '8').c_str()));
    EXPECT_TRUE(frame == before);
}

TEST(TimestampWatermark, DrawSymbolClipsAndReadsTheBitmapOnWithoutGaps) {
    unsigned char bitmap[6] = {0, 50, 100, 150, 200, 250};
    Symbol glyph{'x', 3, 2, bitmap};
    struct Case {
        int x, y, width, height;
        std::vector<unsigned char> expected;
    };
    const std::vector<unsigned char> untouched(12, 9);  // 4 x 3
    const Case cases[] = {
        {0, 0, 3, 2, {255, 205, 155, 9, 105, 55, 5, 9, 9, 9, 9, 9}},
        {2, 1, 3, 2, {9, 9, 9, 9, 9, 9, 255, 205, 9, 9, 155, 105}},
        {-1, -1, 3, 2, {255, 205, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9}},
        {0, 0, 99, 99, {255, 205, 155, 105, 55, 5, 9, 9, 9, 9, 9, 9}},
        {2147483647, 0, 2147483647, 2, untouched},
        {0, 0, -3, 2, untouched},
    };
    for (const Case& c : cases) {
        std::vector<unsigned char> image = untouched;
        DrawSymbol(image.data(), 4, 3, &glyph, c.x, c.y, c.width, c.height);
        EXPECT_EQ(image, c.expected) << c.x << ", " << c.y;
    }
    std::vector<unsigned char> image = untouched;
    DrawSymbol(image.data(), 4, 3, GetTimestampSymbol_4_to_3(' '), 0, 0, 60, 160);
    DrawSymbol(image.data(), 4, 3, nullptr, 0, 0, 60, 160);
    DrawSymbol(nullptr, 4, 3, &glyph, 0, 0, 3, 2);
    EXPECT_EQ(image, untouched);
}

}  // namespace
