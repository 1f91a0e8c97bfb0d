// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <utility>
#include <vector>

#include "algorithms/fast_detection.h"
#include "tools/batch.h"
#include "tools/command.h"
#include "tools/effects.h"
#include "tools/json.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

struct CornersOptions {
    PhotoOptions photo;
    CornerSettings settings;
    bool wantsJson = false;
};

std::string json(const CornersOptions& options, const Corners& corners, const Image& photo) {
    constexpr int kCirclePixels = 16;
    int circle[25];
    makeOffsets(circle, static_cast<int>(photo.getWidth()), kCirclePixels);
    Json rows = Json::array();
    for (const KeyPoint& corner : corners.found) {
        const size_t at = static_cast<size_t>(corner.y) * photo.getWidth() + static_cast<size_t>(corner.x);
        const int score = cornerScore16(corners.gray.data() + at, circle, options.settings.threshold);
        rows.push_back({{"x", corner.x}, {"y", corner.y}, {"score", score}});
    }
    return json_line(
        {{"file", options.photo.input}, {"width", photo.getWidth()}, {"height", photo.getHeight()}, {"corners", rows}});
}

std::string text(const std::vector<KeyPoint>& corners) {
    return std::to_string(corners.size()) + (corners.size() == 1 ? " corner" : " corners");
}

void corners(const CornersOptions& options) {
    const std::string& output = options.photo.output;
    if (!output.empty()) {
        check_output(output, options.photo.write);
    } else if (!options.wantsJson) {
        throw UsageError("--output is required, or --json");
    }
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGB, options.photo.read);
    const Corners corners = find_corners(photo, options.settings);
    const std::string report = options.wantsJson ? json(options, corners, *photo.image) : text(corners.found);
    if (!output.empty()) {
        mark_corners(photo, corners.found);
        write_photo(output, std::move(photo), options.photo.write);
    }
    print_report(options.photo, report, options.wantsJson);
}

}  // namespace

std::function<void()> setup_corners_command(CLI::App& app) {
    auto options = std::make_shared<CornersOptions>();
    add_photo_options(app, options->photo)->required(false);
    add_json(app, options->wantsJson);
    add_setting(app, kCornerThreshold, options->settings.threshold);
    add_setting(app, kCornerDistance, options->settings.minDistance);
    app.add_flag("--no-suppression", options->settings.keepAll, "Keep corners beside stronger ones, too");
    return [options] { for_each_photo(options->photo, [&] { corners(*options); }); };
}

}  // namespace korvane
