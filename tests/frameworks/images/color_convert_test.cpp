// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/color_convert.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/random_bytes.h"
#include "tests/support/simd_targets.h"

namespace {

using Bytes = std::vector<unsigned char>;
// Start addresses of up to three planes.
using Planes = std::array<unsigned char*, 3>;

#if defined(KORVANE_SANITIZED) || defined(__aarch64__)
// Instrumented or emulated, the whole domain takes long: an eighth of it still has each value of each byte.
constexpr int kSliceStep = 8;
#else
constexpr int kSliceStep = 1;
#endif

struct Yuv {
    int y, u, v;  // chroma around 0
};

// The arithmetic in its mathematical form: the library's entries are tables of exact fractions.
Yuv encoded(const unsigned char* rgb) {
    const auto weigh = [rgb](double r, double g, double b) {
        return static_cast<int>(r * rgb[0]) + static_cast<int>(g * rgb[1]) + static_cast<int>(b * rgb[2]);
    };
    return {weigh(0.257, 0.504, 0.098) + 16, weigh(-0.148, -0.291, 0.439), weigh(0.439, -0.368, -0.071)};
}

void decode_pixel(int y, int u, int v, unsigned char* rgb) {
    const int light = static_cast<int>(1.164 * (y - 16));
    const int reds = static_cast<int>(1.596 * (v - 128)), blues = static_cast<int>(2.018 * (u - 128));
    const int greens = static_cast<int>(0.813 * (v - 128)) + static_cast<int>(0.391 * (u - 128));
    const int channels[] = {light + reds, light - greens, light + blues};
    std::transform(std::begin(channels), std::end(channels), rgb,
                   [](int value) { return static_cast<unsigned char>(std::clamp(value, 0, 255)); });
}

struct Sample {
    size_t plane, at;
};

// Where the samples of one group of consecutive pixels lie, and how the chroma of a group is weighed.
struct Layout {
    const char* name;
    size_t pixels;
    std::array<size_t, 3> planeBytes;
    size_t yStep;
    Sample uSample, vSample;
    std::array<int, 4> uWeights, vWeights;
    std::function<int(const unsigned char* rgb, const Planes& yuv, int width, int height)> encode;
    std::function<int(const Planes& yuv, unsigned char* rgb, int width, int height)> decode;

    size_t planes() const { return 3 - static_cast<size_t>(std::count(planeBytes.begin(), planeBytes.end(), 0U)); }
    size_t at(const Sample& sample, size_t group) const { return group * planeBytes[sample.plane] + sample.at; }
    unsigned char& u(const Planes& yuv, size_t group) const { return yuv[uSample.plane][at(uSample, group)]; }
    unsigned char& v(const Planes& yuv, size_t group) const { return yuv[vSample.plane][at(vSample, group)]; }
    unsigned char& y(const Planes& yuv, size_t group, size_t k) const {
        return yuv[0][group * planeBytes[0] + k * yStep];
    }
};

template <auto kFunction, size_t... kPlane>
int encode(const unsigned char* rgb, const Planes& yuv, int width, int height) {
    return kFunction(rgb, yuv[kPlane]..., width, height);
}

template <auto kFunction, size_t... kPlane>
int decode(const Planes& yuv, unsigned char* rgb, int width, int height) {
    return kFunction(yuv[kPlane]..., rgb, width, height);
}

// clang-format off
const std::vector<Layout> kLayouts = {
    {"yuv", 1, {3, 0, 0}, 1, {0, 1}, {0, 2}, {1}, {1},
     encode<color_convert_rgb2yuv, 0>, decode<color_convert_yuv2rgb, 0>},
    {"yuyv", 2, {4, 0, 0}, 2, {0, 1}, {0, 3}, {1, 1}, {1, 1},
     encode<color_convert_rgb2yuyv, 0>, decode<color_convert_yuyv2rgb, 0>},
    {"yvyu", 2, {4, 0, 0}, 2, {0, 3}, {0, 1}, {1, 1}, {1, 1},
     encode<color_convert_rgb2yvyu, 0>, decode<color_convert_yvyu2rgb, 0>},
    {"yuv422p", 2, {2, 1, 1}, 1, {1, 0}, {2, 0}, {1, 1}, {1, 1},
     encode<color_convert_rgb2yuv422p, 0, 1, 2>, decode<color_convert_yuv422p2rgb, 0, 1, 2>},
    {"yv12oryu12", 4, {4, 1, 1}, 1, {1, 0}, {2, 0}, {1, 1, 1, 1}, {1, 1, 1, 1},
     encode<color_convert_rgb2yv12oryu12, 0, 1, 2>, decode<color_convert_yv12oryu122rgb, 0, 1, 2>},
    {"nv12", 4, {4, 2, 0}, 1, {1, 0}, {1, 1}, {1, 1, 1, 1}, {2, 0, 1, 1},
     encode<color_convert_rgb2nv12, 0, 1>, decode<color_convert_nv122rgb, 0, 1>},
    {"nv21", 4, {4, 2, 0}, 1, {1, 1}, {1, 0}, {}, {}, nullptr,
     decode<color_convert_nv212rgb, 0, 1>},
};
// clang-format on

// Runs a conversion, and expects exactly these outputs.
void expect_outputs(const std::vector<Bytes>& expected, const std::function<int(const Planes& out)>& convert) {
    std::vector<Bytes> buffers(expected.size());
    Planes out = {};
    for (size_t i = 0; i < expected.size(); ++i) {
        buffers[i].resize(expected[i].size() + 1, 0xA5);
        out[i] = buffers[i].data();
    }
    ASSERT_EQ(convert(out), expected[0].empty() ? 0 : 1);
    for (size_t i = 0; i < expected.size(); ++i) {
        buffers[i].pop_back();
        ASSERT_TRUE(buffers[i] == expected[i]) << "plane " << i;
    }
}

std::vector<Bytes> reference_encode(const Layout& layout, const unsigned char* rgb, size_t groups) {
    std::vector<Bytes> planes(layout.planes());
    Planes yuv = {};
    for (size_t p = 0; p < planes.size(); ++p) {
        planes[p].resize(groups * layout.planeBytes[p]);
        yuv[p] = planes[p].data();
    }
    const int count = static_cast<int>(layout.pixels);
    for (size_t i = 0; i < groups; ++i) {
        int u = 128 * count;
        int v = u;
        for (size_t k = 0; k < layout.pixels; ++k, rgb += 3) {
            const Yuv pixel = encoded(rgb);
            layout.y(yuv, i, k) = static_cast<unsigned char>(pixel.y);
            u += layout.uWeights[k] * pixel.u;
            v += layout.vWeights[k] * pixel.v;
        }
        layout.u(yuv, i) = static_cast<unsigned char>(u / count);
        layout.v(yuv, i) = static_cast<unsigned char>(v / count);
    }
    return planes;
}

Bytes reference_decode(const Layout& layout, const Planes& yuv, size_t groups) {
    Bytes rgb(groups * layout.pixels * 3);
    for (size_t i = 0; i < groups; ++i) {
        for (size_t k = 0; k < layout.pixels; ++k) {
            decode_pixel(layout.y(yuv, i, k), layout.u(yuv, i), layout.v(yuv, i), &rgb[(i * layout.pixels + k) * 3]);
        }
    }
    return rgb;
}

// Other sizes and alignments are the fuzz targets', the buffers' edges those of the protected pages; digests are on
// record of NV21's blocks in two rows and of what has no chroma.
TEST(ColorConvertFunctions, AllLayoutsOnAllTargets) {
    const Bytes source = random_bytes(3 * 4100 * 4, 7);
    for_each_simd_target([&source](const std::string&) {
        // Less than a vector, and whole ones with a rest.
        for (const int width : {0, 1, 2, 3, 5, 31, 290, 4099}) {
            const auto pixels = static_cast<size_t>(width);
            for (const Layout& layout : kLayouts) {
                SCOPED_TRACE(testing::Message() << layout.name << " of " << pixels);
                const size_t groups = pixels / layout.pixels;
                Bytes in = source;
                const Planes yuv = {&in[1], &in[13000], &in[25000]};
                expect_outputs({reference_decode(layout, yuv, groups)},
                               [&](const Planes& out) { return layout.decode(yuv, out[0], width, 1); });
                if (layout.encode) {
                    if (pixels % 2 == 1) {  // corners of the color cube, where the sums reach their ends
                        std::transform(in.begin(), in.end(), in.begin(), [](auto b) { return b < 128 ? 0 : 255; });
                    }
                    expect_outputs(reference_encode(layout, in.data(), groups),
                                   [&](const Planes& out) { return layout.encode(in.data(), out, width, 1); });
                }
            }
        }
    });
}

// All 2^24 values of three bytes, in slices of equal `first`.
Bytes cube_slice(int first) {
    Bytes slice(3 * 65536);
    for (size_t i = 0; i < 65536; ++i) {
        slice[3 * i] = static_cast<unsigned char>(first);
        slice[3 * i + 1] = static_cast<unsigned char>(i >> 8);
        slice[3 * i + 2] = static_cast<unsigned char>(i);
    }
    return slice;
}

TEST(ColorConvertFunctions, EveryColorBothWays) {
    const Layout& yuv = kLayouts[0];
    for (int r = 255; r >= 0; r -= kSliceStep) {
        const Bytes rgb = cube_slice(r);
        const std::vector<Bytes> encoded = reference_encode(yuv, rgb.data(), 65536);
        Bytes source = rgb;
        const Planes planes = {source.data()};
        const Bytes decoded = reference_decode(yuv, planes, 65536);
        Bytes gray(65536);
        for (size_t i = 0; i < gray.size(); ++i) {
            gray[i] = static_cast<unsigned char>((19595 * rgb[3 * i] + 38470 * rgb[3 * i + 1] + 7471 * rgb[3 * i + 2]) /
                                                 65536);
        }
        SCOPED_TRACE(r);
        for_each_simd_target([&](const std::string&) {
            expect_outputs({decoded}, [&](auto& out) { return yuv.decode(planes, out[0], 256, 256); });
            expect_outputs(encoded, [&](auto& out) { return color_convert_rgb2yuv(rgb.data(), out[0], 256, 256); });
            expect_outputs({gray}, [&](auto& out) { return color_convert_rgb2gray(rgb.data(), out[0], 256, 256); });
        });
    }
}

TEST(ColorConvertFunctions, RefuseMissingPointersAndSizesWithoutAGroup) {
    Bytes a(64, 3), b(64, 3), c(64, 3), d(64, 3);
    for (const Layout& layout : kLayouts) {
        SCOPED_TRACE(layout.name);
        const auto expect_refused = [&](unsigned char* rgb, const Planes& yuv, int width, int height) {
            EXPECT_EQ(layout.decode(yuv, rgb, width, height), 0);
            EXPECT_EQ(layout.encode ? layout.encode(rgb, yuv, width, height) : 0, 0);
        };
        const Planes yuv = {b.data(), c.data(), d.data()};
        // 65536 x 65536 is 0 in 32 bits, 65536 x 32768 is negative.
        constexpr int kSizes[][2] = {{0, 5}, {-4, 4}, {65536, 65536}, {65536, 32768}};
        for (const auto& [width, height] : kSizes) {
            expect_refused(a.data(), yuv, width, height);
        }
        expect_refused(nullptr, yuv, static_cast<int>(layout.pixels), 1);
        for (size_t missing = 0; missing < layout.planes(); ++missing) {
            Planes some = yuv;
            some[missing] = nullptr;
            expect_refused(a.data(), some, static_cast<int>(layout.pixels), 1);
        }
    }
    for (const auto convert : {color_convert_gray2rgb, color_convert_gray2rgba, color_convert_rgb2gray,
                               color_convert_rgb2rgba, color_convert_rgba2rgb, color_convert_yuv2gray}) {
        EXPECT_EQ(convert(nullptr, b.data(), 2, 2), 0);
        EXPECT_EQ(convert(a.data(), nullptr, 2, 2), 0);
        EXPECT_EQ(convert(a.data(), b.data(), 0, 2), 0);
    }
    // Too small to hold a block of NV21: nothing is written.
    EXPECT_EQ(color_convert_rgb2nv21(a.data(), b.data(), c.data(), 1, 4), 1);
    EXPECT_EQ(color_convert_rgb2nv21(a.data(), b.data(), c.data(), 4, -1), 1);
    EXPECT_EQ(color_convert_rgb2nv21(a.data(), nullptr, c.data(), 1, 1), 0);
    EXPECT_TRUE(a == Bytes(64, 3) && b == a && c == a && d == a);
    // Two negative sizes make a positive product.
    EXPECT_EQ(color_convert_gray2rgb(a.data(), b.data(), -2, -2), 1);
    EXPECT_EQ(color_convert_yuv2gray(a.data(), c.data(), -2, -2), 0) << "this one tests each size";
}

}  // namespace
