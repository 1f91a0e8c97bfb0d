// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/images/color_convert.h"
#include "tests/support/random_bytes.h"

namespace {

constexpr uint32_t kAnyFormat = IMAGE_FORMAT_TYPE_MAX + 1;

void expect_no_planes(Image& image) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(image.getPlanes()[i], nullptr);
    }
}

// Other formats and sizes are the fuzz target's.
TEST(Image, CopiesTheThirdPlaneOf422OneByteIntoTheSecond) {
    unsigned char y[] = {1, 2, 3, 4}, u[] = {5, 6}, v[] = {7, 8};
    unsigned char* planes[4] = {y, u, v};
    Image image(2, 2, 1, IMAGE_FORMAT_TYPE_YUV422P, planes);
    const unsigned char* first = image.getPlanes()[0];
    EXPECT_EQ(std::vector<int>(first, first + 8), (std::vector<int>{1, 2, 3, 4, 5, 7, 8, 0}));
}

TEST(Image, SizesWithoutPixelsAndUnknownFormatsHaveNoPlanes) {
    constexpr uint32_t kSizes[][3] = {{0, 4, 1},         {4, 0, 1},         {4, 4, 0},
                                      {65536, 65536, 1}, {65537, 65535, 1}, {1u << 16, 1u << 14, 4},
                                      {1u << 31, 1, 1},  {~0u, ~0u, ~0u}};
    for (const auto& size : kSizes) {
        // The byte count of RGB leaves 32 bits for all of them, or is 0.
        Image image(size[0], size[1], size[2], IMAGE_FORMAT_TYPE_RGB, nullptr);
        expect_no_planes(image);
        EXPECT_EQ(image.getDepthType(), IMAGE_DEPTH_TYPE_24U);
    }
    Image image(4, 4, 1, IMAGE_FORMAT_TYPE_RGBA, nullptr);
    for (const int format : {-1, 0, 13, 255}) {
        image.set(4, 4, 1, static_cast<ImageFormatType>(format), image.getPlanes());
        expect_no_planes(image);
        EXPECT_EQ(image.getFormatType(), format);
        EXPECT_EQ(image.getDepthType(), IMAGE_DEPTH_TYPE_32U) << "kept from the last known format";
    }
}

auto_ptr<Image> asymmetric_image(ImageFormatType format) {
    auto_ptr<Image> image(Image::createImage(8, 6, 1, format, nullptr));
    if (image->getPlanes()[0] != nullptr) {
        const std::vector<unsigned char> bytes = random_bytes(48U * static_cast<size_t>(image->getDepthType()), 5);
        std::copy(bytes.begin(), bytes.end(), image->getPlanes()[0]);
    }
    return image;
}

TEST(ColorConvert, ConvertsExactlyTheKnownPairsAndGivesBlankImagesOtherwise) {
    std::set<int> known = {0x0103, 0x0104, 0x0401, 0x0403};
    for (int yuv = IMAGE_FORMAT_TYPE_YUV; yuv <= IMAGE_FORMAT_TYPE_NV21; ++yuv) {
        known.insert(yuv * 256 + IMAGE_FORMAT_TYPE_GRAY);
        // YV12 and YU12 images have no third plane, so their conversions are refused.
        if (yuv != IMAGE_FORMAT_TYPE_YV12 && yuv != IMAGE_FORMAT_TYPE_YU12) {
            known.insert(yuv * 256 + IMAGE_FORMAT_TYPE_RGB);
            known.insert(IMAGE_FORMAT_TYPE_RGB * 256 + yuv);
        }
    }
    known.insert({0x0301, 0x0304});
    for (int code = 0; code < static_cast<int>(kAnyFormat * 256); ++code) {
        auto_ptr<Image> source = asymmetric_image(static_cast<ImageFormatType>(code >> 8));
        const auto_ptr<Image> result(ColorConvert::convert(source, code));
        ASSERT_NE(result.get(), nullptr) << code;
        ASSERT_EQ(result->getFormatType(), code & 255);
        ASSERT_EQ(result->getWidth(), 8U);
        const unsigned char* pixels = result->getPlanes()[0];
        const bool written =
            pixels != nullptr && std::any_of(pixels, pixels + 48U * static_cast<size_t>(result->getDepthType()),
                                             [](unsigned char byte) { return byte != 0; });
        ASSERT_EQ(written, known.count(code) == 1) << std::hex << code;
    }
}

TEST(ColorConvert, RefusesNullAndMismatchedSources) {
    auto_ptr<Image> rgb = asymmetric_image(IMAGE_FORMAT_TYPE_RGB);
    EXPECT_EQ(ColorConvert::convert(static_cast<Image*>(nullptr), 0x0301), nullptr);
    EXPECT_EQ(ColorConvert::convert(rgb, 0x0401), nullptr);
    // Only bits 8 to 15 name the source; the whole code names the conversion.
    EXPECT_EQ(auto_ptr<Image>(ColorConvert::convert(rgb.get(), 0x10301))->getPlanes()[0][0], 0);
}

TEST(ColorConvert, PassesThePlanesThatEachFormatHas) {
    const auto expect_like = [](int code, auto convert) {
        auto_ptr<Image> source = asymmetric_image(static_cast<ImageFormatType>(code >> 8));
        std::vector<unsigned char> expected(144);
        unsigned char* first = expected.data();
        convert(source->getPlanes()[0], first);
        const auto_ptr<Image> result(ColorConvert::convert(source, code));
        EXPECT_TRUE(std::equal(first, first + 48 * static_cast<int>(result->getDepthType()), result->getPlanes()[0]));
    };
    expect_like(0x0308, [](auto* rgb, auto* y) { color_convert_rgb2yuv422p(rgb, y, y + 48, y + 72, 8, 6); });
    expect_like(0x030B, [](auto* rgb, auto* y) { color_convert_rgb2nv12(rgb, y, y + 48, 8, 6); });
    expect_like(0x030C, [](auto* rgb, auto* y) { color_convert_rgb2nv21(rgb, y, y + 48, 8, 6); });
    expect_like(0x0C03, [](auto* y, auto* rgb) { color_convert_nv212rgb(y, y + 48, rgb, 8, 6); });
}

}  // namespace
