// SPDX-License-Identifier: Apache-2.0
// A photo as the commands work on it: upright pixels and all that its file carries beside them.
#ifndef KORVANE_TOOLS_PHOTO_PHOTO_H_
#define KORVANE_TOOLS_PHOTO_PHOTO_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/images/image.h"

namespace korvane {

using Bytes = std::vector<unsigned char>;

enum class PhotoFormat { kJpeg, kPng, kWebp };

enum class DensityUnit { kNone, kAspect, kInch, kCentimetre, kMetre };

// Pixels per unit.
struct Density {
    DensityUnit unit = DensityUnit::kNone;
    uint32_t x = 0;
    uint32_t y = 0;
};

// A text of a PNG file besides XMP: title, author, comment.
struct PngText {
    // libpng's number for the kind of chunk.
    int kind;
    std::string key;
    std::string text;
    std::string language;
    std::string translatedKey;
};

// Blocks that go from the input's file to the output's. Empty ones are absent.
struct Metadata {
    // From its TIFF header on. The orientation is 1 and there is no thumbnail.
    Bytes exif;
    Bytes icc;
    Bytes xmp;
    // Photoshop's resources (captions, keywords), without the name before them. Only JPEG files hold them.
    Bytes photoshop;
    std::vector<Bytes> comments;
    // Only PNG files hold these: their texts, and the exponent of their samples in 1/100000, or 0.
    std::vector<PngText> pngTexts;
    int32_t pngGamma = 0;
    Density density;
};

// How many luma samples share one chroma sample.
struct Subsampling {
    int horizontal = 2;
    int vertical = 2;
};

using QuantTable = std::array<uint16_t, 64>;

// How a JPEG file is compressed. A file that was read gives its own tables, for luma and chroma.
struct JpegStyle {
    int quality = 92;
    std::vector<QuantTable> tables;
    Subsampling subsampling;
};

struct Photo {
    // RGB or RGBA, depth 1, never without pixels once read. The alpha bytes of RGBA are 255.
    auto_ptr<Image> image;
    // One byte a pixel; empty when every pixel is opaque.
    Bytes alpha;
    Metadata metadata;
    PhotoFormat format = PhotoFormat::kJpeg;
    JpegStyle jpeg;
    // The file had one channel. It is written so again as long as the pixels are grey.
    bool isGray = false;
    // The WebP file was lossless.
    bool isLossless = false;
    // Damage that reading stepped over.
    std::vector<std::string> warnings;

    size_t pixelCount() const { return size_t{image->getWidth()} * image->getHeight(); }
    size_t pixelBytes() const { return static_cast<size_t>(image->getDepthType()); }
    unsigned char* pixels() const { return image->getPlanes()[0]; }
};

// An image of the given size and format. Throws std::bad_alloc when it has no planes.
auto_ptr<Image> make_image(size_t width, size_t height, ImageFormatType format);

// Changes the pixels' format between RGB and RGBA.
void convert_photo(Photo& photo, ImageFormatType format);

// Moves the alpha bytes of an RGBA image into the photo's own plane, or nowhere when all are 255.
void split_alpha(Photo& photo);

// Turns and mirrors the pixels as EXIF's orientation (1 to 8) says.
void make_upright(Photo& photo, int orientation);

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_PHOTO_H_
