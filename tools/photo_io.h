// Photos on disk for the commands: JPEG in and out through the library's own codec and file streams.
//
// Both functions throw CommandError with a text that names the file and the cause.
#ifndef KORVANE_TOOLS_PHOTO_IO_H_
#define KORVANE_TOOLS_PHOTO_IO_H_

#include <string>

#include "frameworks/core/auto_ptr.h"
#include "frameworks/images/image.h"

namespace korvane {

constexpr int kPhotoQuality = 92;

// The photo in `path`, depth 1, as IMAGE_FORMAT_TYPE_RGB or IMAGE_FORMAT_TYPE_RGBA (alpha 255), also from a grayscale
// file. Never an image without pixels.
auto_ptr<Image> read_photo(const std::string& path, ImageFormatType format = IMAGE_FORMAT_TYPE_RGB);

// Writes a GRAY, RGB or RGBA image as a JPEG file. The bytes go to a temporary name beside the target, which then takes
// the target's place in one step: a failure leaves an existing target as it was and no partial file. A target that
// exists must be a regular file, or a symbolic link to one.
void write_photo(const std::string& path, auto_ptr<Image>& image, int quality = kPhotoQuality);

}  // namespace korvane

#endif  // KORVANE_TOOLS_PHOTO_IO_H_
