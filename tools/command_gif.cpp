// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "tools/command.h"
#include "tools/photo/file_io.h"
#include "tools/photo/gif_writer.h"
#include "tools/photo/palette.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

constexpr int kMaxColors = 256;
constexpr int kMaxDelayMilliseconds = 655350;
constexpr int kMillisecondsPerHundredth = 10;

struct GifOptions {
    std::vector<std::string> frames;
    std::string output;
    ReadOptions read;
    bool noClobber = false;
    int delayMilliseconds = 100;
    int loops = 0;
    int colors = kMaxColors;
    bool hasOnePalette = false;
    bool dithers = false;
};

void check_options(const GifOptions& options) {
    if (!is_stream(options.output) && !has_extension(options.output, "gif")) {
        throw CommandError("cannot write " + options.output + ": its name must end in .gif");
    }
    check_writable(options.output, options.noClobber);
}

Photo read_frame(const GifOptions& options, size_t index, const Photo* first) {
    Photo frame = read_photo(options.frames[index], IMAGE_FORMAT_TYPE_RGB, options.read);
    if (first != nullptr && (frame.image->getWidth() != first->image->getWidth() ||
                             frame.image->getHeight() != first->image->getHeight())) {
        throw CommandError(options.frames[index] + " is not of the size of " + options.frames.front());
    }
    flatten(frame);
    return frame;
}

void add_frame(GifWriter& gif, const Photo& photo, const std::vector<Rgb>& palette, NearestEntry& nearest,
               const GifOptions& options) {
    IndexedPicture frame = {photo.image->getWidth(), photo.image->getHeight(), palette,
                            index_pixels(photo, palette, nearest, options.dithers)};
    gif.add(frame, (options.delayMilliseconds + kMillisecondsPerHundredth / 2) / kMillisecondsPerHundredth);
}

// The palette needs all frames before the first can be written.
Bytes make_with_one_palette(const GifOptions& options) {
    std::vector<Photo> photos;
    for (size_t i = 0; i < options.frames.size(); ++i) {
        photos.push_back(read_frame(options, i, photos.empty() ? nullptr : &photos.front()));
    }
    const std::vector<Rgb> palette = make_palette(photos, options.colors);
    NearestEntry nearest(palette);
    GifWriter gif(photos.front().image->getWidth(), photos.front().image->getHeight(), palette, options.loops);
    for (const Photo& photo : photos) {
        add_frame(gif, photo, palette, nearest, options);
    }
    return gif.finish();
}

// One frame in memory at a time, besides the first.
Bytes make_with_own_palettes(const GifOptions& options) {
    const Photo first = read_frame(options, 0, nullptr);
    GifWriter gif(first.image->getWidth(), first.image->getHeight(), {}, options.loops);
    for (size_t i = 0; i < options.frames.size(); ++i) {
        const std::vector<Photo> photo = {i == 0 ? first : read_frame(options, i, &first)};
        const std::vector<Rgb> palette = make_palette(photo, options.colors);
        NearestEntry nearest(palette);
        add_frame(gif, photo.front(), palette, nearest, options);
    }
    return gif.finish();
}

void make_gif(const GifOptions& options) {
    check_options(options);
    try {
        const Bytes file = options.hasOnePalette ? make_with_one_palette(options) : make_with_own_palettes(options);
        write_file(options.output, file, options.noClobber);
    } catch (const FormatError& error) {
        throw CommandError("cannot write " + options.output + ": " + error.what());
    }
}

}  // namespace

std::function<void()> setup_gif_command(CLI::App& app) {
    auto options = std::make_shared<GifOptions>();
    app.add_option("frames", options->frames, "The photos in their order, all of one size")->required();
    add_read_options(app, options->read);
    app.add_option("-o,--output", options->output, "The animation: a name in .gif; - is standard output")->required();
    app.add_option("--delay", options->delayMilliseconds,
                   "How long each frame is shown, in milliseconds; GIF keeps hundredths of a second")
        ->check(CLI::Range(0, kMaxDelayMilliseconds))
        ->capture_default_str();
    app.add_option("--loop", options->loops, "How often the animation is repeated; 0 is for ever")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option("--colors", options->colors, "How many colours a palette may have")
        ->check(CLI::Range(1, kMaxColors))
        ->capture_default_str();
    app.add_flag("--one-palette", options->hasOnePalette,
                 "One palette for all frames: smaller, and colours do not change between frames");
    app.add_flag("--dither", options->dithers, "Mix colours that the palette lacks out of neighbouring pixels");
    add_no_clobber(app, options->noClobber);
    return [options] { make_gif(*options); };
}

}  // namespace korvane
