// SPDX-License-Identifier: Apache-2.0
#include "tools/photo/photo.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "frameworks/images/color_convert.h"

namespace korvane {
namespace {

constexpr size_t kTilePixels = 32;

// Where the upright picture's pixel (x, y) comes from, in a source of width x height.
struct Turn {
    bool swapsAxes;
    bool fromRight;
    bool fromBottom;
};

constexpr Turn kTurns[] = {
    {false, false, false}, {false, true, false}, {false, true, true}, {false, false, true},
    {true, false, false},  {true, false, true},  {true, true, true},  {true, true, false},
};

// In tiles, so that neither side's rows leave the cache between two of their pixels.
template <size_t kBytes>
void turn_pixels(const unsigned char* source, unsigned char* target, size_t width, size_t height, Turn turn) {
    const size_t targetWidth = turn.swapsAxes ? height : width;
    const size_t targetHeight = turn.swapsAxes ? width : height;
    const auto copy_row = [&](size_t y, size_t begin, size_t end) {
        for (size_t x = begin; x < end; ++x) {
            size_t sourceX = turn.swapsAxes ? y : x;
            size_t sourceY = turn.swapsAxes ? x : y;
            sourceX = turn.fromRight ? width - 1 - sourceX : sourceX;
            sourceY = turn.fromBottom ? height - 1 - sourceY : sourceY;
            std::memcpy(target + (y * targetWidth + x) * kBytes, source + (sourceY * width + sourceX) * kBytes, kBytes);
        }
    };
    for (size_t top = 0; top < targetHeight; top += kTilePixels) {
        for (size_t left = 0; left < targetWidth; left += kTilePixels) {
            for (size_t y = top; y < std::min(top + kTilePixels, targetHeight); ++y) {
                copy_row(y, left, std::min(left + kTilePixels, targetWidth));
            }
        }
    }
}

}  // namespace

auto_ptr<Image> make_image(size_t width, size_t height, ImageFormatType format) {
    auto_ptr<Image> image(
        Image::createImage(static_cast<uint32_t>(width), static_cast<uint32_t>(height), 1, format, nullptr));
    if (image.get() == nullptr || image->getPlanes()[0] == nullptr) {
        throw std::bad_alloc();
    }
    return image;
}

void convert_photo(Photo& photo, ImageFormatType format) {
    if (photo.image->getFormatType() == format) {
        return;
    }
    auto_ptr<Image> converted = ColorConvert::convert(photo.image, photo.image->getFormatType() * 256 + format);
    if (converted.get() == nullptr || converted->getPlanes()[0] == nullptr) {
        throw std::bad_alloc();
    }
    photo.image = converted;
}

void split_alpha(Photo& photo) {
    unsigned char* pixels = photo.pixels();
    const size_t count = photo.pixelCount();
    // Nearly all photos end here, and a loop that only looks is quick.
    unsigned char least = 255;
    for (size_t i = 0; i < count; ++i) {
        least = std::min(least, pixels[4 * i + 3]);
    }
    photo.alpha.clear();
    if (least == 255) {
        return;
    }
    photo.alpha.resize(count);
    for (size_t i = 0; i < count; ++i) {
        photo.alpha[i] = std::exchange(pixels[4 * i + 3], static_cast<unsigned char>(255));
    }
}

void make_upright(Photo& photo, int orientation) {
    if (orientation < 2 || orientation > 8) {
        return;
    }
    const Turn turn = kTurns[orientation - 1];
    const size_t width = photo.image->getWidth();
    const size_t height = photo.image->getHeight();
    auto_ptr<Image> upright =
        make_image(turn.swapsAxes ? height : width, turn.swapsAxes ? width : height, photo.image->getFormatType());
    const auto turn_image = photo.pixelBytes() == 4 ? turn_pixels<4> : turn_pixels<3>;
    turn_image(photo.pixels(), upright->getPlanes()[0], width, height, turn);
    photo.image = upright;
    if (!photo.alpha.empty()) {
        Bytes alpha(photo.alpha.size());
        turn_pixels<1>(photo.alpha.data(), alpha.data(), width, height, turn);
        photo.alpha = std::move(alpha);
    }
}

}  // namespace korvane
