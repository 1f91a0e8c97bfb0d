#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
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

struct BlurOptions {
    PhotoOptions photo;
    std::string method = "stack";
    int radius = 25;
    std::string color = "#000000";
    int alpha = 0;
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

void blur_recursively(unsigned char* pixels, int width, int height, int radius) {
    constexpr int kLeastSide = 5;
    if (std::min(width, height) < kLeastSide) {
        throw CommandError("--method iir needs a photo of at least 5 x 5 pixels");
    }
    const auto distance = static_cast<float>(radius);
    gaussiir(pixels, width, height, 4, width * 4, distance, distance);
}

struct Method {
    const char* name;
    int maxRadius;
    void (*blur)(unsigned char* rgba, int width, int height, int radius);
};

// Above 80 the recursive Gaussian loses its precision in 32-bit floats.
constexpr Method kMethods[] = {
    {"stack", 254, stack_blur}, {"box", 2000, blur_channels<box_blur>}, {"gauss", 2000, blur_channels<gauss_blur>},
    {"fast", 2000, blur_fast},  {"iir", 80, blur_recursively},
};

const Method& find_method(const BlurOptions& options) {
    const Method* method = std::find_if(std::begin(kMethods), std::end(kMethods),
                                        [&](const Method& candidate) { return options.method == candidate.name; });
    if (method == std::end(kMethods)) {
        std::string names;
        for (const Method& candidate : kMethods) {
            names += names.empty() ? "" : ", ";
            names += candidate.name;
        }
        throw CommandError("--method: '" + options.method + "' is none of " + names);
    }
    if (options.radius < 0 || options.radius > method->maxRadius) {
        throw CommandError("--radius: " + std::to_string(options.radius) + " is not within 0 to " +
                           std::to_string(method->maxRadius) + ", the range of --method " + method->name);
    }
    return *method;
}

void blur(const BlurOptions& options) {
    const Method& method = find_method(options);
    const RgbColor color = parse_color(options.color);
    check_output(options.photo.output, options.photo.write);
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGBA, options.photo.read);
    unsigned char* pixels = photo.pixels();
    const int width = static_cast<int>(photo.image->getWidth());
    const int height = static_cast<int>(photo.image->getHeight());
    method.blur(pixels, width, height, options.radius);
    alpha_blend(pixels, width * height, color.red, color.green, color.blue, options.alpha);
    write_photo(options.photo.output, std::move(photo), options.photo.write);
}

}  // namespace

std::function<void()> setup_blur_command(CLI::App& app) {
    auto options = std::make_shared<BlurOptions>();
    add_photo_options(app, options->photo);
    app.add_option("--method", options->method,
                   "stack, box (a plain mean), fast (the same, rounded down), gauss (three boxes) or iir (a recursive "
                   "Gaussian)")
        ->capture_default_str();
    app.add_option(
           "--radius", options->radius,
           "How far the blur reaches, in pixels: 0 to 254 for stack, to 80 for iir, else to 2000; for gauss it is "
           "the deviation")
        ->capture_default_str();
    app.add_option("--color", options->color, "The colour to dim towards, as #RRGGBB")->capture_default_str();
    app.add_option("--alpha", options->alpha, "How much of that colour: 0 is none, 256 nothing else")
        ->check(CLI::Range(0, 256))
        ->capture_default_str();
    return [options] { blur(*options); };
}

}  // namespace korvane
