// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/formats.h"

#include <algorithm>
#include <string_view>

namespace korvane {
namespace {

bool holds(const Bytes& file, size_t at, std::string_view text) {
    return file.size() >= at + text.size() &&
           std::equal(text.begin(), text.end(), file.begin() + static_cast<ptrdiff_t>(at),
                      [](char a, unsigned char b) { return static_cast<unsigned char>(a) == b; });
}

bool is_jpeg(const Bytes& file) {
    return holds(file, 0, "\xFF\xD8\xFF");
}

bool is_png(const Bytes& file) {
    return holds(file, 0, "\x89PNG\r\n\x1A\n");
}

bool is_webp(const Bytes& file) {
    return holds(file, 0, "RIFF") && holds(file, 8, "WEBP");
}

}  // namespace

const std::vector<PhotoFormatInfo>& photo_formats() {
    static const std::vector<PhotoFormatInfo> formats = {
        {PhotoFormat::kJpeg, {"jpg", "jpeg"}, is_jpeg, read_jpeg, write_jpeg, false},
        {PhotoFormat::kPng, {"png"}, is_png, read_png, write_png, true},
        {PhotoFormat::kWebp, {"webp"}, is_webp, read_webp, write_webp, true},
    };
    return formats;
}

const PhotoFormatInfo* recognize_photo(const Bytes& file) {
    for (const PhotoFormatInfo& info : photo_formats()) {
        if (info.recognizes(file)) {
            return &info;
        }
    }
    return nullptr;
}

void require_pixels(size_t width, size_t height, size_t maxPixels) {
    if (width > maxPixels / height) {
        throw FormatError("it has " + std::to_string(width) + " x " + std::to_string(height) +
                          " pixels, more than the " + std::to_string(maxPixels) + " that are allowed here");
    }
}

const PhotoFormatInfo& format_info(PhotoFormat format) {
    return *std::find_if(photo_formats().begin(), photo_formats().end(),
                         [format](const PhotoFormatInfo& info) { return info.format == format; });
}

bool has_gray_pixels(const Photo& photo) {
    const unsigned char* pixel = photo.pixels();
    const unsigned char* const end = pixel + photo.pixelCount() * photo.pixelBytes();
    for (; pixel != end; pixel += photo.pixelBytes()) {
        if (pixel[0] != pixel[1] || pixel[1] != pixel[2]) {
            return false;
        }
    }
    return true;
}

}  // namespace korvane
