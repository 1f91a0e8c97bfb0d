// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include "algorithms/fast_detection.h"
#include "frameworks/images/color_convert.h"
#include "tools/command.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

struct CornersOptions {
    PhotoOptions photo;
    FastParams params = {20, 1, 8, 0, 3, 3};
    bool keepAll = false;
};

// Draws the outline of a square around the corner. The corner itself stays visible.
void mark(Image& photo, const KeyPoint& corner) {
    constexpr int kReach = 4;
    constexpr unsigned char kRed[3] = {255, 0, 0};
    const int width = static_cast<int>(photo.getWidth());
    const int height = static_cast<int>(photo.getHeight());
    for (int y = std::max(0, corner.y - kReach); y <= std::min(height - 1, corner.y + kReach); ++y) {
        for (int x = std::max(0, corner.x - kReach); x <= std::min(width - 1, corner.x + kReach); ++x) {
            if (std::max(std::abs(x - corner.x), std::abs(y - corner.y)) == kReach) {
                const size_t pixel = static_cast<size_t>(y) * photo.getWidth() + static_cast<size_t>(x);
                std::copy(std::begin(kRed), std::end(kRed), photo.getPlanes()[0] + pixel * 3);
            }
        }
    }
}

void corners(CornersOptions options) {
    check_output(options.photo.output, options.photo.write);
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGB, options.photo.read);
    const int width = static_cast<int>(photo.image->getWidth());
    const int height = static_cast<int>(photo.image->getHeight());
    std::vector<unsigned char> gray(static_cast<size_t>(width) * static_cast<size_t>(height));
    color_convert_rgb2gray(photo.pixels(), gray.data(), width, height);
    options.params.nonmax_suppression = options.keepAll ? 0 : 1;
    std::vector<KeyPoint> found;
    fast16(gray.data(), found, width, height, &options.params);
    for (const KeyPoint& corner : found) {
        mark(*photo.image, corner);
    }
    write_photo(options.photo.output, std::move(photo), options.photo.write);
    std::cout << found.size() << (found.size() == 1 ? " corner\n" : " corners\n");
}

}  // namespace

std::function<void()> setup_corners_command(CLI::App& app) {
    auto options = std::make_shared<CornersOptions>();
    add_photo_options(app, options->photo);
    app.add_option("--threshold", options->params.threshold,
                   "By how much the pixels about a corner are darker or brighter than it, at the least")
        ->check(CLI::Range(0, 255))
        ->capture_default_str();
    app.add_option(
           "--min-dist", options->params.min_dist,
           "Keep one corner in every so many columns and half as many rows; columns 32 times as far apart share "
           "one; with 0 only one is kept at all")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_flag("--no-suppression", options->keepAll, "Keep corners beside stronger ones, too");
    return [options] { corners(*options); };
}

}  // namespace korvane
