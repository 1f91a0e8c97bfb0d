// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "algorithms/alpha_blend.h"
#include "algorithms/fast_blur.h"
#include "algorithms/gauss_blur.h"
#include "algorithms/gauss_blur_iir.h"
#include "algorithms/stack_blur.h"
#include "tools/color.h"
#include "tools/command.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

constexpr int kHalfAlpha = 128;

struct BlurOptions {
    PhotoOptions photo;
    std::string method = "stack";
    int radius = 25;
    std::optional<std::string> color;
    std::optional<double> sigma;
    std::optional<int> alpha;
};

// For blurs that take one byte a pixel: each channel is blurred by itself.
template <void (*kBlur)(unsigned char*, unsigned char*, int, int, int)>
void blur_channels(unsigned char* pixels, int width, int height, int radius) {
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<unsigned char> channel(count);
    std::vector<unsigned char> blurred(count);
    for (size_t c = 0; c < 3; ++c) {
        for (size_t i = 0; i < count; ++i) {
            channel[i] = pixels[i * 4 + c];
        }
        kBlur(channel.data(), blurred.data(), width, height, radius);
        for (size_t i = 0; i < count; ++i) {
            pixels[i * 4 + c] = blurred[i];
        }
    }
}

void blur_fast(unsigned char* pixels, int width, int height, int radius) {
    fast_blur(reinterpret_cast<unsigned int*>(pixels), pixels, width, height, radius);
}

void blur_recursively(unsigned char* pixels, int width, int height, double radius) {
    constexpr int kLeastSide = 5;
    if (std::min(width, height) < kLeastSide) {
        throw CommandError("--method iir needs a photo of at least 5 x 5 pixels");
    }
    const auto distance = static_cast<float>(radius);
    gaussiir(pixels, width, height, 4, width * 4, distance, distance);
}

template <void (*kBlur)(unsigned char*, int, int, int)>
void blur_by_integer(unsigned char* pixels, int width, int height, double radius) {
    kBlur(pixels, width, height, static_cast<int>(std::lround(radius)));
}

// The deviation of a blur is sqrt((radius^2 + linear * radius) / divisor).
struct Method {
    const char* name;
    const char* summary;
    const char* radius;  // what the radius is
    int maxRadius;
    double linear;
    double divisor;
    void (*blur)(unsigned char* rgba, int width, int height, double radius);

    double deviation(double distance) const { return std::sqrt((distance * distance + linear * distance) / divisor); }
    double radius_of(double sigma) const {
        return std::sqrt(linear * linear / 4 + divisor * sigma * sigma) - linear / 2;
    }
};

// 2 ln 255: the square of the distance, in deviations, at which a Gaussian has faded to 1 / 255.
constexpr double kFadedSquare = 11.082527;

// Above 80 the recursive Gaussian loses its precision in 32-bit floats.
constexpr Method kMethods[] = {
    {"stack", "weights fall evenly", "how far they reach", 254, 2, 6, blur_by_integer<stack_blur>},
    {"box", "a plain mean", "how far it reaches", 2000, 1, 3, blur_by_integer<blur_channels<box_blur>>},
    {"gauss", "three boxes", "the deviation", 2000, 0, 1, blur_by_integer<blur_channels<gauss_blur>>},
    {"fast", "as box, rounded down", "how far it reaches", 2000, 1, 3, blur_by_integer<blur_fast>},
    {"iir", "a recursive Gaussian", "where a point has faded to 1/255", 80, 0, kFadedSquare, blur_recursively},
};

// "stack (weights fall evenly), box (a plain mean), ..."
std::string list_methods(const std::function<std::string(const Method&)>& text) {
    std::string list;
    for (const Method& method : kMethods) {
        list += (list.empty() ? "" : ", ") + std::string(method.name) + text(method);
    }
    return list;
}

const Method& find_method(const BlurOptions& options) {
    const Method* method = std::find_if(std::begin(kMethods), std::end(kMethods),
                                        [&](const Method& candidate) { return options.method == candidate.name; });
    if (method == std::end(kMethods)) {
        throw CommandError("--method: '" + options.method + "' is none of " +
                           list_methods([](const Method& /*method*/) { return ""; }));
    }
    return *method;
}

[[noreturn]] void refuse(const char* option, double value, double most, const Method& method) {
    std::ostringstream text;
    text << option << ": " << value << " is not within 0 to " << most << ", the range of --method " << method.name;
    throw CommandError(text.str());
}

double find_radius(const BlurOptions& options, const Method& method) {
    if (!options.sigma) {
        if (options.radius < 0 || options.radius > method.maxRadius) {
            refuse("--radius", options.radius, method.maxRadius, method);
        }
        return options.radius;
    }
    const double most = std::floor(method.deviation(method.maxRadius) * 10) / 10;
    if (!(*options.sigma >= 0 && *options.sigma <= most)) {
        refuse("--sigma", *options.sigma, most, method);
    }
    return method.radius_of(*options.sigma);
}

void blur(const BlurOptions& options) {
    const Method& method = find_method(options);
    const double radius = find_radius(options, method);
    const RgbColor color = parse_color(options.color.value_or("black"));
    const int alpha = options.alpha.value_or(options.color ? kHalfAlpha : 0);
    check_output(options.photo.output, options.photo.write);
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGBA, options.photo.read);
    unsigned char* pixels = photo.pixels();
    const int width = static_cast<int>(photo.image->getWidth());
    const int height = static_cast<int>(photo.image->getHeight());
    method.blur(pixels, width, height, radius);
    alpha_blend(pixels, width * height, color.red, color.green, color.blue, alpha);
    write_photo(options.photo.output, std::move(photo), options.photo.write);
}

}  // namespace

std::function<void()> setup_blur_command(CLI::App& app) {
    auto options = std::make_shared<BlurOptions>();
    add_photo_options(app, options->photo);
    app.add_option("--method", options->method,
                   list_methods([](const Method& method) { return " (" + std::string(method.summary) + ")"; }))
        ->capture_default_str();
    CLI::Option* radius =
        app.add_option("--radius", options->radius,
                       "In pixels, and what it is: " + list_methods([](const Method& method) {
                           return " 0 to " + std::to_string(method.maxRadius) + " (" + method.radius + ")";
                       }))
            ->capture_default_str();
    app.add_option("--sigma", options->sigma,
                   "In place of --radius: the deviation in pixels, the same strength with every method; all but iir "
                   "take the nearest whole radius")
        ->excludes(radius);
    app.add_option("--color", options->color,
                   "The colour to dim towards: #RRGGBB, #RGB or a name of CSS such as navy; by default black");
    app.add_option("--alpha", options->alpha,
                   "How much of that colour: 0 is none, 256 nothing else; by default 128 with --color, else 0")
        ->check(CLI::Range(0, 256));
    return [options] { blur(*options); };
}

}  // namespace korvane
