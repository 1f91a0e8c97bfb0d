// SPDX-License-Identifier: Apache-2.0
#include "applications/gif_maker/color_quantizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "frameworks/images/jpeg_decoder.h"
#include "frameworks/io/file_stream.h"
#include "tests/support/simd_targets.h"

bool operator==(const Color& a, const Color& b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue && a.alpha == b.alpha;
}

namespace {

constexpr int kMax = std::numeric_limits<int>::max();
constexpr int kMin = std::numeric_limits<int>::min();

using Pixel = std::array<int, 3>;
using Pixels = std::vector<Pixel>;

std::vector<Color> palette_of(const Pixels& pixels, int32_t colorCount) {
    ColorQuantizer quantizer;
    quantizer.prepare(static_cast<int32_t>(pixels.size()), 1);
    for (const Pixel& pixel : pixels) {
        quantizer.addColor(pixel[0], pixel[1], pixel[2]);
    }
    return quantizer.getPalette(colorCount);
}

std::array<double, 3> sum_of(const Pixels& pixels) {
    std::array<double, 3> total = {};
    for (const Pixel& pixel : pixels) {
        std::transform(pixel.begin(), pixel.end(), total.begin(), total.begin(), std::plus<double>());
    }
    return total;
}

Pixel mean_of(const Pixels& pixels) {
    const auto [r, g, b] = sum_of(pixels);
    const int count = std::max(1, static_cast<int>(pixels.size()));
    return {static_cast<int>(r) / count, static_cast<int>(g) / count, static_cast<int>(b) / count};
}

// No number without pixels.
double squares_per_pixel(const Pixels& pixels) {
    const auto total = sum_of(pixels);
    return std::inner_product(total.begin(), total.end(), total.begin(), 0.0) / static_cast<double>(pixels.size());
}

int distance_of(const Pixel& a, const Pixel& b) {
    return (a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) + (a[2] - b[2]) * (a[2] - b[2]);
}

// Wu's method from its definitions: boxes are lists of pixels, and every plane of every box is tried by adding up what
// lies on its two sides. Sums stay below 2^24, so that single precision would be exact too.
struct Box {
    Pixels pixels;
    Pixel above = {0, 0, 0};  // cells greater than this
    Pixel upTo = {32, 32, 32};
    double variance = 0;
};

double variance_of(const Box& box) {
    double squares = 0;
    for (const Pixel& pixel : box.pixels) {
        squares += distance_of(pixel, {0, 0, 0});
    }
    const bool isOneCell = distance_of(box.above, box.upTo) == 3;  // cells differ by at least 1 on each axis
    return isOneCell ? 0 : squares - squares_per_pixel(box.pixels);
}

// The best two, or none.
std::vector<Box> parts_of(const Box& box) {
    double best = 0;
    std::vector<Box> result;
    for (size_t axis = 0; axis < 3; ++axis) {
        for (int plane = box.above[axis] + 1; plane < box.upTo[axis]; ++plane) {
            std::vector<Box> parts(2, {{}, box.above, box.upTo});
            parts[0].upTo[axis] = parts[1].above[axis] = plane;
            for (const Pixel& pixel : box.pixels) {
                parts[pixel[axis] / 8 + 1 > plane ? 1 : 0].pixels.push_back(pixel);
            }
            const double score = squares_per_pixel(parts[0].pixels) + squares_per_pixel(parts[1].pixels);
            if (score > best) {
                best = score;
                result = std::move(parts);
            }
        }
    }
    for (Box& part : result) {
        part.variance = variance_of(part);
    }
    return result;
}

std::vector<Color> exhaustive_palette(const Pixels& pixels, size_t colorCount) {
    std::vector<Box> boxes = {{pixels}};
    while (boxes.size() < colorCount) {
        const bool isFirst = boxes.size() == 1;
        const auto next = std::max_element(boxes.begin(), boxes.end(),
                                           [](const Box& a, const Box& b) { return a.variance < b.variance; });
        const std::vector<Box> parts = parts_of(*next);
        if (isFirst ? parts.empty() : next->variance <= 0) {
            break;
        }
        next->variance = 0;
        if (!parts.empty()) {
            *next = parts[0];
            boxes.push_back(parts[1]);
        }
    }
    std::vector<Pixels> groups(boxes.size());
    for (const Pixel& pixel : pixels) {
        const auto nearest = std::min_element(boxes.begin(), boxes.end(), [&](const Box& a, const Box& b) {
            return distance_of(mean_of(a.pixels), pixel) < distance_of(mean_of(b.pixels), pixel);
        });
        groups[static_cast<size_t>(nearest - boxes.begin())].push_back(pixel);
    }
    std::vector<Color> colors;
    for (const Pixels& group : groups) {
        const auto [r, g, b] = mean_of(group);
        colors.push_back({r, g, b, 255});
    }
    return colors;
}

Pixels random_pixels(size_t count, uint32_t seed, int range, int step) {
    std::mt19937 generator(seed);
    Pixels pixels(count);
    for (Pixel& pixel : pixels) {
        for (int& channel : pixel) {
            channel = static_cast<int>(generator() >> 24) % range / step * step;
        }
    }
    return pixels;
}

Pixels photo() {
    auto_ptr<Stream> stream(new FileStream(KORVANE_TEST_PHOTO, FileStream::FILE_MODE_ONLY_READ));
    auto_ptr<Image> image(new Image(0, 0, 1, IMAGE_FORMAT_TYPE_NONE, nullptr));
    EXPECT_TRUE(auto_ptr<ImageDecoder>(new JpegDecoder)->decode(stream, image));
    const unsigned char* rgb = image->getPlanes()[0];
    Pixels pixels(size_t{image->getWidth()} * image->getHeight());
    for (Pixel& pixel : pixels) {
        for (int& channel : pixel) {
            channel = *rgb++;
        }
    }
    return pixels;
}

TEST(ColorQuantizer, EqualsTheExhaustiveMethodOnTinyImages) {
    // Coarse steps make boxes of one color, ties between axes and pixels as far from one entry as from another; a
    // small range makes boxes of few cells.
    const std::pair<int, int> kinds[] = {{256, 1}, {256, 51}, {256, 85}, {24, 1}};
    for (uint32_t seed = 0; seed < 160; ++seed) {
        const auto& [range, step] = kinds[seed % 4];
        const Pixels pixels = random_pixels(1 + seed % 60, seed, range, step);
        for (const int colorCount : {1, 2, 3, 7, 16, 64, 512}) {
            EXPECT_EQ(palette_of(pixels, colorCount), exhaustive_palette(pixels, static_cast<size_t>(colorCount)))
                << colorCount << " colors, seed " << seed;
        }
    }
}

// The same bits on every processor and in every vector form: sums and scores have one order of evaluation.
TEST(ColorQuantizer, APhotosPaletteIsTheSameEverywhere) {
    const Pixels pixels = photo();
    for_each_simd_target([&](const std::string&) {
        const std::vector<Color> palette = palette_of(pixels, 512);
        uint64_t digest = 0xCBF29CE484222325U;
        for (const Color& color : palette) {
            for (const int32_t channel : {color.red, color.green, color.blue, color.alpha}) {
                digest = (digest ^ static_cast<uint64_t>(channel)) * 0x100000001B3U;
            }
        }
        EXPECT_EQ(palette.size(), 512U);
        EXPECT_EQ(digest, 0x5A97F58C0E12AC5DU) << std::hex << digest;
    });
}

TEST(ColorQuantizer, LargeSumsStayRight) {
    // 9 million pixels of full white pass 32 bits in each channel's sum.
    constexpr int32_t kPixels = 9'000'000;
    ColorQuantizer quantizer;
    quantizer.prepare(3000, 3000);
    for (int32_t i = 0; i < kPixels; ++i) {
        quantizer.addColor(255, 254, i % 9 == 0 ? 7 : 255);
    }
    EXPECT_THAT(quantizer.getPalette(8),
                testing::UnorderedElementsAre(Color{255, 254, 255, 255}, Color{255, 254, 7, 255}));
}

// The other calls, in any order, are the fuzz target's.
TEST(ColorQuantizer, CountsTheAnnouncedPixelsAndGivesOnePalette) {
    EXPECT_THAT(palette_of(Pixels(3, {kMin, kMax, 256}), 4), testing::ElementsAre(Color{0, 255, 255, 255}));
    ColorQuantizer quantizer;
    for (const auto& [width, height] : {std::pair{kMin, kMin}, std::pair{kMax, kMax}, std::pair{65536, 65536}}) {
        quantizer.prepare(width, height);
        quantizer.addColor(1, 2, 3);
        EXPECT_TRUE(quantizer.getPalette(4).empty()) << width << " x " << height;
    }
    quantizer.prepare(2, 2);
    quantizer.prepare(2, 1);
    for (int i = 0; i < 9; ++i) {
        quantizer.addColor(i < 2 ? 100 : 0, 0, 0);
    }
    EXPECT_TRUE(quantizer.getPalette(kMin).empty());
    const std::vector<Color>& palette = quantizer.getPalette(kMax);
    quantizer.release();
    EXPECT_THAT(palette, testing::ElementsAre(Color{100, 0, 0, 255}));
    EXPECT_TRUE(quantizer.getPalette(4).empty());
}

}  // namespace
