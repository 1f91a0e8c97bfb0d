#include <CLI/CLI.hpp>
#include <cstring>
#include <memory>
#include <vector>

#include "applications/photo_timestamp/timestamp_watermark.h"
#include "frameworks/images/color_convert.h"
#include "tools/command.h"
#include "tools/photo_io.h"

namespace korvane {
namespace {

struct StampOptions {
    std::string input;
    std::string output;
    std::string text;
};

// Rows of `to` columns out of rows of `from`; where there are more, the last column is repeated.
std::vector<unsigned char> with_columns(const unsigned char* rgb, size_t from, size_t to, size_t rows) {
    std::vector<unsigned char> result(to * rows * 3);
    const size_t kept = from < to ? from : to;
    for (size_t row = 0; row < rows; ++row) {
        const unsigned char* source = rgb + row * from * 3;
        unsigned char* target = result.data() + row * to * 3;
        std::memcpy(target, source, kept * 3);
        for (size_t column = kept; column < to; ++column) {
            std::memcpy(target + column * 3, source + (from - 1) * 3, 3);
        }
    }
    return result;
}

void stamp(const StampOptions& options) {
    auto_ptr<Image> photo = read_photo(options.input);
    const size_t width = photo->getWidth();
    const size_t height = photo->getHeight();
    // YUYV carries pixels in pairs: a photo of odd width gets one more column on the way.
    const size_t evenWidth = width + width % 2;
    std::vector<unsigned char> rgb = with_columns(photo->getPlanes()[0], width, evenWidth, height);
    std::vector<unsigned char> yuyv(evenWidth * height * 2);
    const int columns = static_cast<int>(evenWidth);
    const int rows = static_cast<int>(height);
    color_convert_rgb2yuyv(rgb.data(), yuyv.data(), columns, rows);
    if (!make_photo_timestamp_watermark_to_yuyv(yuyv.data(), columns, rows, options.text.c_str(), 0)) {
        throw CommandError("'" + options.text + "' cannot be stamped: digits, ':', '-' and blanks only, at least one");
    }
    color_convert_yuyv2rgb(yuyv.data(), rgb.data(), columns, rows);
    rgb = with_columns(rgb.data(), evenWidth, width, height);
    std::memcpy(photo->getPlanes()[0], rgb.data(), rgb.size());
    write_photo(options.output, photo);
}

}  // namespace

std::function<void()> setup_stamp_command(CLI::App& app) {
    auto options = std::make_shared<StampOptions>();
    app.add_option("input", options->input, "The photo, a JPEG file")->required();
    app.add_option("-o,--output", options->output, "Where the result goes, a JPEG file")->required();
    app.add_option("--text", options->text, "Date and time, as \"2026-01-02 03:04\"")->required();
    return [options] { stamp(*options); };
}

}  // namespace korvane
