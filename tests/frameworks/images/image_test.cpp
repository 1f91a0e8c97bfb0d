// SPDX-License-Identifier: Apache-2.0
#include "frameworks/images/image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/images/color_convert.h"
#include "tests/support/random_bytes.h"

namespace {

constexpr uint32_t kAnyFormat = IMAGE_FORMAT_TYPE_MAX + 1;

// Places behind the first plane, -1 for no plane; what is copied to the second and third, and where the latter goes.
struct LayoutCase {
    std::vector<ImageFormatType> formats;
    size_t bytes;
    ptrdiff_t second, third;
    size_t chromaBytes, thirdCopy;
};

// 5 x 3 with depth 1: N = 15, so that every half and quarter has something to round.
const std::vector<LayoutCase> kLayoutCases = {
    {{IMAGE_FORMAT_TYPE_GRAY}, 15, -1, -1, 0, 0},
    {{IMAGE_FORMAT_TYPE_RGB565, IMAGE_FORMAT_TYPE_YUYV, IMAGE_FORMAT_TYPE_YVYU}, 30, -1, -1, 0, 0},
    {{IMAGE_FORMAT_TYPE_RGB, IMAGE_FORMAT_TYPE_YUV}, 45, -1, -1, 0, 0},
    {{IMAGE_FORMAT_TYPE_RGBA}, 60, -1, -1, 0, 0},
    {{IMAGE_FORMAT_TYPE_YUV422P}, 30, 15, 22, 7, 16},
    {{IMAGE_FORMAT_TYPE_YV12, IMAGE_FORMAT_TYPE_YU12}, 30, 15, -1, 7, 0},
    {{IMAGE_FORMAT_TYPE_NV12, IMAGE_FORMAT_TYPE_NV21}, 30, 15, 18, 3, 18},
};

void expect_no_planes(Image& image) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(image.getPlanes()[i], nullptr);
    }
}

// Absent planes, depths and other sizes are the fuzz target's.
TEST(Image, LaysOutAndCopiesEveryFormat) {
    std::vector<unsigned char> source[] = {random_bytes(60, 1), random_bytes(60, 2), random_bytes(60, 3)};
    unsigned char* planes[4] = {source[0].data(), source[1].data(), source[2].data()};
    for (const LayoutCase& layout : kLayoutCases) {
        for (const ImageFormatType format : layout.formats) {
            SCOPED_TRACE(format);
            std::vector<unsigned char> expected(layout.bytes + 2);
            std::copy_n(planes[0], layout.second < 0 ? layout.bytes : 15, expected.data());
            std::copy_n(planes[1], layout.chromaBytes, &expected[15]);
            std::copy_n(planes[2], layout.third < 0 ? 0 : layout.chromaBytes, &expected[layout.thirdCopy]);
            // Set over another picture, so that pixels left from before would show.
            Image image(7, 7, 1, IMAGE_FORMAT_TYPE_NV12, nullptr);
            std::fill_n(image.getPlanes()[0], 98, static_cast<unsigned char>(0xEE));
            image.set(5, 3, 1, format, planes);
            unsigned char** placed = image.getPlanes();
            ASSERT_NE(placed[0], nullptr);
            EXPECT_EQ(placed[1], layout.second < 0 ? nullptr : placed[0] + layout.second);
            EXPECT_EQ(placed[2], layout.third < 0 ? nullptr : placed[0] + layout.third);
            EXPECT_EQ(placed[3], nullptr);
            EXPECT_EQ(static_cast<size_t>(image.getDepthType()), layout.bytes / 15);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), placed[0]));
        }
    }
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
