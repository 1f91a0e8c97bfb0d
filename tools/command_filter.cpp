// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/command.h"
#include "tools/filter_session.h"
#include "tools/photo/photo_io.h"

namespace korvane {
namespace {

struct FilterOptions {
    std::string name;
    PhotoOptions photo;
    std::string table;
    std::vector<std::string> settings;
};

void set_table(ImageFilterBaseGL& filter, const FilterDescription& description, const std::string& path) {
    if (filter.getParameterType("mFilterBitmap") != PARAMETER_TYPE_BITMAP) {
        throw CommandError(std::string(description.name) + " takes no lookup table");
    }
    const auto_ptr<Image> table = read_photo(path, IMAGE_FORMAT_TYPE_RGBA).image;
    const auto width = static_cast<int>(table->getWidth());
    const auto height = static_cast<int>(table->getHeight());
    if (width != 4096 || height != 64) {
        throw CommandError("'" + path + "' has " + std::to_string(width) + " x " + std::to_string(height) +
                           " pixels; a lookup table has 4096 x 64");
    }
    FilterBitmap bitmap{table->getPlanes()[0], width, height, 4, width * 4};
    filter.setParameters("mFilterBitmap", &bitmap);
}

// Filters that move pixels move their transparency along.
void merge_alpha(Photo& photo) {
    for (size_t i = 0; i < photo.alpha.size(); ++i) {
        photo.pixels()[4 * i + 3] = photo.alpha[i];
    }
}

// Filters that change colours make all opaque; the photo keeps its own transparency then.
void take_filtered_alpha(Photo& photo) {
    Bytes own = std::move(photo.alpha);
    split_alpha(photo);
    if (photo.alpha.empty()) {
        photo.alpha = std::move(own);
    }
}

void filter_photo(const FilterOptions& options) {
    const FilterDescription& description = describe_filter(options.name);
    check_output(options.photo.output, options.photo.write);
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGBA, options.photo.read);
    merge_alpha(photo);
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
    filter->process(photo.pixels(), static_cast<int>(photo.image->getWidth()),
                    static_cast<int>(photo.image->getHeight()));
    filter->release();
    take_filtered_alpha(photo);
    write_photo(options.photo.output, std::move(photo), options.photo.write);
}

}  // namespace

std::function<void()> setup_filter_command(CLI::App& app) {
    auto options = std::make_shared<FilterOptions>();
    app.add_option("name", options->name, "The filter; 'korvane filters' lists them")->required();
    add_photo_options(app, options->photo);
    app.add_option("--set", options->settings, "A parameter, as key=value; may be given several times")
        ->allow_extra_args(false);
    app.add_option("--table", options->table, "A lookup table for ImageFilterTable: a picture of 4096 x 64 pixels");
    return [options] { filter_photo(*options); };
}

}  // namespace korvane
