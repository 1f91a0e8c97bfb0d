// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/metadata.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <random>
#include <sstream>
#include <string>

#include "tools/photo/cmyk.h"

namespace {

using namespace korvane;

constexpr size_t kThumbnail = 110;

// A TIFF block in either byte order, of fields in hexadecimal digits: orientation 6, the two sides, a maker's note that
// names its own place, and a thumbnail.
Bytes exif_block(bool isBigEndian) {
    std::istringstream fields(
        "002A 00000008 0002 0112 0003 00000001 0006 0000 8769 0004 00000001 00000026 00000050 0003 A002 0004 00000001 "
        "00000FA0 A003 0003 00000001 0BB8 0000 927C 0004 00000001 4D4E0000 00000000 0002 0201 0004 00000001 0000006E "
        "0202 0004 00000001 0000000A 00000000 D8 D8 D8 D8 D8 D8 D8 D8 D8 D8");
    Bytes block(2, isBigEndian ? 'M' : 'I');
    for (std::string field; fields >> field;) {
        for (size_t i = 0; i < field.size(); i += 2) {
            const std::string byte = field.substr(isBigEndian ? i : field.size() - 2 - i, 2);
            block.push_back(static_cast<unsigned char>(std::stoul(byte, nullptr, 16)));
        }
    }
    return block;
}

TEST(PhotoMetadata, OnlyTheOrientationTheSizeAndTheThumbnailChange) {
    for (const bool isBigEndian : {false, true}) {
        Bytes expected = exif_block(isBigEndian);
        Bytes exif = expected;
        EXPECT_EQ(exif_orientation(exif), 6);
        update_exif(exif, 3000, 4000);
        EXPECT_EQ(exif_orientation(exif), 1);
        expected.resize(kThumbnail);
        EXPECT_EQ(exif.size(), expected.size());
        size_t changed = 0;
        for (size_t i = 0; i < exif.size(); ++i) {
            changed += exif[i] != expected[i] ? 1 : 0;
        }
        // The orientation, two bytes for each side, and the offset of the second directory.
        EXPECT_EQ(changed, 6u);
    }
    const std::string before =
        "<a tiff:Orientation=\"8\"><tiff:Orientation> 3</tiff:Orientation><xmp:Thumbnails>x"
        "</xmp:Thumbnails>7</a>";
    Bytes xmp(before.begin(), before.end());
    update_xmp(xmp);
    EXPECT_EQ(std::string(xmp.begin(), xmp.end()),
              "<a tiff:Orientation=\"1\"><tiff:Orientation> 1</tiff:Orientation>7</a>");
    using namespace std::string_literals;
    const std::string caption = "8BIM\4\4\0\0\0\0\0\3abc\0"s;
    const std::string both = caption + "8BIM\4\x0C\0\0\0\0\0\2xy"s + caption;
    Bytes photoshop(both.begin(), both.end());
    update_photoshop(photoshop);
    EXPECT_EQ(std::string(photoshop.begin(), photoshop.end()), caption + caption);
}

// The address sanitizer watches.
TEST(PhotoMetadata, HostileBlocksAreHarmless) {
    std::mt19937 random(5);
    using namespace std::string_literals;
    const std::string resources = "8BIM\4\4\0\0\0\0\0\3abc\0"s + "8BIM\4\x0C\2ab\0\0\0\0\2xy"s;
    for (int round = 0; round < 20'000; ++round) {
        Bytes exif = exif_block(round % 2 == 0);
        Bytes photoshop(resources.begin(), resources.end());
        for (Bytes* block : {&exif, &photoshop}) {
            for (int i = 0; i < 4; ++i) {
                (*block)[random() % block->size()] = static_cast<unsigned char>(random() % 4 == 0 ? 0xFF : random());
            }
            block->resize(random() % 4 == 0 ? random() % block->size() : block->size());
        }
        const int orientation = exif_orientation(exif);
        EXPECT_TRUE(orientation >= 1 && orientation <= 8);
        update_exif(exif, 1, 1);
        update_photoshop(photoshop);
        EXPECT_LE(photoshop.size(), resources.size());
    }
}

// A printer whose three coloured inks are invisible.
Bytes black_only_profile() {
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 2, 4, 3, nullptr);
    const auto lightness = [](const cmsUInt16Number* ink, cmsUInt16Number* lab, void*) {
        lab[0] = static_cast<cmsUInt16Number>(0xFF00 - ink[3] / 2);
        lab[1] = lab[2] = 0x8000;
        return 1;
    };
    cmsStageSampleCLut16bit(table, lightness, nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    cmsPipelineFree(pipeline);
    cmsUInt32Number bytes = 0;
    cmsSaveProfileToMem(profile, nullptr, &bytes);
    Bytes result(bytes);
    cmsSaveProfileToMem(profile, result.data(), &bytes);
    cmsCloseProfile(profile);
    return result;
}

TEST(PhotoFormats, CmykGoesThroughItsProfile) {
    constexpr unsigned char kCyan[] = {255, 0, 0, 0};
    for (const bool hasProfile : {false, true}) {
        for (const bool isInverted : {false, true}) {
            Photo photo;
            photo.image = make_image(1, 1, IMAGE_FORMAT_TYPE_RGBA);
            for (size_t c = 0; c < 4; ++c) {
                photo.pixels()[c] = isInverted ? static_cast<unsigned char>(255 - kCyan[c]) : kCyan[c];
            }
            photo.metadata.icc = hasProfile ? black_only_profile() : Bytes();
            convert_cmyk(photo, isInverted);
            EXPECT_NEAR(photo.pixels()[0], hasProfile ? 255 : 0, 2);
            EXPECT_NEAR(photo.pixels()[1], 255, 2);
            EXPECT_TRUE(photo.metadata.icc.empty());
        }
    }
}

}  // namespace
