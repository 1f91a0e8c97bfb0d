// SPDX-License-Identifier: Apache-2.0
// Any bytes as a photo of the command line: what is read has its pixels, can be written in every format, and comes back
// from a format without loss as it was.
#include "tests/fuzz/fuzz.h"
#include "tools/command.h"
#include "tools/photo/formats.h"
#include "tools/photo/photo_io.h"

namespace {

constexpr size_t kMaxPixels = 10'000;

korvane::Photo read(const Bytes& file) {
    return korvane::decode_photo(file, "the input", IMAGE_FORMAT_TYPE_RGB, kMaxPixels);
}

Bytes pixels_of(const korvane::Photo& photo) {
    return {photo.pixels(), photo.pixels() + photo.pixelCount() * photo.pixelBytes()};
}

}  // namespace

void fuzz(Input& input) {
    korvane::Photo photo;
    try {
        photo = read(input.rest());
    } catch (const korvane::CommandError& error) {
        REQUIRE(std::string(error.what()).find("the input") != std::string::npos);
        return;
    }
    const size_t count = photo.pixelCount();
    REQUIRE(count > 0 && count <= kMaxPixels && (photo.alpha.empty() || photo.alpha.size() == count));
    const Bytes before = pixels_of(photo);
    for (const korvane::PhotoFormatInfo& format : korvane::photo_formats()) {
        // WebP's encoder takes its time.
        if (format.format == korvane::PhotoFormat::kWebp && count > 600) {
            continue;
        }
        korvane::Photo copy = photo;
        if (!format.hasAlpha) {
            copy.alpha.clear();
        }
        const Bytes written = korvane::encode_photo(copy, format.format, {}, "the output");
        const korvane::Photo again = read(written);
        REQUIRE(again.image->getWidth() == photo.image->getWidth() &&
                again.image->getHeight() == photo.image->getHeight());
        if (format.format == korvane::PhotoFormat::kPng) {
            REQUIRE(again.alpha == photo.alpha && pixels_of(again) == before);
        }
    }
}
