// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <charconv>
#include <memory>
#include <utility>

#include "tools/command.h"
#include "tools/photo/photo_io.h"
#include "tools/scene.h"

namespace korvane {
namespace {

constexpr uint32_t kMaxSidePixels = 65500;

struct SceneOptions {
    std::string output;
    WriteOptions write;
    std::string size = "1920x1080";
    std::string subject = "house";
};

struct Size {
    uint32_t width = 0;
    uint32_t height = 0;
};

bool in_range(uint32_t side) {
    return side >= 1 && side <= kMaxSidePixels;
}

Size parse_size(const std::string& text) {
    Size size;
    const char* const end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, size.width);
    if (width.ec == std::errc() && width.ptr != end && *width.ptr == 'x') {
        const auto height = std::from_chars(width.ptr + 1, end, size.height);
        if (height.ec == std::errc() && height.ptr == end && in_range(size.width) && in_range(size.height)) {
            return size;
        }
    }
    throw CommandError("'" + text + "' is not a size: write it as WIDTHxHEIGHT, each 1 to 65500");
}

SceneSubject parse_subject(const std::string& text) {
    if (text != "house" && text != "portrait") {
        throw CommandError("--subject: '" + text + "' is none of house, portrait");
    }
    return text == "house" ? SceneSubject::kHouse : SceneSubject::kPortrait;
}

}  // namespace

std::function<void()> setup_scene_command(CLI::App& app) {
    auto options = std::make_shared<SceneOptions>();
    app.add_option("output", options->output, "Where the picture goes; - is standard output")->required();
    add_write_options(app, options->write);
    app.add_option("--size", options->size, "Width and height in pixels, as 1920x1080")->capture_default_str();
    app.add_option("--subject", options->subject, "What it shows: house or portrait")->capture_default_str();
    return [options] {
        const Size size = parse_size(options->size);
        const SceneSubject subject = parse_subject(options->subject);
        check_output(options->output, options->write);
        Photo scene;
        scene.image = draw_scene(size.width, size.height, subject);
        if (scene.pixels() == nullptr) {
            throw CommandError("a picture of " + options->size + " does not fit in memory");
        }
        write_photo(options->output, std::move(scene), options->write);
    };
}

}  // namespace korvane
