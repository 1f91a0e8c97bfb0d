// SPDX-License-Identifier: Apache-2.0
// What the gallery's pages need and the command line program has not: the options of the program's commands as JSON,
// and frames as a camera would deliver them, made out of one picture.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tools/bench/effect_table.h"
#include "tools/bench/known_behaviours.h"
#include "tools/command.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

struct FrameOptions {
    std::string input;
    std::string prefix;
    int count = 8;
};

void add_frame_options(CLI::App& app, FrameOptions& options) {
    app.add_option("input", options.input, "The picture")->required();
    app.add_option("prefix", options.prefix, "The frames' names up to their number: PREFIX1.png and so on")->required();
    app.add_option("-n,--count", options.count, "How many frames")->check(CLI::Range(1, 99))->capture_default_str();
}

std::string frame_path(const FrameOptions& options, int frame) {
    return options.prefix + std::to_string(frame + 1) + ".png";
}

unsigned char to_byte(float value) {
    return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0f, 255.0f)));
}

// `light(x, y, channel, value)` for each value of a copy of the picture, and noise of the given deviation over it.
template <class Light>
void write_lit_frame(const FrameOptions& options, int frame, const Photo& source, float noise, const Light& light) {
    Photo lit;
    const uint32_t width = source.image->getWidth();
    lit.image = make_image(width, source.image->getHeight(), IMAGE_FORMAT_TYPE_RGB);
    // A seed of the frame's own: equal runs give equal frames.
    std::minstd_rand random(static_cast<unsigned>(frame) + 1);
    std::normal_distribution<float> deviation(0.0f, noise);
    for (size_t i = 0; i < source.pixelCount() * 3; ++i) {
        const size_t pixel = i / 3;
        const float value = light(pixel % width, pixel / width, i % 3, static_cast<float>(source.pixels()[i]));
        lit.pixels()[i] = to_byte(value + deviation(random));
    }
    write_photo(frame_path(options, frame), std::move(lit));
}

void write_noisy_frames(const FrameOptions& options) {
    const Photo source = read_photo(options.input);
    for (int frame = 0; frame < options.count; ++frame) {
        write_lit_frame(options, frame, source, 34.0f, [](size_t, size_t, size_t, float value) { return value; });
    }
}

// What a hand-held light adds to the picture while it moves along its part of a looping line.
std::vector<float> draw_trail(size_t width, size_t height, float from, float to) {
    std::vector<float> glow(width * height);
    const auto w = static_cast<float>(width);
    const auto h = static_cast<float>(height);
    const float side = std::min(w, h);
    constexpr float kReach = 0.03f;
    constexpr int kSteps = 220;
    for (int step = 0; step < kSteps; ++step) {
        const float t = from + (to - from) * static_cast<float>(step) / kSteps;
        const float turn = 6.2831853f * 5.0f * t;
        const float x = w * (0.1f + 0.8f * t) - side * 0.14f * std::sin(turn);
        const float y = h * (0.58f - 0.12f * std::sin(3.14159f * t)) - side * 0.16f * std::cos(turn);
        const float radius = side * kReach;
        for (float py = std::max(0.0f, std::ceil(y - radius)); py < std::min(h, y + radius); py += 1.0f) {
            for (float px = std::max(0.0f, std::ceil(x - radius)); px < std::min(w, x + radius); px += 1.0f) {
                const float distance = std::hypot(px - x, py - y) / side;
                const float light =
                    1.3f * std::exp(-distance * distance * 60000.0f) + 0.4f * std::exp(-distance * 170.0f);
                float& held = glow[static_cast<size_t>(py) * width + static_cast<size_t>(px)];
                held = std::max(held, light);
            }
        }
    }
    return glow;
}

void write_night_frames(const FrameOptions& options) {
    const Photo source = read_photo(options.input);
    const size_t width = source.image->getWidth();
    // So dark that the merge takes the maximum, for a bright picture too.
    constexpr float kNightMean = 6.5f;
    const size_t bytes = source.pixelCount() * 3;
    const auto sum = static_cast<float>(std::accumulate(source.pixels(), source.pixels() + bytes, uint64_t{0}));
    const float dimming = kNightMean / std::max(kNightMean, sum / static_cast<float>(bytes));
    const float night[] = {0.7f * dimming, 1.0f * dimming, 1.6f * dimming};
    // The maximum of each byte keeps colours that lie on the bright side of both chroma axes.
    constexpr float kTorch[] = {214.0f, 112.0f, 255.0f};
    for (int frame = 0; frame < options.count; ++frame) {
        const auto count = static_cast<float>(options.count);
        const std::vector<float> trail = draw_trail(width, source.image->getHeight(), static_cast<float>(frame) / count,
                                                    static_cast<float>(frame + 1) / count);
        write_lit_frame(options, frame, source, 2.5f, [&](size_t x, size_t y, size_t channel, float value) {
            return value * night[channel] + trail[y * width + x] * kTorch[channel];
        });
    }
}

struct Crop {
    uint32_t left, top, width, height;
};

void write_crop(const Photo& source, const Crop& crop, const std::string& path) {
    Photo part;
    part.image = make_image(crop.width, crop.height, IMAGE_FORMAT_TYPE_RGB);
    for (size_t y = 0; y < crop.height; ++y) {
        const size_t first = (y + crop.top) * source.image->getWidth() + crop.left;
        std::copy_n(source.pixels() + first * 3, size_t{crop.width} * 3, part.pixels() + y * crop.width * 3);
    }
    write_photo(path, std::move(part));
}

std::function<void()> setup_options_command(CLI::App& /*app*/) {
    return [] {
        nlohmann::ordered_json all;
        for (const Command& command : commands()) {
            CLI::App app;
            command.setup(app);
            nlohmann::ordered_json options = nlohmann::ordered_json::array();
            for (const CLI::Option* option : app.get_options()) {
                options.push_back({{"name", option->get_name(false, true)},
                                   {"type", option->get_type_name()},
                                   {"default", option->get_default_str()},
                                   {"required", option->get_required()},
                                   {"summary", option->get_description()}});
            }
            all[command.name] = {{"summary", command.description}, {"options", options}};
        }
        std::cout << all.dump() << '\n';
    };
}

std::function<void()> setup_effects_command(CLI::App& /*app*/) {
    return [] {
        Json effects = Json::parse(bench_effects_json());
        // What the playground has not: a copy, and what takes more than one photo.
        const EffectCode copy = filter_code("ImageFilterNone");
        effects.push_back({{"id", "filter-None"},
                           {"group", "Filters"},
                           {"parameters", Json::array()},
                           {"cpp", copy.cpp},
                           {"java", copy.java}});
        for (const char* id : {"dim", "merge", "sweep"}) {
            effects.push_back({{"id", id}, {"behaviours", known_behaviours(id)}});
        }
        std::cout << json_line(effects) << '\n';
    };
}

std::function<void()> setup_noisy_command(CLI::App& app) {
    auto options = std::make_shared<FrameOptions>();
    add_frame_options(app, *options);
    return [options] { write_noisy_frames(*options); };
}

std::function<void()> setup_night_command(CLI::App& app) {
    auto options = std::make_shared<FrameOptions>();
    add_frame_options(app, *options);
    return [options] { write_night_frames(*options); };
}

std::function<void()> setup_sweep_command(CLI::App& app) {
    auto options = std::make_shared<FrameOptions>();
    auto step = std::make_shared<uint32_t>(0);
    add_frame_options(app, *options);
    app.add_option("--step", *step, "How many pixels the camera moves to the right from frame to frame")->required();
    return [options, step] {
        const Photo source = read_photo(options->input);
        const uint32_t width = source.image->getWidth();
        const auto moves = static_cast<uint32_t>(options->count - 1);
        if (*step > width || moves * *step >= width) {
            throw CommandError("the picture is too narrow for this sweep");
        }
        for (uint32_t frame = 0; frame <= moves; ++frame) {
            write_crop(source, {frame * *step, 0, width - moves * *step, source.image->getHeight()},
                       frame_path(*options, static_cast<int>(frame)));
        }
    };
}

std::function<void()> setup_crop_command(CLI::App& app) {
    auto input = std::make_shared<std::string>();
    auto output = std::make_shared<std::string>();
    auto shape = std::make_shared<std::pair<uint32_t, uint32_t>>();
    app.add_option("input", *input, "The picture")->required();
    app.add_option("output", *output, "Its middle, as wide and high as the shape allows")->required();
    app.add_option("--shape", *shape, "Width and height, as 16 9")->required();
    return [=] {
        const Photo source = read_photo(*input);
        const uint64_t width = source.image->getWidth();
        const uint64_t height = source.image->getHeight();
        const uint64_t across = std::clamp<uint64_t>(shape->first, 1, 100);
        const uint64_t down = std::clamp<uint64_t>(shape->second, 1, 100);
        const auto newWidth = static_cast<uint32_t>(std::clamp<uint64_t>(height * across / down, 1, width));
        const auto newHeight = static_cast<uint32_t>(std::clamp<uint64_t>(width * down / across, 1, height));
        write_crop(source,
                   {(source.image->getWidth() - newWidth) / 2, (source.image->getHeight() - newHeight) / 2, newWidth,
                    newHeight},
                   *output);
    };
}

constexpr Command kCommands[] = {
    {"options", "The options of every command of the program, as JSON", "korvane_gallery options",
     setup_options_command},
    {"effects", "The effects of the playground, with their code and known behaviours, as JSON",
     "korvane_gallery effects", setup_effects_command},
    {"noisy", "A burst with the noise of a small sensor", "korvane_gallery noisy photo.png day -n 8",
     setup_noisy_command},
    {"night", "A burst by night, in which somebody draws with a light", "korvane_gallery night photo.png night -n 9",
     setup_night_command},
    {"sweep", "The frames of a camera that turns to the right", "korvane_gallery sweep wide.png sweep -n 6 --step 105",
     setup_sweep_command},
    {"crop", "The middle of a picture in another shape", "korvane_gallery crop photo.png wide.png --shape 16 9",
     setup_crop_command},
};

}  // namespace
}  // namespace korvane

int main(int argc, char** argv) {
    return korvane::run_program(korvane::kCommands, std::vector<std::string>(argv + 1, argv + argc));
}
