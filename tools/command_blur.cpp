// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "tools/batch.h"
#include "tools/color.h"
#include "tools/command.h"
#include "tools/effects.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

constexpr int kHalfAlpha = 128;

struct BlurOptions {
    PhotoOptions photo;
    BlurSettings settings;
    int radius = kBlurRadius;
    std::optional<std::string> color;
    std::optional<int> alpha;
};

// "stack (weights fall evenly), box (a plain mean), ..."
std::string list_methods(const std::function<std::string(const BlurMethod&)>& text) {
    std::string list;
    for (const BlurMethod& method : blur_methods()) {
        list += (list.empty() ? "" : ", ") + std::string(method.name) + text(method);
    }
    return list;
}

void blur(const BlurOptions& options) {
    BlurSettings settings = options.settings;
    settings.radius = options.radius;
    find_blur_radius(settings);
    settings.color = parse_color(options.color.value_or("black"));
    settings.alpha = options.alpha.value_or(options.color ? kHalfAlpha : kBlurAlpha.initial);
    check_output(options.photo.output, options.photo.write);
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGBA, options.photo.read);
    blur_photo(photo, settings);
    write_photo(options.photo.output, std::move(photo), options.photo.write);
}

}  // namespace

std::function<void()> setup_blur_command(CLI::App& app) {
    auto options = std::make_shared<BlurOptions>();
    add_photo_options(app, options->photo);
    std::vector<std::string> names;
    for (const BlurMethod& method : blur_methods()) {
        names.emplace_back(method.name);
    }
    suggest(app.add_option("--method", options->settings.method, list_methods([](const BlurMethod& method) {
                               return " (" + std::string(method.summary) + ")";
                           }))
                ->capture_default_str(),
            names);
    CLI::Option* radius =
        app.add_option("--radius", options->radius,
                       "In pixels, and what it is: " + list_methods([](const BlurMethod& method) {
                           return " 0 to " + std::to_string(method.maxRadius) + " (" + method.radius + ")";
                       }))
            ->capture_default_str();
    app.add_option("--sigma", options->settings.sigma,
                   "In place of --radius: the deviation in pixels, the same strength with every method; all but iir "
                   "take the nearest whole radius")
        ->excludes(radius);
    app.add_option("--color", options->color,
                   "The colour to dim towards: #RRGGBB, #RGB or a name of CSS such as navy; by default black");
    app.add_option(kBlurAlpha.option, options->alpha,
                   std::string(kBlurAlpha.summary) + "; by default 128 with --color, else 0")
        ->check(CLI::Range(kBlurAlpha.least, kBlurAlpha.most));
    return [options] { for_each_photo(options->photo, [&] { blur(*options); }); };
}

}  // namespace korvane
