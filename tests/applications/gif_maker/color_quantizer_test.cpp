#include "applications/gif_maker/color_quantizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <random>
#include <vector>

#include "applications/gif_maker/cell_pixels.h"
#include "applications/gif_maker/palette_refinement.h"
#include "applications/gif_maker/palette_refinement_scalar.h"
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

// Wu's method from its definitions: boxes are lists of pixels, and every plane of every box is tried by adding up what
// lies on its two sides. Sums stay below 2^24, so that single precision would be exact too.
class ExhaustiveSplitter {
  public:
    explicit ExhaustiveSplitter(const Pixels& pixels) : m_Pixels(pixels) {
        m_Boxes.push_back({pixels, {0, 0, 0}, {32, 32, 32}});
    }

    std::vector<Color> palette(size_t colorCount) {
        while (m_Boxes.size() < colorCount) {
            const auto next = std::max_element(m_Boxes.begin(), m_Boxes.end(),
                                               [](const Box& a, const Box& b) { return a.variance < b.variance; });
            if (m_Boxes.size() > 1 && next->variance <= 0) {
                break;
            }
            if (!split(static_cast<size_t>(next - m_Boxes.begin()))) {
                if (m_Boxes.size() == 1) {
                    break;
                }
            }
        }
        return means();
    }

  private:
    struct Box {
        Pixels pixels;
        std::array<int, 3> above;  // cells greater than this
        std::array<int, 3> upTo;
        double variance = 0;
    };

    static int cell(int channel) { return channel / 8 + 1; }

    static std::array<double, 3> sum(const Pixels& pixels) {
        std::array<double, 3> total = {};
        for (const Pixel& pixel : pixels) {
            for (size_t axis = 0; axis < 3; ++axis) {
                total[axis] += pixel[axis];
            }
        }
        return total;
    }

    static double squares_per_pixel(const Pixels& pixels) {
        const std::array<double, 3> total = sum(pixels);
        return (total[0] * total[0] + total[1] * total[1] + total[2] * total[2]) / static_cast<double>(pixels.size());
    }

    static double variance(const Box& box) {
        bool isOneCell = true;
        double squares = 0;
        for (size_t axis = 0; axis < 3; ++axis) {
            isOneCell = isOneCell && box.upTo[axis] - box.above[axis] == 1;
            for (const Pixel& pixel : box.pixels) {
                squares += pixel[axis] * pixel[axis];
            }
        }
        return isOneCell ? 0 : squares - squares_per_pixel(box.pixels);
    }

    static std::array<Pixels, 2> parted(const Box& box, size_t axis, int plane) {
        std::array<Pixels, 2> parts;
        for (const Pixel& pixel : box.pixels) {
            parts[cell(pixel[axis]) > plane ? 1 : 0].push_back(pixel);
        }
        return parts;
    }

    bool split(size_t index) {
        const Box whole = m_Boxes[index];
        double best = 0;
        size_t bestAxis = 0;
        int bestPlane = 0;
        for (size_t axis = 0; axis < 3; ++axis) {
            for (int plane = whole.above[axis] + 1; plane < whole.upTo[axis]; ++plane) {
                const std::array<Pixels, 2> parts = parted(whole, axis, plane);
                if (parts[0].empty() || parts[1].empty()) {
                    continue;
                }
                const double score = squares_per_pixel(parts[0]) + squares_per_pixel(parts[1]);
                if (score > best) {
                    best = score;
                    bestAxis = axis;
                    bestPlane = plane;
                }
            }
        }
        if (best == 0) {
            m_Boxes[index].variance = 0;
            return false;
        }
        const std::array<Pixels, 2> parts = parted(whole, bestAxis, bestPlane);
        Box lower = {parts[0], whole.above, whole.upTo};
        Box upper = {parts[1], whole.above, whole.upTo};
        lower.upTo[bestAxis] = bestPlane;
        upper.above[bestAxis] = bestPlane;
        lower.variance = variance(lower);
        upper.variance = variance(upper);
        m_Boxes[index] = lower;
        m_Boxes.push_back(upper);
        return true;
    }

    std::vector<Color> means() const {
        std::vector<Pixels> groups(m_Boxes.size());
        for (const Pixel& pixel : m_Pixels) {
            size_t nearest = 0;
            int nearestDistance = kMax;
            for (size_t k = 0; k < m_Boxes.size(); ++k) {
                const std::array<double, 3> total = sum(m_Boxes[k].pixels);
                int distance = 0;
                for (size_t axis = 0; axis < 3; ++axis) {
                    const int mean = static_cast<int>(total[axis]) / static_cast<int>(m_Boxes[k].pixels.size());
                    distance += (mean - pixel[axis]) * (mean - pixel[axis]);
                }
                if (distance < nearestDistance) {
                    nearestDistance = distance;
                    nearest = k;
                }
            }
            groups[nearest].push_back(pixel);
        }
        std::vector<Color> colors;
        for (const Pixels& group : groups) {
            const std::array<double, 3> total = sum(group);
            const int count = std::max(1, static_cast<int>(group.size()));
            colors.push_back({static_cast<int>(total[0]) / count, static_cast<int>(total[1]) / count,
                              static_cast<int>(total[2]) / count, 255});
        }
        return colors;
    }

    const Pixels& m_Pixels;
    std::vector<Box> m_Boxes;
};

Pixels random_pixels(size_t count, uint32_t seed, int step) {
    std::mt19937 generator(seed);
    Pixels pixels(count);
    for (Pixel& pixel : pixels) {
        for (int& channel : pixel) {
            channel = static_cast<int>(generator() >> 24) / step * step;
        }
    }
    return pixels;
}

// Sky, skin and foliage: gradients with soft noise, as a camera gives them. Integer arithmetic only.
Pixels photo_like(int width, int height) {
    std::mt19937 generator(11);
    Pixels pixels;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int noise = static_cast<int>(generator() % 13 + generator() % 13) - 12;
            const int u = 255 * x / width;
            const int v = 255 * y / height;
            Pixel base = {90 + v / 2, 140 + v / 3, 235 - v / 5};
            if ((x - width / 2) * (x - width / 2) + (y - height / 2) * (y - height / 2) < height * height / 12) {
                base = {225 - u / 4, 175 - u / 5, 150 - v / 3};
            } else if (v > 150 + (u % 37)) {
                base = {30 + u / 5, 60 + u / 3 + static_cast<int>(generator() % 40), 20 + v / 8};
            }
            for (int& channel : base) {
                channel = std::clamp(channel + noise, 0, 255);
            }
            pixels.push_back(base);
        }
    }
    return pixels;
}

TEST(ColorQuantizer, EqualsTheExhaustiveSplitterOnTinyImages) {
    for (uint32_t seed = 0; seed < 120; ++seed) {
        // Coarse steps make boxes of one colour, ties between axes and pixels as far from one entry as from another.
        const Pixels pixels = random_pixels(1 + seed % 60, seed, seed % 3 == 0 ? 1 : (seed % 3 == 1 ? 51 : 85));
        for (const int colorCount : {1, 2, 3, 7, 16, 64, 512}) {
            EXPECT_EQ(palette_of(pixels, colorCount),
                      ExhaustiveSplitter(pixels).palette(static_cast<size_t>(colorCount)))
                << "seed " << seed << ", " << colorCount << " colours";
        }
    }
}

// The same bits on every processor and in every vector form: sums and scores have one order of evaluation.
TEST(ColorQuantizer, PhotoPalettesAreTheSameEverywhere) {
    struct Case {
        int colorCount;
        size_t entries;
        uint64_t digest;
    };
    constexpr Case kCases[] = {{2, 2, 0x2250DC7E590B8D9B},
                               {16, 16, 0x528D48BEF90A7494},
                               {256, 256, 0xC4B02D5414611D6B},
                               {512, 485, 0x5916B56B067B058E}};
    const Pixels photo = photo_like(320, 200);
    for_each_simd_target([&](const std::string&) {
        double lastError = std::numeric_limits<double>::max();
        for (const Case& expected : kCases) {
            const std::vector<Color> palette = palette_of(photo, expected.colorCount);
            uint64_t digest = 0xCBF29CE484222325U;
            for (const Color& color : palette) {
                for (const int32_t channel : {color.red, color.green, color.blue, color.alpha}) {
                    digest = (digest ^ static_cast<uint64_t>(channel)) * 0x100000001B3U;
                }
            }
            EXPECT_EQ(palette.size(), expected.entries);
            EXPECT_EQ(digest, expected.digest) << std::hex << digest;

            double error = 0;
            for (const Pixel& pixel : photo) {
                int nearest = kMax;
                for (const Color& color : palette) {
                    const int red = pixel[0] - color.red;
                    const int green = pixel[1] - color.green;
                    const int blue = pixel[2] - color.blue;
                    nearest = std::min(nearest, red * red + green * green + blue * blue);
                }
                error += nearest;
            }
            EXPECT_LT(error, lastError);
            lastError = error;
        }
        EXPECT_LT(lastError / static_cast<double>(photo.size()), 12.0) << "mean squared error of 512 colours";
    });
}

std::array<std::vector<int64_t>, 4> refined(decltype(&korvane::refine_palette) refine,
                                            const korvane::CellPixels& pixels, const korvane::PaletteColors& palette,
                                            const std::vector<int32_t>& guesses) {
    std::array<std::vector<int64_t>, 4> sums;
    sums.fill(std::vector<int64_t>(palette.count));
    refine(pixels, palette, guesses.data(), {sums[0].data(), sums[1].data(), sums[2].data(), sums[3].data()});
    return sums;
}

TEST(PaletteRefinement, EqualsThePlainSearch) {
    for_each_simd_target([](const std::string&) {
        for (uint32_t seed = 0; seed < 60; ++seed) {
            // Steps make equal distances frequent; one cell holds many pixels, or each pixel has its own; the palette
            // has doubles, and as few as one entry.
            const int step = std::array{1, 5, 64, 255}[seed % 4];
            const Pixels pixels = random_pixels(seed < 40 ? seed * 3 : (seed < 58 ? 1000 : 20'000), seed, step);
            const Pixels entries = random_pixels(seed % 5 == 0 ? 512 : 1 + seed, seed + 1000, seed % 3 == 0 ? 17 : 1);
            std::array<std::vector<uint8_t>, 3> planes;
            std::vector<int32_t> cells;
            for (const Pixel& pixel : pixels) {
                size_t axisCells[3];
                for (size_t axis = 0; axis < 3; ++axis) {
                    planes[axis].push_back(static_cast<uint8_t>(pixel[axis]));
                    axisCells[axis] = static_cast<size_t>(pixel[axis] / 8 + 1);
                }
                cells.push_back(static_cast<int32_t>(korvane::cell_index(axisCells[0], axisCells[1], axisCells[2])));
            }
            korvane::PaletteColors palette = {};
            palette.count = entries.size();
            for (size_t k = 0; k < entries.size(); ++k) {
                palette.red[k] = entries[k][0];
                palette.green[k] = entries[k][1];
                palette.blue[k] = entries[k][2];
            }
            // Bad guesses, which must not matter.
            std::vector<int32_t> guesses(korvane::kHistogramCells);
            for (size_t cell = 0; cell < guesses.size(); ++cell) {
                guesses[cell] = static_cast<int32_t>(cell % entries.size());
            }
            korvane::CellPixels sorted;
            ASSERT_TRUE(
                sorted.sort({planes[0].data(), planes[1].data(), planes[2].data(), cells.data(), pixels.size()}));
            ASSERT_EQ(refined(korvane::refine_palette, sorted, palette, guesses),
                      refined(korvane::refine_palette_scalar, sorted, palette, guesses))
                << "seed " << seed;
        }
    });
}

TEST(ColorQuantizer, FewColours) {
    EXPECT_THAT(palette_of(Pixels(50, {12, 200, 255}), 256), testing::ElementsAre(Color{12, 200, 255, 255}));
    EXPECT_THAT(palette_of(Pixels(50, {0, 0, 0}), 256), testing::ElementsAre(Color{0, 0, 0, 255}));
    // Two colours of one cell cannot be told apart.
    EXPECT_THAT(palette_of({{8, 8, 8}, {13, 9, 8}}, 256), testing::ElementsAre(Color{10, 8, 8, 255}));
    EXPECT_THAT(palette_of({{0, 0, 0}, {255, 255, 255}}, 256),
                testing::UnorderedElementsAre(Color{0, 0, 0, 255}, Color{255, 255, 255, 255}));
    // Channels are clamped.
    EXPECT_THAT(palette_of(Pixels(3, {kMin, kMax, 256}), 4), testing::ElementsAre(Color{0, 255, 255, 255}));
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

TEST(ColorQuantizer, LifeCycleAndSizesOutOfRange) {
    ColorQuantizer quantizer;
    quantizer.release();
    quantizer.addColor(1, 2, 3);
    EXPECT_TRUE(quantizer.getPalette(4).empty());

    for (const auto& [width, height] :
         {std::pair{-2, -2}, std::pair{kMin, kMin}, std::pair{kMax, kMax}, std::pair{65536, 65536}}) {
        quantizer.prepare(width, height);
        quantizer.addColor(1, 2, 3);
        EXPECT_TRUE(quantizer.getPalette(4).empty()) << width << " x " << height;
    }

    for (int round = 0; round < 2; ++round) {
        quantizer.prepare(2, 2);
        quantizer.prepare(2, 1);
        for (int i = 0; i < 9; ++i) {
            quantizer.addColor(i < 2 ? 100 : 0, 0, 0);
        }
        EXPECT_TRUE(quantizer.getPalette(0).empty());
        EXPECT_TRUE(quantizer.getPalette(kMin).empty());
        const std::vector<Color>& palette = quantizer.getPalette(kMax);
        EXPECT_THAT(palette, testing::ElementsAre(Color{100, 0, 0, 255}));
        quantizer.release();
        quantizer.release();
        EXPECT_EQ(palette.size(), 1U);
        EXPECT_TRUE(quantizer.getPalette(4).empty());
    }

    // No pixels: one box, and nothing in it.
    quantizer.prepare(0, 5);
    quantizer.addColor(9, 9, 9);
    EXPECT_THAT(quantizer.getPalette(4), testing::ElementsAre(Color{0, 0, 0, 255}));
    quantizer.addColor(9, 9, 9);
    EXPECT_TRUE(quantizer.getPalette(4).empty());
}

}  // namespace
