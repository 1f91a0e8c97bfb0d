// SPDX-License-Identifier: Apache-2.0
// The file formats of photos: one reader and one writer each, from and to bytes in memory.
//
// Readers leave the pixels as they lie in the file; read_photo turns them upright. Readers and writers throw
// FormatError with the reason, or std::bad_alloc.
#ifndef KORVANE_TOOLS_PHOTO_FORMATS_H_
#define KORVANE_TOOLS_PHOTO_FORMATS_H_

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/photo/photo.h"

namespace korvane {

class FormatError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

Photo read_jpeg(const Bytes& file, size_t maxPixels);
Photo read_png(const Bytes& file, size_t maxPixels);
Photo read_webp(const Bytes& file, size_t maxPixels);

// Called by the readers before they take memory for the pixels.
void require_pixels(size_t width, size_t height, size_t maxPixels);

// `quality` is 1 to 100, or 0 for the format's default: a JPEG file gets the tables of photo.jpeg. The alpha must be
// empty for a format without it. Blocks that the format cannot hold are left out and named in photo.warnings.
Bytes write_jpeg(Photo& photo, int quality);
Bytes write_png(Photo& photo, int quality);
Bytes write_webp(Photo& photo, int quality);

using Rgb = std::array<unsigned char, 3>;

struct IndexedPicture {
    uint32_t width;
    uint32_t height;
    // 1 to 256 colours.
    std::vector<Rgb> palette;
    Bytes indices;
};

Bytes write_indexed_png(const IndexedPicture& picture, Metadata metadata);

struct PhotoFormatInfo {
    PhotoFormat format;
    // The first extension is also the name for --format.
    std::vector<std::string> extensions;
    bool (*recognizes)(const Bytes& file);
    Photo (*read)(const Bytes& file, size_t maxPixels);
    Bytes (*write)(Photo& photo, int quality);
    bool hasAlpha;
};

const std::vector<PhotoFormatInfo>& photo_formats();

// By the file's first bytes, 16 of them at the most; null for anything else.
const PhotoFormatInfo* recognize_photo(const Bytes& file);

const PhotoFormatInfo& format_info(PhotoFormat format);

// Every pixel has three equal channels.
bool has_gray_pixels(const Photo& photo);

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_FORMATS_H_
