#include <CLI/CLI.hpp>
#include <memory>

#include "algorithms/alpha_blend.h"
#include "algorithms/stack_blur.h"
#include "tools/colour.h"
#include "tools/command.h"
#include "tools/photo_io.h"

namespace korvane {
namespace {

struct BlurOptions {
    std::string input;
    std::string output;
    int radius = 25;
    std::string color = "#000000";
    int alpha = 0;
};

void blur(const BlurOptions& options) {
    const Colour colour = parse_colour(options.color);
    auto_ptr<Image> photo = read_photo(options.input, IMAGE_FORMAT_TYPE_RGBA);
    unsigned char* pixels = photo->getPlanes()[0];
    const int width = static_cast<int>(photo->getWidth());
    const int height = static_cast<int>(photo->getHeight());
    stack_blur(pixels, width, height, options.radius);
    alpha_blend(pixels, width * height, colour.red, colour.green, colour.blue, options.alpha);
    write_photo(options.output, photo);
}

}  // namespace

std::function<void()> setup_blur_command(CLI::App& app) {
    auto options = std::make_shared<BlurOptions>();
    app.add_option("input", options->input, "The photo, a JPEG file")->required();
    app.add_option("-o,--output", options->output, "Where the result goes, a JPEG file")->required();
    app.add_option("--radius", options->radius, "How far the blur reaches, in pixels")
        ->check(CLI::Range(0, 254))
        ->capture_default_str();
    app.add_option("--color", options->color, "The colour to dim towards, as #RRGGBB")->capture_default_str();
    app.add_option("--alpha", options->alpha, "How much of that colour: 0 is none, 256 nothing else")
        ->check(CLI::Range(0, 256))
        ->capture_default_str();
    return [options] { blur(*options); };
}

}  // namespace korvane
