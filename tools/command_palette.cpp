// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>
#include <vector>

#include "tools/batch.h"
#include "tools/command.h"
#include "tools/effects.h"
#include "tools/json.h"
#include "tools/photo/file_io.h"
#include "tools/photo/formats.h"
#include "tools/photo/palette.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

constexpr size_t kSwatchHeight = 32;
constexpr size_t kLeastSwatchWidth = 8;

constexpr int kMaxPngColors = 256;

struct PaletteOptions {
    PhotoOptions photo;
    int colors = kPaletteColors.initial;
    bool wantsJson = false;
};

// The palette's colours as rows of equal swatches. The unused rest of the last row is white.
std::vector<unsigned char> draw_swatches(const std::vector<Rgb>& palette, size_t width) {
    const size_t most = std::max<size_t>(1, width / kLeastSwatchWidth);
    const size_t rows = (palette.size() + most - 1) / most;
    const size_t inRow = (palette.size() + rows - 1) / rows;
    std::vector<unsigned char> pixels;
    pixels.reserve(rows * kSwatchHeight * width * 3);
    for (size_t y = 0; y < rows * kSwatchHeight; ++y) {
        for (size_t x = 0; x < width; ++x) {
            const size_t entry = y / kSwatchHeight * inRow + x * inRow / width;
            const Rgb color = entry < palette.size() ? palette[entry] : Rgb{255, 255, 255};
            pixels.insert(pixels.end(), color.begin(), color.end());
        }
    }
    return pixels;
}

// Puts the swatches below the photo.
void append_swatches(Photo& photo, const std::vector<Rgb>& palette) {
    const uint32_t width = photo.image->getWidth();
    const size_t photoBytes = photo.pixelCount() * 3;
    const std::vector<unsigned char> swatches = draw_swatches(palette, width);
    const uint32_t swatchRows = static_cast<uint32_t>(swatches.size() / 3 / width);
    auto_ptr<Image> result = make_image(width, photo.image->getHeight() + swatchRows, IMAGE_FORMAT_TYPE_RGB);
    unsigned char* target = std::copy_n(photo.pixels(), photoBytes, result->getPlanes()[0]);
    std::copy(swatches.begin(), swatches.end(), target);
    photo.image = result;
}

void write_indexed(Photo& photo, const std::vector<Rgb>& palette, const PaletteOptions& options) {
    NearestEntry nearest(palette);
    Bytes indices = index_pixels(photo, palette, nearest, false);
    update_metadata(photo, options.photo.write);
    const IndexedPicture picture = {photo.image->getWidth(), photo.image->getHeight(), palette, std::move(indices)};
    write_file(options.photo.output, write_indexed_png(picture, photo.metadata), options.photo.write.noClobber);
}

std::string name_of(const Rgb& color) {
    char name[8];
    std::snprintf(name, sizeof(name), "#%02X%02X%02X", color[0], color[1], color[2]);
    return name;
}

std::string text(const std::vector<Rgb>& palette) {
    std::string lines;
    for (const Rgb& color : palette) {
        lines += name_of(color) + '\n';
    }
    return lines;
}

// The share of a colour is that of the pixels that it is the nearest to.
std::string json(const std::string& file, const std::vector<Rgb>& palette, const Photo& photo) {
    NearestEntry nearest(palette);
    std::vector<size_t> counts(palette.size());
    for (size_t i = 0; i < photo.pixelCount(); ++i) {
        ++counts[nearest(photo.pixels() + 3 * i)];
    }
    Json rows = Json::array();
    for (size_t i = 0; i < palette.size(); ++i) {
        const double share = static_cast<double>(counts[i]) / static_cast<double>(photo.pixelCount());
        rows.push_back({{"color", name_of(palette[i])}, {"share", share}});
    }
    return json_line({{"file", file}, {"colors", rows}});
}

void palette(const PaletteOptions& options) {
    const std::string& output = options.photo.output;
    if (!output.empty()) {
        check_output(output, options.photo.write);
    }
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGB, options.photo.read);
    const bool isIndexed =
        !output.empty() && output_format(output, options.photo.write, photo.format) == PhotoFormat::kPng;
    if (isIndexed && options.colors > kMaxPngColors) {
        throw CommandError("--colors: a PNG file has at most 256");
    }
    const std::vector<Rgb> colors = find_palette(photo, options.colors);
    const std::string report = options.wantsJson ? json(options.photo.input, colors, photo) : text(colors);
    if (isIndexed) {
        write_indexed(photo, colors, options);
    } else if (!output.empty()) {
        reduce_photo(photo, colors);
        append_swatches(photo, colors);
        write_photo(output, std::move(photo), options.photo.write);
    }
    print_report(options.photo, report, options.wantsJson);
}

}  // namespace

std::function<void()> setup_palette_command(CLI::App& app) {
    auto options = std::make_shared<PaletteOptions>();
    add_input(app, options->photo);
    add_setting(app, kPaletteColors, options->colors);
    app.add_option("-o,--output", options->photo.output,
                   "The photo in these colours: a PNG file with exactly this palette (up to 256 colours), or a JPEG or "
                   "WebP file with a strip of swatches below; several photos go into a folder, whose name ends in /");
    add_write_options(app, options->photo.write);
    add_json(app, options->wantsJson);
    return [options] { for_each_photo(options->photo, [&] { palette(*options); }); };
}

}  // namespace korvane
