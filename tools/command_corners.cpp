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
#include "tools/json.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

struct CornersOptions {
    PhotoOptions photo;
    FastParams params = {20, 1, 8, 0, 3, 3};
    bool keepAll = false;
    bool wantsJson = false;
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

std::string json(const std::vector<KeyPoint>& corners, const std::vector<unsigned char>& gray, int width, int height,
                 int threshold) {
    constexpr int kCirclePixels = 16;
    int circle[25];
    makeOffsets(circle, width, kCirclePixels);
    Json rows = Json::array();
    for (const KeyPoint& corner : corners) {
        const size_t at = static_cast<size_t>(corner.y) * static_cast<size_t>(width) + static_cast<size_t>(corner.x);
        rows.push_back(
            {{"x", corner.x}, {"y", corner.y}, {"score", cornerScore16(gray.data() + at, circle, threshold)}});
    }
    return json_line({{"width", width}, {"height", height}, {"corners", rows}}) + '\n';
}

std::string text(const std::vector<KeyPoint>& corners) {
    return std::to_string(corners.size()) + (corners.size() == 1 ? " corner\n" : " corners\n");
}

void corners(CornersOptions options) {
    const std::string& output = options.photo.output;
    if (!output.empty()) {
        check_output(output, options.photo.write);
    } else if (!options.wantsJson) {
        throw CommandError("--output is required, or --json");
    }
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGB, options.photo.read);
    const int width = static_cast<int>(photo.image->getWidth());
    const int height = static_cast<int>(photo.image->getHeight());
    std::vector<unsigned char> gray(static_cast<size_t>(width) * static_cast<size_t>(height));
    color_convert_rgb2gray(photo.pixels(), gray.data(), width, height);
    options.params.nonmax_suppression = options.keepAll ? 0 : 1;
    std::vector<KeyPoint> found;
    fast16(gray.data(), found, width, height, &options.params);
    if (!output.empty()) {
        for (const KeyPoint& corner : found) {
            mark(*photo.image, corner);
        }
        write_photo(output, std::move(photo), options.photo.write);
    }
    report_stream(output) << (options.wantsJson ? json(found, gray, width, height, options.params.threshold)
                                                : text(found));
}

}  // namespace

std::function<void()> setup_corners_command(CLI::App& app) {
    auto options = std::make_shared<CornersOptions>();
    add_input(app, options->photo);
    add_output(app, options->photo.output, options->photo.write)->required(false);
    add_json(app, options->wantsJson);
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
