#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <memory>
#include <vector>

#include "applications/gif_maker/color_quantizer.h"
#include "tools/command.h"
#include "tools/photo_io.h"

namespace korvane {
namespace {

constexpr size_t kSwatchHeight = 32;
constexpr size_t kLeastSwatchWidth = 8;

struct PaletteOptions {
    std::string input;
    std::string output;
    int colors = 16;
};

using Rgb = std::array<unsigned char, 3>;

std::vector<Rgb> palette_of(Image& photo, int colors) {
    ColorQuantizer quantizer;
    quantizer.prepare(static_cast<int32_t>(photo.getWidth()), static_cast<int32_t>(photo.getHeight()));
    const unsigned char* pixels = photo.getPlanes()[0];
    const size_t bytes = static_cast<size_t>(photo.getWidth()) * photo.getHeight() * 3;
    for (size_t i = 0; i < bytes; i += 3) {
        quantizer.addColor(pixels[i], pixels[i + 1], pixels[i + 2]);
    }
    std::vector<Rgb> palette;
    for (const Color& color : quantizer.getPalette(colors)) {
        palette.push_back({static_cast<unsigned char>(color.red), static_cast<unsigned char>(color.green),
                           static_cast<unsigned char>(color.blue)});
    }
    if (palette.empty()) {
        throw std::bad_alloc();
    }
    return palette;
}

// Finds the nearest palette entry of a colour. Results are kept, because photos repeat their colours.
class NearestEntry {
  public:
    explicit NearestEntry(const std::vector<Rgb>& palette) : m_Palette(palette), m_Known(size_t{1} << 24, kUnknown) {}

    const Rgb& operator()(const unsigned char* rgb) {
        uint16_t& entry = m_Known[static_cast<size_t>(rgb[0]) << 16 | static_cast<size_t>(rgb[1]) << 8 | rgb[2]];
        if (entry == kUnknown) {
            const auto distance = [rgb](const Rgb& color) {
                const int red = rgb[0] - color[0];
                const int green = rgb[1] - color[1];
                const int blue = rgb[2] - color[2];
                return red * red + green * green + blue * blue;
            };
            const auto nearest = std::min_element(m_Palette.begin(), m_Palette.end(), [&](const Rgb& a, const Rgb& b) {
                return distance(a) < distance(b);
            });
            entry = static_cast<uint16_t>(nearest - m_Palette.begin());
        }
        return m_Palette[entry];
    }

  private:
    static constexpr uint16_t kUnknown = 0xFFFF;

    const std::vector<Rgb>& m_Palette;
    std::vector<uint16_t> m_Known;
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

auto_ptr<Image> with_palette(Image& photo, const std::vector<Rgb>& palette) {
    const uint32_t width = photo.getWidth();
    const size_t photoBytes = static_cast<size_t>(width) * photo.getHeight() * 3;
    const std::vector<unsigned char> swatches = draw_swatches(palette, width);
    const uint32_t swatchRows = static_cast<uint32_t>(swatches.size() / 3 / width);
    auto_ptr<Image> result(
        Image::createImage(width, photo.getHeight() + swatchRows, 1, IMAGE_FORMAT_TYPE_RGB, nullptr));
    if (result == nullptr || result->getPlanes()[0] == nullptr) {
        throw std::bad_alloc();
    }
    unsigned char* target = result->getPlanes()[0];
    NearestEntry nearest(palette);
    for (size_t i = 0; i < photoBytes; i += 3) {
        const Rgb& color = nearest(photo.getPlanes()[0] + i);
        target = std::copy(color.begin(), color.end(), target);
    }
    std::copy(swatches.begin(), swatches.end(), target);
    return result;
}

void palette(const PaletteOptions& options) {
    auto_ptr<Image> photo = read_photo(options.input);
    const std::vector<Rgb> colors = palette_of(*photo, options.colors);
    if (!options.output.empty()) {
        auto_ptr<Image> reduced = with_palette(*photo, colors);
        write_photo(options.output, reduced);
    }
    for (const Rgb& color : colors) {
        char line[9];
        std::snprintf(line, sizeof(line), "#%02X%02X%02X\n", color[0], color[1], color[2]);
        std::cout << line;
    }
}

}  // namespace

std::function<void()> setup_palette_command(CLI::App& app) {
    auto options = std::make_shared<PaletteOptions>();
    app.add_option("input", options->input, "The photo, a JPEG file")->required();
    app.add_option("-n,--colors", options->colors, "How many colours the palette may have")
        ->check(CLI::Range(1, static_cast<int>(ColorQuantizer::kMaxColors)))
        ->capture_default_str();
    app.add_option("-o,--output", options->output,
                   "Where the photo in these colours goes, above a strip of swatches; a JPEG file");
    return [options] { palette(*options); };
}

}  // namespace korvane
