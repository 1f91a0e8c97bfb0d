// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "applications/filters/gpu_image_filter_factory.h"
#include "tools/batch.h"
#include "tools/command.h"
#include "tools/effects.h"
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

auto_ptr<Image> read_picture(const std::string& path) {
    try {
        return read_photo(path, IMAGE_FORMAT_TYPE_RGBA).image;
    } catch (const CommandError& error) {
        throw UsageError(error.what());
    }
}

auto_ptr<Image> read_table(const FilterDescription& description, const std::string& path) {
    const bool takesTable =
        std::any_of(description.parameters.begin(), description.parameters.end(),
                    [](const FilterParameter& parameter) { return parameter.type == PARAMETER_TYPE_BITMAP; });
    if (!takesTable) {
        throw UsageError(std::string(description.name) + " takes no lookup table");
    }
    auto_ptr<Image> table = read_picture(path);
    if (table->getWidth() != 4096 || table->getHeight() != 64) {
        throw UsageError("'" + path + "' has " + std::to_string(table->getWidth()) + " x " +
                         std::to_string(table->getHeight()) + " pixels; a lookup table has 4096 x 64");
    }
    return table;
}

void filter(const FilterOptions& options) {
    const FilterDescription& description = describe_filter(options.name);
    check_output(options.photo.output, options.photo.write);
    Photo photo = read_photo(options.photo.input, IMAGE_FORMAT_TYPE_RGBA, options.photo.read);
    FilterSettings settings = {options.name, options.settings, nullptr};
    if (!options.table.empty()) {
        settings.table = read_table(description, options.table);
    }
    DrawTimes times;
    filter_photo(photo, settings, times);
    write_photo(options.photo.output, std::move(photo), options.photo.write);
}

}  // namespace

std::function<void()> setup_filter_command(CLI::App& app) {
    auto options = std::make_shared<FilterOptions>();
    CLI::Option* name = app.add_option("name", options->name, "The filter; 'korvane filters' lists them")->required();
    std::vector<std::string> names;
    std::set<std::string> keys;
    for (const FilterDescription* filter : ImageFilterFactory::filters()) {
        names.push_back(short_filter_name(*filter));
        for (const FilterParameter& parameter : filter->parameters) {
            if (parameter.type != PARAMETER_TYPE_BITMAP) {
                keys.insert(std::string(parameter.name) + "=");
            }
        }
    }
    suggest(name, names);
    add_photo_options(app, options->photo);
    CLI::Option* set =
        app.add_option("--set", options->settings, "A parameter, as key=value; may be given several times")
            ->allow_extra_args(false);
    suggest(set, {keys.begin(), keys.end()});
    app.add_option("--table", options->table, "A lookup table for ImageFilterTable: a picture of 4096 x 64 pixels")
        ->type_name(kFileValue);
    return [options] { for_each_photo(options->photo, [&] { filter(*options); }); };
}

}  // namespace korvane
