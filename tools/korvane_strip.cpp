// SPDX-License-Identifier: Apache-2.0
// Puts pictures side by side for the gallery and the README: each scaled to one height, with a white line between them.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "tools/command.h"
#include "tools/photo/photo_io.h"

namespace {

using namespace korvane;

constexpr uint32_t kGapPixels = 6;
constexpr uint32_t kMaxHeightPixels = 4096;

uint32_t scaled_width(Image* photo, uint32_t height) {
    const uint64_t width = static_cast<uint64_t>(photo->getWidth()) * height / photo->getHeight();
    return static_cast<uint32_t>(width > 0 ? width : 1);
}

// The mean of the source pixels under one result pixel; each covers at least one.
unsigned char mean(Image* photo, uint32_t x0, uint32_t x1, uint32_t y0, uint32_t y1, size_t channel) {
    uint64_t sum = 0;
    for (uint32_t y = y0; y < y1; ++y) {
        for (uint32_t x = x0; x < x1; ++x) {
            sum += photo->getPlanes()[0][(static_cast<size_t>(y) * photo->getWidth() + x) * 3 + channel];
        }
    }
    const uint64_t count = static_cast<uint64_t>(x1 - x0) * (y1 - y0);
    return static_cast<unsigned char>((sum + count / 2) / count);
}

uint32_t edge(uint32_t position, uint32_t from, uint32_t to) {
    return static_cast<uint32_t>(static_cast<uint64_t>(position) * to / from);
}

void draw(Image* photo, Image* strip, uint32_t left) {
    const uint32_t height = strip->getHeight();
    const uint32_t width = scaled_width(photo, height);
    for (uint32_t y = 0; y < height; ++y) {
        unsigned char* out = strip->getPlanes()[0] + (static_cast<size_t>(y) * strip->getWidth() + left) * 3;
        const uint32_t y0 = edge(y, height, photo->getHeight());
        const uint32_t y1 = std::max(y0 + 1, edge(y + 1, height, photo->getHeight()));
        for (uint32_t x = 0; x < width; ++x) {
            const uint32_t x0 = edge(x, width, photo->getWidth());
            const uint32_t x1 = std::max(x0 + 1, edge(x + 1, width, photo->getWidth()));
            for (size_t channel = 0; channel < 3; ++channel) {
                *out++ = mean(photo, x0, x1, y0, y1, channel);
            }
        }
    }
}

void make_strip(const char* output, uint32_t height, const std::vector<std::string>& inputs) {
    std::vector<auto_ptr<Image>> photos;
    uint32_t width = 0;
    for (const std::string& input : inputs) {
        photos.push_back(read_photo(input).image);
        width += scaled_width(photos.back().get(), height) + (photos.size() > 1 ? kGapPixels : 0);
    }
    auto_ptr<Image> strip(Image::createImage(width, height, 1, IMAGE_FORMAT_TYPE_RGB, nullptr));
    if (strip->getPlanes()[0] == nullptr) {
        throw CommandError("the strip does not fit in memory");
    }
    std::fill_n(strip->getPlanes()[0], static_cast<size_t>(width) * height * 3, static_cast<unsigned char>(255));
    uint32_t left = 0;
    for (const auto_ptr<Image>& photo : photos) {
        draw(photo.get(), strip.get(), left);
        left += scaled_width(photo.get(), height) + kGapPixels;
    }
    Photo photo;
    photo.image = strip;
    photo.jpeg.quality = 85;
    write_photo(output, std::move(photo));
}

}  // namespace

int main(int argc, char** argv) {
    const int height = argc > 3 ? atoi(argv[2]) : 0;
    if (height < 1 || height > static_cast<int>(kMaxHeightPixels)) {
        fprintf(stderr, "usage: korvane_strip OUT.jpg HEIGHT IN.jpg...   (a height of 1 to 4096 pixels)\n");
        return 2;
    }
    try {
        make_strip(argv[1], static_cast<uint32_t>(height), std::vector<std::string>(argv + 3, argv + argc));
    } catch (const std::exception& error) {
        fprintf(stderr, "korvane_strip: %s\n", error.what());
        return 2;
    }
    return 0;
}
