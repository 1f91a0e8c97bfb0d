#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "tools/command.h"
#include "tools/filter_session.h"
#include "tools/photo_io.h"

namespace korvane {
namespace {

struct FilterOptions {
    std::string name;
    std::string input;
    std::string output;
    std::string table;
    std::vector<std::string> settings;
};

void set_table(ImageFilterBaseGL& filter, const FilterDescription& description, const std::string& path) {
    if (filter.getParameterType("mFilterBitmap") != PARAMETER_TYPE_BITMAP) {
        throw CommandError(std::string(description.name) + " takes no lookup table");
    }
    const auto_ptr<Image> table = read_photo(path, IMAGE_FORMAT_TYPE_RGBA);
    const auto width = static_cast<int>(table->getWidth());
    const auto height = static_cast<int>(table->getHeight());
    if (width != 4096 || height != 64) {
        throw CommandError("'" + path + "' has " + std::to_string(width) + " x " + std::to_string(height) +
                           " pixels; a lookup table has 4096 x 64");
    }
    FilterBitmap bitmap{table->getPlanes()[0], width, height, 4, width * 4};
    filter.setParameters("mFilterBitmap", &bitmap);
}

void filter_photo(const FilterOptions& options) {
    const FilterDescription& description = describe_filter(options.name);
    auto_ptr<Image> photo = read_photo(options.input, IMAGE_FORMAT_TYPE_RGBA);
    auto_ptr<ImageFilterBaseGL> filter = open_filter(options.name);
    // By default the filters turn their picture, as camera frames need. A photo is upright already.
    float upright[8] = {0, 0, 1, 0, 0, 1, 1, 1};
    filter->setParameters("mTexVertices", upright);
    if (!options.table.empty()) {
        set_table(*filter, description, options.table);
    }
    for (const std::string& setting : options.settings) {
        set_filter_parameter(*filter, description, setting);
    }
    filter->process(photo->getPlanes()[0], static_cast<int>(photo->getWidth()), static_cast<int>(photo->getHeight()));
    filter->release();
    write_photo(options.output, photo);
}

}  // namespace

std::function<void()> setup_filter_command(CLI::App& app) {
    auto options = std::make_shared<FilterOptions>();
    app.add_option("name", options->name, "The filter; 'korvane filters' lists them")->required();
    app.add_option("input", options->input, "The photo, a JPEG file")->required();
    app.add_option("-o,--output", options->output, "Where the result goes, a JPEG file")->required();
    app.add_option("--set", options->settings, "A parameter, as key=value; may be given several times")
        ->allow_extra_args(false);
    app.add_option("--table", options->table, "A lookup table for ImageFilterTable: a JPEG of 4096 x 64 pixels");
    return [options] { filter_photo(*options); };
}

}  // namespace korvane
